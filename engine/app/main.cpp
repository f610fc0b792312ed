// VelmoraConverter: converts a PDF into Rich Text Format, or renders its pages as pictures
// for a preview, with the options the front end stored. Exit status 0 on success; otherwise
// one line on standard error and a non-zero status.

#include "app/EngineCommandLine.h"
#include "app/StoredOptions.h"
#include "convert/Converter.h"

#include <QString>

#include <algorithm>
#include <atomic>

#include <csignal>
#include <cstdio>
#include <exception>

#include <unistd.h>

namespace {

enum ExitCode { Success = 0, Failed = 1, Usage = 2, Password = 3 };

// A hostile file may make MuPDF work for ever; past this budget the page being read stops.
velmora::PdfSession* g_session = nullptr;
std::atomic<bool> g_stopRecognition{false};

void onAlarm(int)
{
    if (g_session)
        g_session->abortWork();
    g_stopRecognition = true;
}

unsigned TimeBudgetSeconds(int pages)
{
    return 60u + static_cast<unsigned>(std::max(pages, 0));
}

// Recognising a scanned page takes seconds of its own; each one sent adds to the budget.
constexpr unsigned SecondsPerRecognisedPage = 20;

void extendTimeBudget()
{
    alarm(alarm(0) + SecondsPerRecognisedPage);
}

int fail(int code, const std::string& reason)
{
    std::fprintf(stderr, "VelmoraConverter: %s\n", reason.c_str());
    return code;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    std::string error;
    const std::optional<EngineCommandLine> line = ParseEngineCommandLine(args, error);
    if (!line)
        return fail(Usage, error);

    try {
        const velmora::EngineOptions options = EngineOptionsFromDocument(StoredOptionsDocument());
        velmora::PdfSession pdf;
        switch (pdf.open(line->source, options.passwords)) {
        case velmora::OpenStatus::NeedsPassword:
            return fail(Password, line->source + ": the password is missing or wrong");
        case velmora::OpenStatus::Failed:
            return fail(Failed, line->source + ": cannot open the PDF (" + pdf.lastError() + ")");
        case velmora::OpenStatus::Opened:
            break;
        }
        g_session = &pdf;
        struct sigaction action
        {
        };
        action.sa_handler = onAlarm;
        sigaction(SIGALRM, &action, nullptr);
        alarm(TimeBudgetSeconds(pdf.pageCount()));
        if (line->pictures || options.extractToBmp)
            velmora::WritePagePictures(pdf, options, velmora::PictureStem(line->target));
        if (!line->pictures) {
            const bool quiet = line->quiet;
            velmora::RecognitionHooks hooks;
            hooks.pageQueued = extendTimeBudget;
            hooks.notice = [&line](const std::string& notice) {
                std::fprintf(stderr, "VelmoraConverter: %s: %s\n", line->source.c_str(),
                             notice.c_str());
            };
            hooks.stop = &g_stopRecognition;
            velmora::ConvertToFile(
                pdf, options, line->target,
                [quiet](int done, int total) {
                    if (!quiet) {
                        std::printf("page %d of %d\n", done, total);
                        std::fflush(stdout);
                    }
                },
                hooks);
        }
    } catch (const velmora::ConversionError& failure) {
        return fail(Failed, line->source + ": " + failure.what());
    } catch (const velmora::PdfError& failure) {
        return fail(Failed, line->source + ": " + failure.what());
    } catch (const std::bad_alloc&) {
        return fail(Failed, line->source + ": out of memory");
    } catch (const std::exception& failure) {
        return fail(Failed, line->source + ": " + failure.what());
    }
    return Success;
}
