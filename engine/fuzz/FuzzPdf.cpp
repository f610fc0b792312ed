// libFuzzer entry for the engine's PDF path: open from memory, lay out and write RTF for the
// first pages, and render the first page, with the options picked from the input's size.

#include "convert/Converter.h"
#include "pdf/PdfSession.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    // A lower ceiling than a real run keeps each input fast; exhausting it is a normal error.
    velmora::PdfSession pdf(std::size_t{256} << 20);
    if (pdf.openMemory(data, size, {"", "secret"}) != velmora::OpenStatus::Opened)
        return 0;
    velmora::EngineOptions options;
    options.conversionMethod = static_cast<int>(size % 3) + 1;
    options.documentType = static_cast<int>(size / 3 % 3) + 1;
    options.wordArt = size % 2 == 0;
    options.mergeParagraph = size % 5 != 0;
    options.imageFormat = static_cast<int>(size / 7 % 2);
    options.usingPageRange = true;
    options.pageFrom = 0;
    options.pageTo = 2;
    std::size_t written = 0;
    try {
        velmora::WriteRtf(pdf, options,
                          [&written](const std::string& piece) { written += piece.size(); });
    } catch (const velmora::ConversionError&) {
    } catch (const velmora::PdfError&) {
    }
    try {
        pdf.renderBmp(0, 8);
    } catch (const velmora::PdfError&) {
    }
    return 0;
}
