#pragma once

// Right-to-left scripts: a PDF gives their glyphs in the order they stand on the page, left to
// right; a document wants them in the order they are read.

#include "model/PageModel.h"

#include <vector>

namespace velmora {

// Hebrew, Arabic and the other scripts written from right to left.
bool IsRightToLeft(char32_t c);

// Puts glyphs that stand left to right on the page in reading order: in a line that reads
// right to left as a whole, everything but its runs of Latin letters and digits is turned
// round; in one that reads left to right, only its runs of right-to-left words are. Returns
// whether the line reads right to left.
bool ToReadingOrder(std::vector<Glyph>& glyphs);

}  // namespace velmora
