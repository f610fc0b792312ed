#pragma once

// The options of one engine run, as the stored options document gives them, in plain values.

#include <string>
#include <vector>

namespace velmora {

struct EngineOptions final
{
    bool adjustFontNames = true;
    bool adjustSpacing = true;
    int conversionMethod = 2;  // 1 tabs and spaces, 2 text boxes, 3 flow
    bool detectHeader = true;
    bool wordArt = false;
    int documentType = 2;  // 1 single column, 2 multi-column, 3 legal pleading
    bool extractHyperlinks = true;
    bool extractImages = true;
    bool extractText = true;
    int imageFormat = 0;  // 0 JPEG, 1 bitmap
    int jpegQuality = 85;
    bool mergeParagraph = true;
    bool mergeText = true;
    int pageFrom = 0;
    int pageTo = 0;
    bool preserveTextPosition = true;
    bool shrinkFonts = true;
    bool extractToBmp = false;
    bool usingPageRange = false;
    int zoomDpi = 96;
    // Candidates to open a protected PDF with, in the order to try them.
    std::vector<std::string> passwords;
};

}  // namespace velmora
