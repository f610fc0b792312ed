#include "ocr/ScanDetection.h"

#include <algorithm>

namespace velmora {

namespace {

bool isBlank(char32_t c)
{
    return c <= ' ' || c == 0xa0 || c == 0x3000 || (c >= 0x2000 && c <= 0x200b) || c == 0xfeff;
}

}  // namespace

bool IsScannedPage(const PageContent& page)
{
    for (const TextLine& line : page.lines) {
        if (!std::all_of(line.glyphs.begin(), line.glyphs.end(),
                         [](const Glyph& glyph) { return isBlank(glyph.c); }))
            return false;
    }
    if (page.pictures.empty() || !(page.width > 0) || !(page.height > 0))
        return false;
    // Coverage on a grid, so strips and overlapping pictures count once.
    constexpr int Cells = 64;
    int covered = 0;
    for (int row = 0; row < Cells; ++row) {
        const float y = page.height * (static_cast<float>(row) + 0.5f) / Cells;
        for (int column = 0; column < Cells; ++column) {
            const float x = page.width * (static_cast<float>(column) + 0.5f) / Cells;
            covered += std::any_of(page.pictures.begin(), page.pictures.end(),
                                   [x, y](const Picture& p) { return p.box.contains(x, y); });
        }
    }
    return covered * 2 > Cells * Cells;
}

}  // namespace velmora
