#pragma once

// Running heads and page numbers: lines that come back at the top or the bottom of most
// pages, learnt from a sample of the document's pages and then taken out of each page.

#include "layout/PageLayout.h"

#include <string>
#include <vector>

namespace velmora {

// A line's text with every number that stands alone as '#', blanks folded and its type size
// after an '@', so that "Page 3 of 10" and "Page 4 of 10" read alike while "A4" and "A5", or
// a large title and the small running head with its words, do not.
std::string RunningPattern(const std::vector<Glyph>& glyphs);

class RunningHeads final
{
public:
    // `pages` holds each sample page's lines, top to bottom.
    static RunningHeads Learn(const std::vector<std::vector<Line>>& pages);

    bool isHeader(const std::vector<Line>& lines, std::size_t index) const;
    bool isFooter(const std::vector<Line>& lines, std::size_t index) const;
    bool empty() const { return m_top.empty() && m_bottom.empty(); }

private:
    std::vector<std::string> m_top;
    std::vector<std::string> m_bottom;
};

// How many lines from each end of a page may be running lines.
inline constexpr std::size_t RunningDepth = 2;

}  // namespace velmora
