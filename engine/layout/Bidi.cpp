#include "layout/Bidi.h"

#include <algorithm>

namespace velmora {

namespace {

enum class Direction { Neutral, LeftToRight, RightToLeft };

Direction directionOf(char32_t c)
{
    if (IsRightToLeft(c))
        return Direction::RightToLeft;
    if ((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
        (c >= 0xc0 && c <= 0x24f && c != 0xd7 && c != 0xf7) || (c >= 0x370 && c <= 0x52f) ||
        (c >= 0x3040 && c <= 0x9fff))
        return Direction::LeftToRight;
    return Direction::Neutral;
}

// Turns round each run of glyphs of direction `kind`, with the neutral glyphs between two of
// them, in place.
void reverseRuns(std::vector<Glyph>& glyphs, Direction kind)
{
    std::size_t i = 0;
    while (i < glyphs.size()) {
        if (directionOf(glyphs[i].c) != kind) {
            ++i;
            continue;
        }
        std::size_t end = i + 1;
        std::size_t last = i;
        while (end < glyphs.size()) {
            const Direction d = directionOf(glyphs[end].c);
            if (d == kind)
                last = end;
            else if (d != Direction::Neutral || glyphs[end].c == '\t')
                break;
            ++end;
        }
        std::reverse(glyphs.begin() + static_cast<std::ptrdiff_t>(i),
                     glyphs.begin() + static_cast<std::ptrdiff_t>(last) + 1);
        i = last + 1;
    }
}

}  // namespace

bool IsRightToLeft(char32_t c)
{
    return (c >= 0x0590 && c <= 0x08ff) || (c >= 0xfb1d && c <= 0xfdff) ||
           (c >= 0xfe70 && c <= 0xfeff) || (c >= 0x10800 && c <= 0x10fff);
}

bool ToReadingOrder(std::vector<Glyph>& glyphs)
{
    int rightToLeft = 0;
    int leftToRight = 0;
    for (const Glyph& glyph : glyphs) {
        const Direction d = directionOf(glyph.c);
        rightToLeft += d == Direction::RightToLeft ? 1 : 0;
        leftToRight += d == Direction::LeftToRight ? 1 : 0;
    }
    if (rightToLeft == 0)
        return false;
    if (rightToLeft < leftToRight) {
        reverseRuns(glyphs, Direction::RightToLeft);
        return false;
    }
    // Tabs part a line into cells that keep their own order; each cell reads right to left.
    std::size_t from = 0;
    while (from <= glyphs.size()) {
        std::size_t to = from;
        while (to < glyphs.size() && glyphs[to].c != '\t')
            ++to;
        std::vector<Glyph> part(glyphs.begin() + static_cast<std::ptrdiff_t>(from),
                                glyphs.begin() + static_cast<std::ptrdiff_t>(to));
        std::reverse(part.begin(), part.end());
        reverseRuns(part, Direction::LeftToRight);
        std::copy(part.begin(), part.end(), glyphs.begin() + static_cast<std::ptrdiff_t>(from));
        from = to + 1;
    }
    return true;
}

}  // namespace velmora
