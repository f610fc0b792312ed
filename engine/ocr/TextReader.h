#pragma once

// What reading a scanned page gives (words with their confidence and place, the lines they
// stand on, the regions taken for pictures and drawing, all in the pixels of the picture
// read), and the reader that gives it. The reader is Tesseract, built into a module of its own
// beside the program and loaded with the first scan of a run: Tesseract brings some forty
// libraries, and loading them would slow every start, a preview's included, that reads no scan.

#include "ocr/OcrLanguages.h"
#include "ocr/ScanImage.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

struct PixelBox final
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
};

struct OcrLine final
{
    PixelBox box;
    // Two points on the baseline, in reading direction.
    float baseX1 = 0;
    float baseY1 = 0;
    float baseX2 = 0;
    float baseY2 = 0;
    float height = 0;  // ascender top to descender bottom, in pixels
};

struct OcrWord final
{
    std::string text;      // UTF-8
    float confidence = 0;  // 0..100
    PixelBox box;
    // For a doubtful word with marks at its ends, the box of its letters alone.
    PixelBox core;
    int line = 0;  // index into OcrResult::lines
};

struct OcrResult final
{
    bool read = false;
    int turns = 0;  // quarter turns clockwise the picture was given before it was read
    std::vector<OcrLine> lines;
    std::vector<OcrWord> words;
    std::vector<PixelBox> pictures;
    // Drawing: ruled lines (a table's, a form's, a signature's), fills and frames around words.
    std::vector<PixelBox> rules;
};

// Words below this confidence are not taken as text.
inline constexpr float ConfidenceFloor = 60;

class TextReader
{
public:
    virtual ~TextReader() = default;
    // Reads the page; on a retry it may turn `image` upright (OcrResult::turns says so).
    virtual OcrResult read(ScanImage& image) = 0;
};

// The module's file name, and the entry point it exports: it makes a reader for `languages`
// that gives up a page when `stop` is set, or returns null when `interfaceVersion` is not the
// one it was built with (a module left from another build).
inline constexpr const char* TextReaderModule = "libvelmora-ocr.so";
inline constexpr const char* TextReaderEntryPoint = "VelmoraCreateTextReader";
inline constexpr int TextReaderInterfaceVersion = 1;
using CreateTextReaderFunction = TextReader* (*)(int interfaceVersion,
                                                 const LanguageChoice& languages,
                                                 const std::atomic<bool>* stop);

// Makes readers from the module beside the running program. The module is loaded once and
// stays loaded for the rest of the run: Tesseract's threads and tables outlive any reader.
class TextReaderFactory final
{
public:
    // The module in `folder`; by default the folder of the running program.
    explicit TextReaderFactory(std::string folder = {});
    ~TextReaderFactory();
    TextReaderFactory(const TextReaderFactory&) = delete;
    TextReaderFactory& operator=(const TextReaderFactory&) = delete;

    // Loads the module; false, with the reason in `error`, when it can't be.
    bool load(std::string& error);
    // A reader, made on the thread that will use it (Tesseract keeps settings per thread);
    // null when the module is not loaded or makes none.
    std::unique_ptr<TextReader> create(const LanguageChoice& languages,
                                       const std::atomic<bool>* stop) const;

private:
    std::string m_folder;
    CreateTextReaderFunction m_create = nullptr;
};

}  // namespace velmora
