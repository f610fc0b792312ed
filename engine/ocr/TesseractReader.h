#pragma once

// One Tesseract engine reading scanned pages: the words with their confidence and place, the
// lines they stand on, and the regions Tesseract takes for pictures, all in the pixels of the
// picture it read. A page read badly is checked for its orientation and script, and read
// again turned upright or with the language its script asks for. Each worker thread owns one.

#include "ocr/OcrLanguages.h"
#include "ocr/ScanImage.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace tesseract {
class TessBaseAPI;
}

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

// Clusters of ink outside every word and picture Tesseract found, without dust and ruled
// lines, largest first.
std::vector<PixelBox> LeftoverInk(const ScanImage& image, const OcrResult& result);

class TesseractReader final
{
public:
    // `stop`, when set, cancels a page being read.
    TesseractReader(LanguageChoice languages, const std::atomic<bool>* stop);
    ~TesseractReader();
    TesseractReader(const TesseractReader&) = delete;
    TesseractReader& operator=(const TesseractReader&) = delete;

    // Reads the page; on a retry it may turn `image` upright (OcrResult::turns says so).
    OcrResult read(ScanImage& image);

private:
    bool load(const std::string& languages);
    OcrResult recognise(const ScanImage& image);
    // Runs Tesseract on the image or rectangle set, and adds what it read to `result`.
    bool run(OcrResult& result);
    // Reads sizeable ink the page layout left out: text it missed, or else a picture of its
    // own (a signature, a logo, a drawing).
    void readLeftovers(const ScanImage& image, OcrResult& result);
    // Reads doubtful words again on their own.
    void reconsider(const ScanImage& image, OcrResult& result);
    // Orientation in quarter turns clockwise to make the page upright, and the script.
    bool detect(const ScanImage& image, int& turns, std::string& script);

    LanguageChoice m_choice;
    const std::atomic<bool>* m_stop;
    std::unique_ptr<tesseract::TessBaseAPI> m_api;
    std::unique_ptr<tesseract::TessBaseAPI> m_osd;
    std::string m_loaded;
    std::string m_scriptLanguage;
    bool m_osdFailed = false;
};

}  // namespace velmora
