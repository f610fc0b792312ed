#pragma once

// One Tesseract engine reading scanned pages, built into the recognition module alone. A page
// read badly is checked for its orientation and script, and read again turned upright or with
// the language its script asks for. Each worker thread owns one.

#include "ocr/TextReader.h"

namespace tesseract {
class TessBaseAPI;
}

namespace velmora {

// Clusters of ink outside every word and picture Tesseract found, without dust and ruled
// lines, largest first; none once `stop` is set.
std::vector<PixelBox> LeftoverInk(const ScanImage& image, const OcrResult& result,
                                  const std::atomic<bool>* stop = nullptr);

class TesseractReader final : public TextReader
{
public:
    // `stop`, when set, cancels a page being read.
    TesseractReader(LanguageChoice languages, const std::atomic<bool>* stop);
    ~TesseractReader() override;
    TesseractReader(const TesseractReader&) = delete;
    TesseractReader& operator=(const TesseractReader&) = delete;

    OcrResult read(ScanImage& image) override;

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
