#include "layout/RunningHeads.h"

#include <algorithm>
#include <map>
#include <set>

namespace velmora {

std::string RunningPattern(const std::vector<Glyph>& glyphs)
{
    std::string out;
    bool digits = false;
    bool blank = false;
    for (const Glyph& glyph : glyphs) {
        const char32_t c = glyph.c;
        if (c >= '0' && c <= '9') {
            if (!digits)
                out.push_back('#');
            digits = true;
            blank = false;
            continue;
        }
        digits = false;
        if (c == ' ' || c == '\t' || c == 0xa0) {
            if (!blank && !out.empty())
                out.push_back(' ');
            blank = true;
            continue;
        }
        blank = false;
        std::vector<Glyph> one{glyph};
        if (c >= 'A' && c <= 'Z')
            one.front().c = c - 'A' + 'a';
        out += ToUtf8(one);
    }
    while (!out.empty() && out.back() == ' ')
        out.pop_back();
    return out;
}

RunningHeads RunningHeads::Learn(const std::vector<std::vector<Line>>& pages)
{
    RunningHeads heads;
    if (pages.size() < 2)
        return heads;
    std::map<std::string, std::set<std::size_t>> top;
    std::map<std::string, std::set<std::size_t>> bottom;
    for (std::size_t p = 0; p < pages.size(); ++p) {
        const std::vector<Line>& lines = pages[p];
        for (std::size_t i = 0; i < std::min(RunningDepth, lines.size()); ++i)
            top[RunningPattern(lines[i].glyphs)].insert(p);
        for (std::size_t i = 0; i < std::min(RunningDepth, lines.size()); ++i)
            bottom[RunningPattern(lines[lines.size() - 1 - i].glyphs)].insert(p);
    }
    // Present on at least half the sampled pages, and never fewer than two.
    const std::size_t needed = std::max<std::size_t>(2, (pages.size() + 1) / 2);
    for (const auto& [pattern, seen] : top) {
        if (!pattern.empty() && seen.size() >= needed)
            heads.m_top.push_back(pattern);
    }
    for (const auto& [pattern, seen] : bottom) {
        if (!pattern.empty() && seen.size() >= needed)
            heads.m_bottom.push_back(pattern);
    }
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
