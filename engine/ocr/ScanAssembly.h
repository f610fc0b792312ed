#pragma once

// From what Tesseract read to the content of the page: the page turned upright and
// straightened, its confident words in lines with a size taken from their height, and what
// stays a picture. The words then join the page's text as if its text layer had held them.

#include "ocr/TextReader.h"
#include "pdf/PdfSession.h"

#include <string>
#include <vector>

namespace velmora {

struct RecognisedWord final
{
    std::string text;  // UTF-8
    Rect box;          // points, on the upright page
};

struct RecognisedLine final
{
    std::vector<RecognisedWord> words;
    float size = 0;      // points
    float baseline = 0;  // points from the top of the upright page
};

struct RecognisedPage final
{
    bool read = false;
    float width = 0;  // the upright page, in points
    float height = 0;
    std::vector<RecognisedLine> lines;
    // Regions Tesseract took for pictures, cut out of the scan; or, where the scan also holds
    // what could not be read with confidence, the whole scan with the words taken as text
    // painted out.
    std::vector<Picture> pictures;
};

// `image` is the page Tesseract read, turned as `result` says; it may be turned further.
RecognisedPage AssemblePage(const OcrResult& result, ScanImage& image, int conversionMethod,
                            const PictureOptions& pictureOptions);

// Puts the recognised words and pictures in place of the scan's own content.
void PutRecognisedPage(PageContent& page, const RecognisedPage& recognised, FontTable& fonts);

}  // namespace velmora
