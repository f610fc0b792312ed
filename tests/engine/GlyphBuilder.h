#pragma once

// Pages made by hand for the layout tests: text placed at points, one glyph per character,
// each half as wide as it is high, as a simple monospaced face would set it.

#include "model/PageModel.h"

#include <string>
#include <vector>

namespace enginetest {

// One MuPDF-style line: `text` from x on the baseline y (top-down page space).
inline velmora::TextLine MakeLine(float x, float y, const std::string& text, float size = 10,
                                  int font = 0)
{
    velmora::TextLine line;
    float pen = x;
    for (unsigned char c : text) {
        velmora::Glyph glyph;
        glyph.c = c;
        glyph.size = size;
        glyph.font = font;
        glyph.box = velmora::Rect{pen, y - size * 0.8f, pen + size * 0.5f, y + size * 0.2f};
        glyph.baseline = y;
        pen += size * 0.5f;
        line.glyphs.push_back(glyph);
        line.box.unite(glyph.box);
    }
    return line;
}

// Several runs of text on one baseline, each starting at its own x.
inline velmora::TextLine MakeRow(float y, const std::vector<std::pair<float, std::string>>& cells,
                                 float size = 10)
{
    velmora::TextLine row;
    for (const auto& [x, text] : cells) {
        velmora::TextLine part = MakeLine(x, y, text, size);
        row.glyphs.insert(row.glyphs.end(), part.glyphs.begin(), part.glyphs.end());
        row.box.unite(part.box);
    }
    return row;
}

}  // namespace enginetest
