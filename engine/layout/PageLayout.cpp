#include "layout/PageLayout.h"

#include "layout/Bidi.h"
#include "layout/Decorations.h"
#include "layout/FontNames.h"
#include "layout/Hyphenation.h"
#include "layout/RunningHeads.h"
#include "layout/Tables.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velmora {

namespace {

bool isSpace(char32_t c)
{
    return c == ' ' || c == '\t' || c == 0xa0 || c == 0x3000 || (c >= 0x2000 && c <= 0x200b);
}

bool isLowerLetter(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 0xdf && c <= 0xff && c != 0xf7);
}

bool isLetter(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= 0xc0 && c <= 0x24f);
}

float median(std::vector<float> values, float fallback)
{
    if (values.empty())
        return fallback;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Glyph synthetic(const Glyph& style, char32_t c, float x0, float x1)
{
    Glyph glyph = style;
    glyph.c = c;
    glyph.box.x0 = x0;
    glyph.box.x1 = std::max(x0, x1);
    glyph.link = -1;
    return glyph;
}

float weightedSize(const std::vector<Glyph>& glyphs)
{
    float sum = 0;
    int count = 0;
    for (const Glyph& glyph : glyphs) {
        if (!isSpace(glyph.c)) {
            sum += glyph.size;
            ++count;
        }
    }
    return count ? sum / static_cast<float>(count) : 0;
}

int countWords(const std::vector<Glyph>& glyphs)
{
    int words = 0;
    bool inWord = false;
    for (const Glyph& glyph : glyphs) {
        const bool space = isSpace(glyph.c);
        if (!space && !inWord)
            ++words;
        inWord = !space;
    }
    return words;
}

Fragment makeFragment(std::vector<Glyph> glyphs)
{
    while (!glyphs.empty() && isSpace(glyphs.back().c))
        glyphs.pop_back();
    const auto first =
        std::find_if(glyphs.begin(), glyphs.end(), [](const Glyph& g) { return !isSpace(g.c); });
    glyphs.erase(glyphs.begin(), first);
    Fragment fragment;
    for (const Glyph& glyph : glyphs)
        fragment.box.unite(glyph.box);
    fragment.size = weightedSize(glyphs);
    fragment.words = countWords(glyphs);
    fragment.glyphs = std::move(glyphs);
    return fragment;
}

// Dots that lead the eye from an entry to its page number.
bool isLeader(const Fragment& fragment)
{
    return std::all_of(fragment.glyphs.begin(), fragment.glyphs.end(), [](const Glyph& glyph) {
        return glyph.c == '.' || glyph.c == 0x2026 || glyph.c == 0xb7 || isSpace(glyph.c);
    });
}

bool fragmentIsNumber(const Fragment& fragment, int& value)
{
    if (fragment.glyphs.empty() || fragment.glyphs.size() > 3)
        return false;
    value = 0;
    for (const Glyph& glyph : fragment.glyphs) {
        if (glyph.c < '0' || glyph.c > '9')
            return false;
        value = value * 10 + static_cast<int>(glyph.c - '0');
    }
    return value >= 1 && value <= 99;
}

bool isBold(const Block& block, const std::vector<FontFace>* fonts)
{
    if (!fonts)
        return false;
    int bold = 0;
    int total = 0;
    for (const Glyph& glyph : block.text) {
        if (isSpace(glyph.c))
            continue;
        ++total;
        if (glyph.font >= 0 && static_cast<std::size_t>(glyph.font) < fonts->size() &&
            ResolveFontStyle((*fonts)[static_cast<std::size_t>(glyph.font)], true).bold)
            ++bold;
    }
    return total > 0 && bold == total;
}

// How the lines of a block sit between the region's edges. Several lines tell by their own
// edges; a single line by where it stands in the region.
Alignment alignmentOf(const Block& block, float left, float right)
{
    // Tab stops place the parts of a line themselves.
    if (block.hasTabs())
        return Alignment::Left;
    const float size = std::max(block.lines.front().size, 1.0f);
    const float tolerance = size * 0.5f;
    if (block.lines.size() >= 2) {
        bool rightAligned = true;
        bool leftAligned = true;
        bool centred = true;
        bool sameStart = true;
        const float centre = block.box.centreX();
        for (std::size_t i = 0; i < block.lines.size(); ++i) {
            const Rect& box = block.lines[i].box;
            const bool last = i + 1 == block.lines.size();
            if (std::fabs(box.x1 - block.box.x1) > tolerance && !last)
                rightAligned = false;
            if (i > 0 && std::fabs(box.x0 - block.lines[1].box.x0) > tolerance)
                leftAligned = false;
            if (std::fabs(box.x0 - block.lines[0].box.x0) > tolerance)
                sameStart = false;
            if (std::fabs(box.centreX() - centre) > tolerance)
                centred = false;
        }
        const bool lastEndsRight = std::fabs(block.lines.back().box.x1 - block.box.x1) <= tolerance;
        if (rightAligned && leftAligned)
            return lastEndsRight ? Alignment::Left : Alignment::Justify;
        // Lines of different lengths about one centre; with two lines, the second's start
        // alone says nothing of a left edge, unless the block starts at the region's edge.
        const bool inset = block.box.x0 > left + size;
        if (centred && (!leftAligned || (block.lines.size() == 2 && !sameStart && inset)))
            return Alignment::Centre;
        if (rightAligned && lastEndsRight && !leftAligned)
            return Alignment::Right;
        return Alignment::Left;
    }
    const Rect& box = block.box;
    const float width = right - left;
    if (width <= 0 || box.width() > width * 0.8f)
        return Alignment::Left;
    if (std::fabs(box.centreX() - (left + right) / 2) <= tolerance && box.x0 > left + size)
        return Alignment::Centre;
    if (std::fabs(box.x1 - right) <= tolerance && box.x0 > left + width * 0.3f)
        return Alignment::Right;
    return Alignment::Left;
}

// A line that opens with a bullet or an enumerator ("3.", "b)", "(iv)") starts an item.
bool startsItem(const Line& line)
{
    std::size_t i = 0;
    while (i < line.glyphs.size() && isSpace(line.glyphs[i].c))
        ++i;
    if (i >= line.glyphs.size())
        return false;
    const char32_t first = line.glyphs[i].c;
    for (char32_t bullet : {U'\u2022', U'\u25e6', U'\u25aa', U'\u25cf', U'\u2023', U'\u2043',
                            U'\u2219', U'\u00b7', U'\u25a0', U'\u2013', U'\u2014', U'\u27a2'}) {
        if (first == bullet)
            return true;
    }
    const bool spaced = i + 1 < line.glyphs.size() && isSpace(line.glyphs[i + 1].c);
    if ((first == '-' || first == '*') && spaced)
        return true;
    // A symbol font's bullet that its font maps to no character (a control or private code).
    const bool unmapped =
        first < 0x20 || (first >= 0x7f && first < 0xa0) || (first >= 0xe000 && first < 0xf900);
    if (unmapped && spaced)
        return true;
    // Up to three digits or one letter, then '.' or ')', then a blank.
    std::size_t end = i;
    if (first == '(')
        ++end;
    const std::size_t markStart = end;
    while (end < line.glyphs.size() && end - markStart < 3 && line.glyphs[end].c >= '0' &&
           line.glyphs[end].c <= '9')
        ++end;
    if (end == markStart && end < line.glyphs.size() && isLetter(line.glyphs[end].c))
        ++end;
    if (end == markStart || end + 1 >= line.glyphs.size())
        return false;
    const char32_t mark = line.glyphs[end].c;
    return (mark == ')' || (mark == '.' && first != '(')) && isSpace(line.glyphs[end + 1].c);
}

float firstWordWidth(const Line& line)
{
    float width = 0;
    for (const Glyph& glyph : line.glyphs) {
        if (isSpace(glyph.c))
            break;
        width += glyph.box.width();
        // Japanese and Chinese break a line between any two characters.
        const char32_t c = glyph.c;
        if ((c >= 0x3040 && c <= 0x30ff) || (c >= 0x3400 && c <= 0x9fff) ||
            (c >= 0xf900 && c <= 0xfaff) || (c >= 0xff00 && c <= 0xffef))
            break;
    }
    return width;
}

// Where the letters that open `glyphs` end.
std::size_t wordEnd(const std::vector<Glyph>& glyphs)
{
    std::size_t end = 0;
    while (end < glyphs.size() && isLetter(glyphs[end].c))
        ++end;
    return end;
}

// The letters right before `end`, as UTF-8.
std::string wordBefore(const std::vector<Glyph>& glyphs, std::size_t end)
{
    std::size_t start = end;
    while (start > 0 && isLetter(glyphs[start - 1].c))
        --start;
    return ToUtf8(std::vector<Glyph>(glyphs.begin() + static_cast<std::ptrdiff_t>(start),
                                     glyphs.begin() + static_cast<std::ptrdiff_t>(end)));
}

// A right-to-left line seen in a mirror, so that it starts on the left like any other; twice
// mirrored is itself again.
Rect mirrored(const Rect& box)
{
    return Rect{-box.x1, box.y0, -box.x0, box.y1};
}

Line mirrored(Line line)
{
    line.box = mirrored(line.box);
    for (Glyph& glyph : line.glyphs)
        glyph.box = mirrored(glyph.box);
    for (float& stop : line.tabStops)
        stop = -stop;
    line.leaderStop = -line.leaderStop;
    return line;
}

// The gaps between the words of a line, blank to blank, leaving out its tabs.
std::vector<float> wordGaps(const Line& line)
{
    std::vector<float> gaps;
    const Glyph* lastInk = nullptr;
    bool blank = false;
    for (const Glyph& glyph : line.glyphs) {
        if (glyph.c == '\t') {
            lastInk = nullptr;
            continue;
        }
        if (isSpace(glyph.c)) {
            blank = true;
            continue;
        }
        if (lastInk && blank)
            gaps.push_back(glyph.box.x0 - lastInk->box.x1);
        lastInk = &glyph;
        blank = false;
    }
    return gaps;
}

// A justified line stretches its blanks, sometimes past the width that otherwise tells a
// column apart. Such a gap is a word space: it is no wider than a few of the line's other
// word gaps, and no line nearby has a column starting where the next word does.
void joinJustifiedGaps(std::vector<Line>& lines)
{
    constexpr std::size_t Neighbours = 3;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Line& line = lines[i];
        if (line.tabStops.empty())
            continue;
        const std::vector<float> gaps = wordGaps(line);
        if (gaps.size() < 2)
            continue;
        const float typical = median(gaps, 0);
        const float size = std::max(line.size, 1.0f);
        std::vector<float> kept;
        std::size_t stop = 0;
        for (Glyph& glyph : line.glyphs) {
            if (glyph.c != '\t')
                continue;
            const float next = line.tabStops[stop++];
            const float gap = glyph.box.width();
            bool aligned = false;
            const std::size_t from = i >= Neighbours ? i - Neighbours : 0;
            for (std::size_t j = from; j < std::min(lines.size(), i + Neighbours + 1); ++j) {
                for (float other : lines[j].tabStops)
                    aligned = aligned || (j != i && std::fabs(other - next) < 2);
            }
            if (gap <= size * 3 && gap <= typical * 3 + size * 0.1f && !aligned)
                glyph.c = ' ';
            else
                kept.push_back(next);
        }
        line.tabStops = std::move(kept);
    }
}

// Dot leaders before a line's closing number ("Introduction . . . . 12") become a tab to a
// flush-right stop with dot leaders, which keeps the line on one line in any font.
void markLeader(Line& line)
{
    std::vector<Glyph>& glyphs = line.glyphs;
    std::size_t end = glyphs.size();
    while (end > 0 && isSpace(glyphs[end - 1].c))
        --end;
    std::size_t number = end;
    while (number > 0 && !isSpace(glyphs[number - 1].c) && glyphs[number - 1].c != '.')
        --number;
    if (number == end || end - number > 8)
        return;
    std::size_t first = number;
    int dots = 0;
    while (first > 0 && (glyphs[first - 1].c == '.' || isSpace(glyphs[first - 1].c))) {
        dots += glyphs[first - 1].c == '.' ? 1 : 0;
        --first;
    }
    if (dots < 3 || first == 0)
        return;
    // Whatever tab stops stood among the dots go with them.
    const float from = glyphs[first].box.x0;
    const float to = glyphs[number].box.x0;
    std::erase_if(line.tabStops,
                  [&](float stop) { return stop >= from - 0.5f && stop <= to + 0.5f; });
    Glyph tab = glyphs[first];
    tab.c = '\t';
    tab.box.x0 = from;
    tab.box.x1 = to;
    tab.link = -1;
    line.leaderStop = glyphs[end - 1].box.x1;
    glyphs.erase(glyphs.begin() + static_cast<std::ptrdiff_t>(first),
                 glyphs.begin() + static_cast<std::ptrdiff_t>(number));
    glyphs.insert(glyphs.begin() + static_cast<std::ptrdiff_t>(first), tab);
}

// Letter-spaced words ("L E T T E R"): runs of single letters standing an even gap apart
// are one word again, the gap kept as letter spacing; a wider gap between them is a blank.
void joinLetterSpacing(Line& line)
{
    std::vector<Glyph>& glyphs = line.glyphs;
    const auto single = [&glyphs](std::size_t i) {
        return !isSpace(glyphs[i].c) && (i == 0 || isSpace(glyphs[i - 1].c)) &&
               (i + 1 == glyphs.size() || isSpace(glyphs[i + 1].c));
    };
    std::size_t i = 0;
    while (i < glyphs.size()) {
        if (!single(i)) {
            ++i;
            continue;
        }
        // Single letters, each after one blank.
        std::vector<std::size_t> letters{i};
        std::size_t k = i + 2;
        while (k < glyphs.size() && isSpace(glyphs[k - 1].c) && glyphs[k - 1].c != '\t' &&
               single(k)) {
            letters.push_back(k);
            k += 2;
        }
        if (letters.size() < 3) {
            i = k;
            continue;
        }
        std::vector<float> gaps;
        for (std::size_t n = 1; n < letters.size(); ++n)
            gaps.push_back(glyphs[letters[n]].box.x0 - glyphs[letters[n - 1]].box.x1);
        const float even = median(gaps, 0);
        // Remove the blanks between evenly spaced letters, last first.
        for (std::size_t n = letters.size() - 1; n >= 1; --n) {
            if (gaps[n - 1] <= even * 1.5f + 0.5f) {
                glyphs[letters[n - 1]].spacing = gaps[n - 1];
                glyphs.erase(glyphs.begin() + static_cast<std::ptrdiff_t>(letters[n]) - 1);
            }
        }
        i = letters.front() + 1;
    }
}

}  // namespace

std::string ToUtf8(const std::vector<Glyph>& glyphs)
{
    std::string out;
    for (const Glyph& glyph : glyphs) {
        const char32_t c = glyph.c;
        if (c < 0x80) {
            out.push_back(static_cast<char>(c));
        } else if (c < 0x800) {
            out.push_back(static_cast<char>(0xc0 | (c >> 6)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3f)));
        } else if (c < 0x10000) {
            out.push_back(static_cast<char>(0xe0 | (c >> 12)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3f)));
        } else {
            out.push_back(static_cast<char>(0xf0 | (c >> 18)));
            out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3f)));
            out.push_back(static_cast<char>(0x80 | (c & 0x3f)));
        }
    }
    return out;
}

float DominantSize(const std::vector<TextLine>& lines)
{
    // Sizes rounded to half points, counted by glyph.
    std::vector<std::pair<int, int>> counts;
    for (const TextLine& line : lines) {
        for (const Glyph& glyph : line.glyphs) {
            if (isSpace(glyph.c))
                continue;
            const int key = static_cast<int>(std::lround(glyph.size * 2));
            auto it = std::find_if(counts.begin(), counts.end(),
                                   [key](const auto& entry) { return entry.first == key; });
            if (it == counts.end())
                counts.emplace_back(key, 1);
            else
                ++it->second;
        }
    }
    if (counts.empty())
        return 0;
    const auto best =
        std::max_element(counts.begin(), counts.end(), [](const auto& a, const auto& b) {
            return a.second < b.second || (a.second == b.second && a.first > b.first);
        });
    return static_cast<float>(best->first) / 2;
}

std::vector<Fragment> SplitIntoFragments(const TextLine& line)
{
    std::vector<Fragment> fragments;
    std::vector<Glyph> current;
    const Glyph* lastInk = nullptr;
    for (const Glyph& glyph : line.glyphs) {
        if (glyph.c < 0x20 && glyph.c != '\t')
            continue;
        if (!isSpace(glyph.c)) {
            // A gap of about a character's height or more is no word space: table cells,
            // columns and pleading numbers start here. Dot leaders are spaced out on purpose.
            const bool leader = lastInk && lastInk->c == '.' && glyph.c == '.';
            if (lastInk && !leader &&
                glyph.box.x0 - lastInk->box.x1 > std::max(glyph.size, lastInk->size)) {
                Fragment fragment = makeFragment(std::move(current));
                if (!fragment.glyphs.empty())
                    fragments.push_back(std::move(fragment));
                current.clear();
            }
            current.push_back(glyph);
            lastInk = &glyph;
        } else if (lastInk) {
            current.push_back(glyph);
        }
    }
    Fragment fragment = makeFragment(std::move(current));
    if (!fragment.glyphs.empty())
        fragments.push_back(std::move(fragment));
    return fragments;
}

std::vector<std::pair<float, float>> FindGutters(const std::vector<Fragment>& fragments)
{
    std::vector<std::pair<float, float>> gutters;
    if (fragments.size() < 6)
        return gutters;
    float left = fragments.front().box.x0;
    float right = fragments.front().box.x1;
    std::vector<float> sizes;
    for (const Fragment& fragment : fragments) {
        left = std::min(left, fragment.box.x0);
        right = std::max(right, fragment.box.x1);
        sizes.push_back(fragment.size);
    }
    const float width = right - left;
    if (width < 72)
        return gutters;
    const float size = median(sizes, 10);

    const int cells = static_cast<int>(std::ceil(width)) + 1;
    std::vector<int> coverage(static_cast<std::size_t>(cells), 0);
    for (const Fragment& fragment : fragments) {
        const int from = std::clamp(static_cast<int>(fragment.box.x0 - left), 0, cells - 1);
        const int to =
            std::clamp(static_cast<int>(std::ceil(fragment.box.x1 - left)), 0, cells - 1);
        for (int x = from; x <= to; ++x)
            ++coverage[static_cast<std::size_t>(x)];
    }
    // A title or a footer may cross the gutter; a handful of such lines don't close it. The
    // runs that fewest lines cross are tried first, so a column of only a few lines beside
    // the gutter is not taken for more gutter.
    const int allowed = std::max(2, static_cast<int>(fragments.size() / 10));
    const float minimumWidth = std::max(6.0f, size * 0.6f);
    const int begin = static_cast<int>(width * 0.05f);
    const int stop = static_cast<int>(width * 0.95f);
    for (int level = 0; level <= allowed; ++level) {
        int x = begin;
        while (x < stop) {
            if (coverage[static_cast<std::size_t>(x)] > level) {
                ++x;
                continue;
            }
            int end = x;
            while (end < cells && coverage[static_cast<std::size_t>(end)] <= level)
                ++end;
            const float start = left + static_cast<float>(x);
            const float finish = left + static_cast<float>(end);
            x = end;
            if (finish - start < minimumWidth || end >= stop)
                continue;
            const bool known = std::any_of(gutters.begin(), gutters.end(), [&](const auto& g) {
                return g.first < finish && g.second > start;
            });
            if (known)
                continue;
            // A real gutter has prose on both sides, side by side on the page.
            float bound = left - 1;
            for (const auto& g : gutters) {
                if (g.second <= start)
                    bound = std::max(bound, g.second - 1);
            }
            std::vector<float> leftWords;
            std::vector<float> rightWords;
            float leftTop = 1e9f;
            float leftBottom = -1e9f;
            float rightTop = 1e9f;
            float rightBottom = -1e9f;
            for (const Fragment& fragment : fragments) {
                if (fragment.box.x1 <= start + 1 && fragment.box.x0 >= bound) {
                    leftWords.push_back(static_cast<float>(fragment.words));
                    leftTop = std::min(leftTop, fragment.box.y0);
                    leftBottom = std::max(leftBottom, fragment.box.y1);
                } else if (fragment.box.x0 >= finish - 1) {
                    rightWords.push_back(static_cast<float>(fragment.words));
                    rightTop = std::min(rightTop, fragment.box.y0);
                    rightBottom = std::max(rightBottom, fragment.box.y1);
                }
            }
            if (leftWords.size() < 3 || rightWords.size() < 3)
                continue;
            if (median(leftWords, 0) < 3 || median(rightWords, 0) < 3)
                continue;
            const float overlap = std::min(leftBottom, rightBottom) - std::max(leftTop, rightTop);
            if (overlap < size * 3)
                continue;
            gutters.emplace_back(start, finish);
        }
    }
    std::sort(gutters.begin(), gutters.end());
    return gutters;
}

std::vector<std::size_t> FindPleadingNumbers(const std::vector<Fragment>& fragments)
{
    std::vector<std::size_t> candidates;
    float bodyLeft = 1e9f;
    for (std::size_t i = 0; i < fragments.size(); ++i) {
        int value = 0;
        if (fragmentIsNumber(fragments[i], value))
            candidates.push_back(i);
        else if (fragments[i].words >= 2)
            bodyLeft = std::min(bodyLeft, fragments[i].box.x0);
    }
    // Numbers in the margin stand left of all prose and line up with each other.
    std::vector<std::size_t> margin;
    for (std::size_t i : candidates) {
        if (fragments[i].box.x1 < bodyLeft - 2)
            margin.push_back(i);
    }
    if (margin.size() < 5)
        return {};
    std::sort(margin.begin(), margin.end(), [&](std::size_t a, std::size_t b) {
        return fragments[a].box.y0 < fragments[b].box.y0;
    });
    std::vector<float> rights;
    rights.reserve(margin.size());
    for (std::size_t i : margin)
        rights.push_back(fragments[i].box.x1);
    const float column = median(rights, 0);
    std::vector<std::size_t> aligned;
    for (std::size_t i : margin) {
        if (std::fabs(fragments[i].box.x1 - column) < 12)
            aligned.push_back(i);
    }
    int rising = 0;
    for (std::size_t k = 1; k < aligned.size(); ++k) {
        int previous = 0;
        int value = 0;
        fragmentIsNumber(fragments[aligned[k - 1]], previous);
        fragmentIsNumber(fragments[aligned[k]], value);
        if (value > previous)
            ++rising;
    }
    if (aligned.size() < 5 || rising * 5 < static_cast<int>(aligned.size() - 1) * 4)
        return {};
    return aligned;
}

std::vector<Line> BuildLines(std::vector<Fragment> fragments, bool mergeText)
{
    std::sort(fragments.begin(), fragments.end(), [](const Fragment& a, const Fragment& b) {
        return a.box.centreY() < b.box.centreY() ||
               (a.box.centreY() == b.box.centreY() && a.box.x0 < b.box.x0);
    });
    std::vector<std::vector<Fragment>> groups;
    std::vector<Rect> groupBoxes;
    for (Fragment& fragment : fragments) {
        int target = -1;
        if (mergeText) {
            // Only the last few lines can still share a baseline with this fragment.
            const int first = std::max(0, static_cast<int>(groups.size()) - 4);
            for (int g = static_cast<int>(groups.size()) - 1; g >= first; --g) {
                const Rect& box = groupBoxes[static_cast<std::size_t>(g)];
                const float overlap =
                    std::min(box.y1, fragment.box.y1) - std::max(box.y0, fragment.box.y0);
                const float smaller = std::min(box.height(), fragment.box.height());
                if (smaller <= 0 || overlap < smaller * 0.5f)
                    continue;
                bool collides = false;
                for (const Fragment& other : groups[static_cast<std::size_t>(g)]) {
                    const float shared = std::min(other.box.x1, fragment.box.x1) -
                                         std::max(other.box.x0, fragment.box.x0);
                    if (shared > 1)
                        collides = true;
                }
                if (!collides) {
                    target = g;
                    break;
                }
            }
        }
        if (target < 0) {
            groups.emplace_back();
            groupBoxes.push_back(fragment.box);
            target = static_cast<int>(groups.size()) - 1;
        }
        groupBoxes[static_cast<std::size_t>(target)].unite(fragment.box);
        groups[static_cast<std::size_t>(target)].push_back(std::move(fragment));
    }

    std::vector<Line> lines;
    for (auto& group : groups) {
        std::sort(group.begin(), group.end(),
                  [](const Fragment& a, const Fragment& b) { return a.box.x0 < b.box.x0; });
        Line line;
        for (std::size_t i = 0; i < group.size(); ++i) {
            // Dot leaders lead on from the text before them; runs that touch (a raised mark
            // after its word) or stand a word space apart are one text.
            const float gap = i > 0 ? group[i].box.x0 - group[i - 1].box.x1 : 0;
            const float size = i > 0 ? std::max(group[i].size, group[i - 1].size) : 0;
            if (i > 0 && gap < size * 0.15f && gap > -size) {
                // nothing between them
            } else if (i > 0 && (isLeader(group[i]) || gap < size * 0.6f)) {
                line.glyphs.push_back(
                    synthetic(group[i].glyphs.front(), ' ', group[i - 1].box.x1, group[i].box.x0));
            } else if (i > 0) {
                line.glyphs.push_back(
                    synthetic(group[i].glyphs.front(), '\t', group[i - 1].box.x1, group[i].box.x0));
                line.tabStops.push_back(group[i].box.x0);
            }
            line.glyphs.insert(line.glyphs.end(), group[i].glyphs.begin(), group[i].glyphs.end());
            line.box.unite(group[i].box);
        }
        line.size = weightedSize(line.glyphs);
        std::vector<float> baselines;
        for (const Glyph& glyph : line.glyphs) {
            if (!isSpace(glyph.c))
                baselines.push_back(glyph.baseline);
        }
        line.baseline = median(std::move(baselines), line.box.y1);
        // Smaller glyphs raised or lowered from the line (footnote marks, formulas) keep their
        // shift; turned text, whose every glyph stands on another baseline, keeps none.
        for (Glyph& glyph : line.glyphs) {
            const float rise = line.baseline - glyph.baseline;
            if (!isSpace(glyph.c) && std::fabs(rise) > line.size * 0.15f &&
                glyph.size < line.size * 0.9f)
                glyph.rise = rise;
        }
        lines.push_back(std::move(line));
    }
    std::sort(lines.begin(), lines.end(),
              [](const Line& a, const Line& b) { return a.box.y1 < b.box.y1; });
    joinJustifiedGaps(lines);
    for (Line& line : lines) {
        markLeader(line);
        joinLetterSpacing(line);
        line.rightToLeft = ToReadingOrder(line.glyphs);
    }
    return lines;
}

std::vector<Block> BuildParagraphs(const std::vector<Line>& lines, bool merge, float bodySize)
{
    std::vector<Block> blocks;
    if (lines.empty())
        return blocks;
    std::vector<float> steps;
    float regionLeft = lines.front().box.x0;
    float regionRight = lines.front().box.x1;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        regionLeft = std::min(regionLeft, lines[i].box.x0);
        regionRight = std::max(regionRight, lines[i].box.x1);
        if (i > 0) {
            const float step = lines[i].box.y1 - lines[i - 1].box.y1;
            if (step > 0 && step < lines[i].size * 3)
                steps.push_back(step);
        }
    }
    const float pitch = median(steps, lines.front().size * 1.3f);

    const auto startBlock = [&blocks](const Line& line) {
        Block block;
        block.text = line.glyphs;
        block.tabStops = line.tabStops;
        block.leaderStop = line.leaderStop;
        block.lines.push_back(line);
        block.box = line.box;
        block.rightToLeft = line.rightToLeft;
        blocks.push_back(std::move(block));
    };

    // Right-to-left lines are joined as their mirror images, which start on the left.
    for (const Line& original : lines) {
        const Line line = original.rightToLeft ? mirrored(original) : original;
        const float right = original.rightToLeft ? -regionLeft : regionRight;
        if (blocks.empty() || !merge || blocks.back().rightToLeft != line.rightToLeft) {
            startBlock(line);
            continue;
        }
        Block& block = blocks.back();
        const Line& previous = block.lines.back();
        const float size = std::max(previous.size, line.size);
        const float step = line.box.y1 - previous.box.y1;
        const bool endsWithHyphen = !previous.glyphs.empty() && (previous.glyphs.back().c == '-' ||
                                                                 previous.glyphs.back().c == 0xad);
        // A line ends its paragraph when the next line's first word would have fitted on it.
        const bool shortLine = previous.box.x1 + firstWordWidth(line) + size * 0.3f < right;
        // Centred or flush-right lines keep a common centre or right edge instead of a left one.
        const float tolerance = size * 0.5f;
        // A centred pair stands clear of the region's left edge or about its middle, and
        // flush-right lines end at its right edge; list items of two levels that happen to
        // share a middle or an end are neither.
        const float left = original.rightToLeft ? -regionRight : regionLeft;
        const bool inset = std::min(previous.box.x0, line.box.x0) > left + size;
        const bool middle = std::fabs(line.box.centreX() - (left + right) / 2) <= size;
        const bool sameCentre =
            std::fabs(previous.box.centreX() - line.box.centreX()) <= tolerance &&
            std::fabs(previous.box.x0 - line.box.x0) > tolerance && (inset || middle);
        const bool sameRight = std::fabs(previous.box.x1 - line.box.x1) <= tolerance &&
                               std::fabs(previous.box.x0 - line.box.x0) > tolerance &&
                               std::max(previous.box.x1, line.box.x1) > right - size;
        const bool shaped = (sameCentre || sameRight) &&
                            (block.lines.size() == 1 || block.alignment != Alignment::Left);
        bool joins = !previous.hasTabs() && !line.hasTabs() &&
                     std::fabs(previous.size - line.size) <= size * 0.15f && step > 0 &&
                     step <= pitch * 1.35f + 0.5f && step <= size * 3 &&
                     (shaped || !shortLine || endsWithHyphen);
        if (joins && startsItem(line))
            joins = false;
        if (joins && !shaped) {
            const float indentBase =
                block.lines.size() >= 2 ? block.lines[1].box.x0 : previous.box.x0;
            if (line.box.x0 > indentBase + size * 0.8f)
                joins = false;
            if (block.lines.size() >= 2 && line.box.x0 < indentBase - size * 0.8f)
                joins = false;
        }
        if (!joins) {
            startBlock(line);
            continue;
        }
        const bool brokenWord = endsWithHyphen && block.text.size() >= 2 &&
                                isLetter(block.text[block.text.size() - 2].c) &&
                                !line.glyphs.empty() && isLowerLetter(line.glyphs.front().c);
        if (brokenWord && !KeepsLineEndHyphen(wordBefore(block.text, block.text.size() - 1),
                                              wordBefore(line.glyphs, wordEnd(line.glyphs)))) {
            block.text.pop_back();
        } else if (brokenWord) {
            // A compound's hyphen stays, and the halves stay together.
        } else if (!block.text.empty() && !isSpace(block.text.back().c)) {
            block.text.push_back(synthetic(block.text.back(), ' ', block.text.back().box.x1,
                                           block.text.back().box.x1));
        }
        block.text.insert(block.text.end(), line.glyphs.begin(), line.glyphs.end());
        block.lines.push_back(line);
        block.box.unite(line.box);
        if (shaped)
            block.alignment = sameCentre ? Alignment::Centre : Alignment::Right;
    }

    for (Block& block : blocks) {
        block.size = weightedSize(block.text);
        if (block.lines.size() >= 2) {
            block.lineGap = (block.lines.back().box.y1 - block.lines.front().box.y1) /
                            static_cast<float>(block.lines.size() - 1);
        }
        if (block.rightToLeft) {
            // Aligned to the start of a right-to-left line is aligned right.
            const Alignment seen = alignmentOf(block, -regionRight, -regionLeft);
            block.alignment = seen == Alignment::Left    ? Alignment::Right
                              : seen == Alignment::Right ? Alignment::Left
                                                         : seen;
            block.box = mirrored(block.box);
            for (Line& line : block.lines)
                line = mirrored(std::move(line));
            for (Glyph& glyph : block.text)
                glyph.box = mirrored(glyph.box);
            for (float& stop : block.tabStops)
                stop = -stop;
            block.leaderStop = -block.leaderStop;
        } else {
            block.alignment = alignmentOf(block, regionLeft, regionRight);
        }
        const int words = countWords(block.text);
        if (bodySize > 0 && block.lines.size() <= 3 && words <= 20 && words > 0) {
            if (block.size >= bodySize * 1.35f)
                block.kind = BlockKind::Heading1;
            else if (block.size >= bodySize * 1.15f)
                block.kind = BlockKind::Heading2;
        }
    }
    return blocks;
}

namespace {

struct Region
{
    std::vector<Fragment> fragments;
    std::vector<int> pictures;
    std::vector<int> tables;
    int column = 0;
};

// Cuts the page into regions read one after the other: runs of side-by-side columns, read
// column by column, separated by whatever crosses a gutter.
std::vector<Region> cutRegions(std::vector<Fragment> fragments,
                               const std::vector<Picture>& pictures,
                               const std::vector<Table>& tables,
                               const std::vector<std::pair<float, float>>& gutters)
{
    std::vector<Region> regions;
    if (gutters.empty()) {
        Region all;
        all.fragments = std::move(fragments);
        for (std::size_t i = 0; i < pictures.size(); ++i)
            all.pictures.push_back(static_cast<int>(i));
        for (std::size_t i = 0; i < tables.size(); ++i)
            all.tables.push_back(static_cast<int>(i));
        regions.push_back(std::move(all));
        return regions;
    }
    struct Item
    {
        Rect box;
        int fragment = -1;
        int picture = -1;
        int table = -1;
    };
    std::vector<Item> items;
    for (std::size_t i = 0; i < fragments.size(); ++i)
        items.push_back(Item{fragments[i].box, static_cast<int>(i), -1, -1});
    for (std::size_t i = 0; i < pictures.size(); ++i)
        items.push_back(Item{pictures[i].box, -1, static_cast<int>(i), -1});
    for (std::size_t i = 0; i < tables.size(); ++i)
        items.push_back(Item{tables[i].box, -1, -1, static_cast<int>(i)});
    std::stable_sort(items.begin(), items.end(),
                     [](const Item& a, const Item& b) { return a.box.y0 < b.box.y0; });

    const std::size_t columns = gutters.size() + 1;
    std::vector<Region> band(columns);
    Region spanning;
    spanning.column = -1;
    const auto flushBand = [&]() {
        for (std::size_t c = 0; c < columns; ++c) {
            if (!band[c].fragments.empty() || !band[c].pictures.empty() ||
                !band[c].tables.empty()) {
                band[c].column = static_cast<int>(c);
                regions.push_back(std::move(band[c]));
            }
            band[c] = Region{};
        }
    };
    const auto flushSpanning = [&]() {
        if (!spanning.fragments.empty() || !spanning.pictures.empty() || !spanning.tables.empty())
            regions.push_back(std::move(spanning));
        spanning = Region{};
        spanning.column = -1;
    };
    for (const Item& item : items) {
        bool crosses = false;
        for (const auto& gutter : gutters) {
            if (item.box.x0 < gutter.first - 1 && item.box.x1 > gutter.second + 1)
                crosses = true;
        }
        Region* target = nullptr;
        if (crosses) {
            flushBand();
            target = &spanning;
        } else {
            flushSpanning();
            std::size_t column = 0;
            while (column < gutters.size() && item.box.centreX() > gutters[column].second)
                ++column;
            target = &band[column];
        }
        if (item.fragment >= 0)
            target->fragments.push_back(
                std::move(fragments[static_cast<std::size_t>(item.fragment)]));
        else if (item.picture >= 0)
            target->pictures.push_back(item.picture);
        else
            target->tables.push_back(item.table);
    }
    flushBand();
    flushSpanning();
    return regions;
}

}  // namespace

std::vector<Line> PageLines(const PageContent& page)
{
    std::vector<Fragment> fragments;
    for (const TextLine& line : page.lines) {
        if (line.vertical || std::fabs(line.dirY) > 0.05f || line.dirX < 0)
            continue;
        for (Fragment& fragment : SplitIntoFragments(line))
            fragments.push_back(std::move(fragment));
    }
    return BuildLines(std::move(fragments), true);
}

PageLayout LayOutPage(const PageContent& page, const LayoutOptions& options,
                      const std::vector<FontFace>* fonts)
{
    PageLayout layout;
    std::vector<Fragment> fragments;
    std::vector<Block> rotated;
    for (const TextLine& line : page.lines) {
        const bool turned = line.vertical || std::fabs(line.dirY) > 0.05f || line.dirX < 0;
        if (turned && options.rotatedAsShapes) {
            Fragment whole = makeFragment(line.glyphs);
            if (whole.glyphs.empty())
                continue;
            Block block;
            block.kind = BlockKind::Rotated;
            block.text = std::move(whole.glyphs);
            block.box = line.box;
            block.size = whole.size;
            block.angle =
                static_cast<float>(-std::atan2(line.dirY, line.dirX) * 180 / std::numbers::pi);
            rotated.push_back(std::move(block));
            continue;
        }
        if (turned) {
            Fragment whole = makeFragment(line.glyphs);
            if (!whole.glyphs.empty()) {
                whole.box = line.box;
                fragments.push_back(std::move(whole));
            }
            continue;
        }
        for (Fragment& fragment : SplitIntoFragments(line))
            fragments.push_back(std::move(fragment));
    }
    for (const Fragment& fragment : fragments)
        layout.contentBox.unite(fragment.box);
    for (const Picture& picture : page.pictures)
        layout.contentBox.unite(picture.box);

    if (options.runningHeads && !options.runningHeads->empty()) {
        const std::vector<Line> all = BuildLines(fragments, true);
        std::vector<Rect> taken;
        for (std::size_t i = 0; i < all.size(); ++i) {
            if (options.runningHeads->isHeader(all, i)) {
                layout.header.push_back(all[i]);
                taken.push_back(all[i].box);
            } else if (options.runningHeads->isFooter(all, i)) {
                layout.footer.push_back(all[i]);
                taken.push_back(all[i].box);
            }
        }
        std::erase_if(fragments, [&taken](const Fragment& fragment) {
            return std::any_of(taken.begin(), taken.end(), [&fragment](const Rect& box) {
                return box.contains(fragment.box.centreX(), fragment.box.centreY());
            });
        });
    }

    layout.bodySize = options.bodySize > 0 ? options.bodySize : DominantSize(page.lines);

    if (options.documentType == 3) {
        std::vector<std::size_t> numbers = FindPleadingNumbers(fragments);
        std::sort(numbers.rbegin(), numbers.rend());
        std::vector<Fragment> removed;
        for (std::size_t i : numbers) {
            removed.push_back(std::move(fragments[i]));
            fragments.erase(fragments.begin() + static_cast<std::ptrdiff_t>(i));
        }
        layout.pleadingNumbers = BuildLines(std::move(removed), false);
    }

    // Ruled tables take their text out of the flow; they stand in it as one block each.
    std::vector<bool> used(page.drawings.size(), false);
    for (Table& table : FindRuledTables(page.drawings)) {
        const std::size_t before = fragments.size();
        FillCells(table, fragments, options.mergeParagraphs);
        // A grid with no text in it is a drawing, not a table.
        if (fragments.size() == before)
            continue;
        for (std::size_t d : table.drawings)
            used[d] = true;
        layout.tables.push_back(std::move(table));
    }

    DecorateRuns(fragments, page.drawings, used);

    std::vector<std::pair<float, float>> gutters;
    if (options.documentType == 2)
        gutters = FindGutters(fragments);
    layout.columns = static_cast<int>(gutters.size()) + 1;

    std::vector<float> steps;
    const std::vector<Table> ruled = layout.tables;
    for (Region& region : cutRegions(std::move(fragments), page.pictures, ruled, gutters)) {
        std::vector<Line> lines = BuildLines(std::move(region.fragments), options.mergeText);
        for (std::size_t i = 1; i < lines.size(); ++i) {
            const float step = lines[i].box.y1 - lines[i - 1].box.y1;
            if (step > 0 && step < lines[i].size * 3)
                steps.push_back(step / std::max(lines[i].size, 1.0f));
        }
        // Lines that line up in columns are an unruled table; the rest are paragraphs.
        std::vector<Block> tables;
        std::vector<TableRun> runs = FindUnruledTables(lines, options.mergeParagraphs);
        // From the last run back, so that erasing a run's lines keeps the earlier indices. (A
        // reversed range view would say it too, but clang 14 can't read libstdc++ 12's.)
        // NOLINTNEXTLINE(modernize-loop-convert)
        for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
            DressTable(run->table, page.drawings, used);
            for (std::size_t d : run->table.drawings)
                used[d] = true;
            Block block;
            block.kind = BlockKind::Table;
            block.table = static_cast<int>(layout.tables.size());
            block.box = run->table.box;
            tables.push_back(std::move(block));
            layout.tables.push_back(std::move(run->table));
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(run->first),
                        lines.begin() + static_cast<std::ptrdiff_t>(run->last) + 1);
        }
        for (int index : region.tables) {
            Block block;
            block.kind = BlockKind::Table;
            block.table = index;
            block.box = layout.tables[static_cast<std::size_t>(index)].box;
            tables.push_back(std::move(block));
        }
        std::vector<Block> blocks =
            BuildParagraphs(lines, options.mergeParagraphs, layout.bodySize);
        // A line across the columns, a title say, is centred or not on the whole text width.
        if (region.column == -1) {
            for (Block& block : blocks) {
                if (block.lines.size() == 1)
                    block.alignment =
                        alignmentOf(block, layout.contentBox.x0, layout.contentBox.x1);
            }
        }
        for (Block& block : blocks) {
            if (block.kind == BlockKind::Paragraph && isBold(block, fonts) &&
                block.size >= layout.bodySize * 0.95f && countWords(block.text) <= 12 &&
                block.lines.size() == 1 && block.text.back().c != '.')
                block.kind = BlockKind::Heading2;
        }
        for (int index : region.pictures) {
            Block picture;
            picture.kind = BlockKind::Picture;
            picture.picture = index;
            picture.box = page.pictures[static_cast<std::size_t>(index)].box;
            tables.push_back(std::move(picture));
        }
        // Tables and pictures go where their middle stands among the paragraphs.
        std::stable_sort(tables.begin(), tables.end(), [](const Block& a, const Block& b) {
            return a.box.centreY() < b.box.centreY();
        });
        for (Block& placed : tables) {
            const auto at = std::find_if(blocks.begin(), blocks.end(), [&placed](const Block& b) {
                return b.box.centreY() > placed.box.centreY();
            });
            blocks.insert(at, std::move(placed));
        }
        for (Block& block : blocks) {
            block.column = region.column;
            layout.blocks.push_back(std::move(block));
        }
    }
    // Rotated text goes where its top stands among the blocks.
    for (Block& block : rotated) {
        const auto at =
            std::find_if(layout.blocks.begin(), layout.blocks.end(), [&block](const Block& b) {
                return b.kind != BlockKind::Rotated && b.box.y0 > block.box.y0 && b.column <= 0;
            });
        layout.blocks.insert(at, std::move(block));
    }
    layout.doubleSpaced = options.documentType == 3 && median(steps, 1.2f) >= 1.7f;
    if (options.paragraphBoxes)
        BoxParagraphs(layout.blocks, page.drawings, used);
    for (std::size_t d = 0; d < page.drawings.size(); ++d) {
        if (!used[d])
            layout.drawings.push_back(d);
    }
    return layout;
}

}  // namespace velmora
