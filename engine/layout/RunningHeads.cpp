#include "layout/RunningHeads.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace velmora {

namespace {

bool isDigit(char32_t c)
{
    return c >= '0' && c <= '9';
}

bool isAlpha(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= 0xc0 && c <= 0x24f);
}

}  // namespace

std::string RunningPattern(const std::vector<Glyph>& glyphs)
{
    std::string out;
    bool blank = false;
    std::vector<float> sizes;
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        const char32_t c = glyphs[i].c;
        if (c == ' ' || c == '\t' || c == 0xa0) {
            if (!blank && !out.empty())
                out.push_back(' ');
            blank = true;
            continue;
        }
        blank = false;
        sizes.push_back(glyphs[i].size);
        // A number standing alone is a page number's place; digits in a word ("A4") are not.
        if (isDigit(c)) {
            std::size_t end = i;
            while (end < glyphs.size() && isDigit(glyphs[end].c))
                ++end;
            const bool alone = (i == 0 || !isAlpha(glyphs[i - 1].c)) &&
                               (end == glyphs.size() || !isAlpha(glyphs[end].c));
            if (alone) {
                out.push_back('#');
                i = end - 1;
                continue;
            }
        }
        out += ToUtf8({glyphs[i]});
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    // A title set large is not the running head it repeats in small type.
    if (!sizes.empty()) {
        std::nth_element(sizes.begin(),
                         sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() / 2),
                         sizes.end());
        out += "@" + std::to_string(std::lround(sizes[sizes.size() / 2]));
    }
    return out;
}

RunningHeads RunningHeads::Learn(const std::vector<std::vector<Line>>& pages)
{
    RunningHeads heads;
    if (pages.size() < 2)
        return heads;
    struct Seen
    {
        std::set<std::size_t> pages;
        std::set<std::string> texts;
    };
    std::map<std::string, Seen> top;
    std::map<std::string, Seen> bottom;
    const auto note = [](std::map<std::string, Seen>& edge, const Line& line, std::size_t page) {
        Seen& seen = edge[RunningPattern(line.glyphs)];
        seen.pages.insert(page);
        seen.texts.insert(ToUtf8(line.glyphs));
    };
    for (std::size_t p = 0; p < pages.size(); ++p) {
        const std::vector<Line>& lines = pages[p];
        for (std::size_t i = 0; i < std::min(RunningDepth, lines.size()); ++i)
            note(top, lines[i], p);
        for (std::size_t i = 0; i < std::min(RunningDepth, lines.size()); ++i)
            note(bottom, lines[lines.size() - 1 - i], p);
    }
    // Present on at least a third of the sampled pages (right-hand and left-hand pages often
    // have their own, and a chapter's first page none), and never fewer than two. A number
    // alone is a page number only if it changes from page to page: a pleading's last line
    // number stands on every page too.
    const std::size_t needed = std::max<std::size_t>(2, (pages.size() + 2) / 3);
    const auto learn = [needed](const std::map<std::string, Seen>& edge,
                                std::vector<std::string>& patterns) {
        for (const auto& [pattern, seen] : edge) {
            const bool number = pattern.rfind("#@", 0) == 0;
            if (!pattern.empty() && seen.pages.size() >= needed &&
                (!number || seen.texts.size() >= 2))
                patterns.push_back(pattern);
        }
    };
    learn(top, heads.m_top);
    learn(bottom, heads.m_bottom);
    return heads;
}

bool RunningHeads::isHeader(const std::vector<Line>& lines, std::size_t index) const
{
    if (index >= RunningDepth || index >= lines.size())
        return false;
    const std::string pattern = RunningPattern(lines[index].glyphs);
    return std::find(m_top.begin(), m_top.end(), pattern) != m_top.end();
}

bool RunningHeads::isFooter(const std::vector<Line>& lines, std::size_t index) const
{
    if (index >= lines.size() || lines.size() - 1 - index >= RunningDepth)
        return false;
    const std::string pattern = RunningPattern(lines[index].glyphs);
    return std::find(m_bottom.begin(), m_bottom.end(), pattern) != m_bottom.end();
}

}  // namespace velmora
