#include "ocr/PageRecognition.h"

#include "ocr/OcrLanguages.h"
#include "ocr/ScanAssembly.h"
#include "ocr/ScanDetection.h"
#include "ocr/TextReader.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include <sched.h>

namespace velmora {

namespace {

// Pages are drawn for recognition at 300 dpi, less for a page so large that its picture
// would pass this many pixels.
constexpr int RecognitionDpi = 300;
constexpr double MaxRecognitionPixels = 40e6;

struct Job
{
    ScanImage image;
    std::promise<RecognisedPage> done;
};

struct Pending
{
    int index = 0;
    PageContent page;
    std::future<RecognisedPage> result;  // not valid for a page that is no scan
};

}  // namespace

int AvailableCores()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0)
        return std::max(1, CPU_COUNT(&set));
    return static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
}

struct PageRecognition::Impl
{
    PdfSession& pdf;
    FontTable& fonts;
    int method;
    PictureOptions pictures;
    RecognitionHooks hooks;
    Reader read;

    bool started = false;
    bool usable = false;
    LanguageChoice languages;
    TextReaderFactory readers;
    std::deque<Pending> ahead;
    int nextRead = -1;

    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::unique_ptr<Job>> jobs;
    bool closing = false;
    std::atomic<bool> stop{false};
    std::vector<std::thread> workers;

    Impl(PdfSession& p, FontTable& f, int m, PictureOptions o, RecognitionHooks h, Reader r)
        : pdf(p), fonts(f), method(m), pictures(std::move(o)), hooks(std::move(h)),
          read(std::move(r))
    {
    }

    ~Impl()
    {
        {
            std::lock_guard lock(mutex);
            closing = true;
        }
        stop = true;
        wake.notify_all();
        for (std::thread& worker : workers)
            worker.join();
    }

    // Languages, the pool and its workers, set up with the first scan met: a worker for each
    // core, but no more than there are pages left.
    bool start(int pagesLeft)
    {
        if (started)
            return usable;
        started = true;
        languages = ChooseLanguages([](const char* name) { return std::getenv(name); });
        const std::string notice = MissingLanguagesNotice(languages);
        if (!notice.empty() && hooks.notice)
            hooks.notice(notice);
        usable = !languages.languages.empty();
        if (!usable)
            return false;
        std::string error;
        usable = readers.load(error);
        if (!usable) {
            if (hooks.notice)
                hooks.notice("scanned pages stay pictures: " + error);
            return false;
        }
        const int count = std::clamp(pagesLeft, 1, AvailableCores());
        for (int i = 0; i < count; ++i)
            workers.emplace_back([this] { work(); });
        return true;
    }

    void work()
    {
        const std::unique_ptr<TextReader> reader = readers.create(languages, &stop);
        for (;;) {
            std::unique_ptr<Job> job;
            {
                std::unique_lock lock(mutex);
                wake.wait(lock, [this] { return closing || !jobs.empty(); });
                if (closing)
                    return;
                job = std::move(jobs.front());
                jobs.pop_front();
            }
            // A page that cannot be recognised (out of memory, say) stays the picture it is.
            RecognisedPage page;
            try {
                if (reader)
                    page = AssemblePage(reader->read(job->image), job->image, method, pictures);
            } catch (...) {
                page = RecognisedPage{};
            }
            job->done.set_value(std::move(page));
        }
    }

    // Pages read ahead of the one written: enough to keep every worker busy.
    std::size_t window() const { return usable ? workers.size() + 2 : 1; }

    // Sends a scan to the workers. A page that cannot be drawn stays the picture it is,
    // unless the run is being stopped.
    void send(Pending& pending)
    {
        const double area = static_cast<double>(pending.page.width) * pending.page.height;
        const int dpi = static_cast<int>(std::min<double>(
            RecognitionDpi, 72 * std::sqrt(MaxRecognitionPixels / std::max(area, 1.0))));
        auto job = std::make_unique<Job>();
        try {
            job->image = ScanImage::FromPixels(pdf.renderPixels(pending.index, dpi));
        } catch (const PdfError&) {
            if (hooks.stop && hooks.stop->load())
                throw;
            return;
        }
        pending.result = job->done.get_future();
        {
            std::lock_guard lock(mutex);
            jobs.push_back(std::move(job));
        }
        wake.notify_one();
        if (hooks.pageQueued)
            hooks.pageQueued();
    }

    void readAhead(int last)
    {
        while (nextRead <= last && ahead.size() < window()) {
            Pending pending;
            pending.index = nextRead;
            pending.page = read(nextRead, false);
            if (IsScannedPage(pending.page) && start(last - nextRead + 1))
                send(pending);
            if (!pending.result.valid() && pending.page.picturePlacesOnly)
                pending.page = read(nextRead, true);
            ahead.push_back(std::move(pending));
            ++nextRead;
        }
    }

    RecognisedPage wait(std::future<RecognisedPage>& result)
    {
        using namespace std::chrono_literals;
        while (result.wait_for(100ms) != std::future_status::ready) {
            if (hooks.stop && hooks.stop->load()) {
                stop = true;
                throw PdfError("stopped: the document takes too long to read");
            }
        }
        return result.get();
    }
};

PageRecognition::PageRecognition(PdfSession& pdf, FontTable& fonts, int conversionMethod,
                                 const PictureOptions& pictures, RecognitionHooks hooks,
                                 Reader read)
    : m_impl(std::make_unique<Impl>(pdf, fonts, conversionMethod, pictures, std::move(hooks),
                                    std::move(read)))
{
}

PageRecognition::~PageRecognition() = default;

PageContent PageRecognition::take(int index, int last)
{
    Impl& d = *m_impl;
    if (d.nextRead < 0 || (!d.ahead.empty() && d.ahead.front().index != index) ||
        (d.ahead.empty() && d.nextRead != index)) {
        d.ahead.clear();
        d.nextRead = index;
    }
    d.readAhead(last);
    Pending pending = std::move(d.ahead.front());
    d.ahead.pop_front();
    if (pending.result.valid()) {
        const RecognisedPage recognised = d.wait(pending.result);
        if (!recognised.read && pending.page.picturePlacesOnly)
            pending.page = d.read(index, true);
        PutRecognisedPage(pending.page, recognised, d.fonts);
    }
    return std::move(pending.page);
}

}  // namespace velmora
