#include "convert/PageWriting.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// How much of a page the text may fill by its estimate and still surely end on that page:
// a word processor's fonts wrap a line more or less here and there.
constexpr float FullPage = 0.98f;

// Where a word processor sets the baseline in a line of exact height: four fifths down.
constexpr float BaselineShare = 0.8f;

// The block a drawing goes with: the first one beside it, else the first one below it, so a
// drawing between paragraphs stands in the room kept above the paragraph that follows it.
std::size_t anchorOf(const std::vector<Block>& blocks, const Rect& box)
{
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (blocks[i].box.y0 < box.y1 && blocks[i].box.y1 > box.y0)
            return i;
    }
    std::size_t below = blocks.size();
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        if (blocks[i].box.y0 >= box.y0 &&
            (below == blocks.size() || blocks[i].box.y0 < blocks[below].box.y0))
            below = i;
    }
    return below < blocks.size() ? below : blocks.size() - 1;
}

// How a block is set in the flow, and where the word processor's lines of it would stand on
// the PDF's page: `top` and `bottom` in page points, `height` as the word processor sets it.
struct Measure
{
    float top = 0;
    float bottom = 0;
    float height = 0;
    float size = 0;
    float lineHeight = 0;
    float boxRoom = 0;
    float indent = 0;
    float rightIndent = 0;
    float scale = 1;        // pictures of a row narrowed to the text's width
    bool tabbed = false;    // a row of pictures placed at tab stops
    std::size_t last = 0;   // the last block of a row of pictures side by side
    float firstIndent = 0;  // of the first line from the others
    Alignment alignment = Alignment::Left;
    std::vector<Glyph> spaced;  // the text with fitted letter spacing, when it needs any
};

// The lines a line of parts at tab stops takes: one more when its end runs past `right`.
int tabbedLines(const Block& block, float left, float right, const TextWidths& widths)
{
    float x = left;
    std::size_t stop = 0;
    for (std::size_t i = 0; i < block.text.size(); ++i) {
        const Glyph& glyph = block.text[i];
        if (glyph.c != '\t') {
            x += widths.advance(glyph, 1);
            continue;
        }
        if (stop < block.tabStops.size()) {
            x = std::max(x, block.tabStops[stop++]);
            continue;
        }
        // The flush-right stop of a leader: what follows ends at it.
        float rest = 0;
        for (std::size_t k = i + 1; k < block.text.size(); ++k)
            rest += widths.advance(block.text[k], 1);
        x = std::max(x + rest, block.leaderStop);
        break;
    }
    return static_cast<int>(std::max<std::size_t>(block.lines.size(), 1)) + (x > right ? 1 : 0);
}

// The letter spacing, in points, that sets the block's letters as wide as the PDF does in the
// faces the word processor uses, so its lines break about where the PDF's do: a document set in
// a wider face than its substitute (TeX's Computer Modern for Times New Roman) otherwise packs
// more words into each line. Kept within a tenth of the size either way; none for text that is
// letter-spaced already or matches within a hundredth of its size.
float fittedSpacing(const Block& block, float size, const TextWidths& widths)
{
    float source = 0;
    float output = 0;
    int letters = 0;
    int blanks = 0;
    for (const Glyph& glyph : block.text) {
        if (glyph.spacing != 0)
            return 0;
        if (glyph.c == ' ' || glyph.c == 0xa0) {
            ++blanks;
            continue;
        }
        if (glyph.box.width() <= 0 || glyph.c == '\t')
            continue;
        source += glyph.box.width();
        output += widths.advance(glyph, 1);
        ++letters;
    }
    if (letters < 8)
        return 0;
    // The blanks take their share too, which makes up for a substitute's narrower blank; the
    // lines come out a little narrower than the PDF's, so they wrap later rather than earlier.
    const float spacing = (source * 0.985f - output) / static_cast<float>(letters + blanks);
    if (std::fabs(spacing) < size * 0.01f)
        return 0;
    return std::clamp(spacing, -size * 0.1f, size * 0.1f);
}

}  // namespace

void FlowPosition::newPage()
{
    ++outputPages;
    used = 0;
}

void FlowPosition::advance(float height, float pageHeight)
{
    used += height;
    while (pageHeight > 0 && used > pageHeight) {
        ++outputPages;
        used -= pageHeight;
    }
}

void WriteFlowPage(RtfWriter& writer, PageJob& job, FlowPosition& flow)
{
    const PageLayout& layout = job.layout;
    const Section& section = job.section;
    const std::vector<Block>& blocks = layout.blocks;
    const float width = section.textWidth();
    const float height = section.textBottom() - section.top;
    const bool exactSpacing = job.options.adjustSpacing && !layout.doubleSpaced;
    std::string& out = writer.out();

    // Each PDF page starts a page of its own where the text before it left room, so the
    // pages keep the PDF's breaks while the text fits them; a page the text has (nearly)
    // filled may have spilled over, so it is not ended with a break.
    bool pageBreak = false;
    if (job.pageBreak && flow.outputPages - 1 < flow.sourcePages &&
        flow.used <= height * FullPage + 0.5f) {
        pageBreak = true;
        flow.newPage();
    }
    const bool freshPage = pageBreak || flow.used <= 0;
    ++flow.sourcePages;

    const TextWidths widths(writer.faces(), writer.adjustsFontNames());

    // A table without rules may take the room to the margin for its last column, whose text
    // the PDF set flush with the column's end.
    std::vector<Table> tables = layout.tables;
    for (Table& table : tables) {
        const float margin = section.width - section.right;
        if (!table.ruled && table.columns.back() < margin) {
            table.columns.back() = margin;
            table.box.x1 = margin;
        }
    }

    // Where each block's lines stand in the PDF's terms, and how tall the word processor
    // sets them.
    std::vector<Measure> measures(blocks.size());
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        Measure& m = measures[i];
        m.last = i;
        m.top = block.box.y0;
        m.bottom = block.box.y1;
        if (block.kind == BlockKind::Picture) {
            // Pictures side by side in the PDF stay side by side, in one paragraph.
            std::size_t last = i;
            while (last + 1 < blocks.size() && blocks[last + 1].kind == BlockKind::Picture &&
                   blocks[last + 1].box.y0 < block.box.y1 && blocks[last + 1].box.y1 > block.box.y0)
                ++last;
            float row = 0;
            float left = block.box.x0;
            float right = block.box.x1;
            float tallest = 0;
            for (std::size_t k = i; k <= last; ++k) {
                row += blocks[k].box.width();
                left = std::min(left, blocks[k].box.x0);
                right = std::max(right, blocks[k].box.x1);
                m.top = std::min(m.top, blocks[k].box.y0);
                m.bottom = std::max(m.bottom, blocks[k].box.y1);
            }
            // Each picture after the first stands after a blank, or at its own tab stop
            // where the row fits the text's width as the PDF has it.
            const float room = width - static_cast<float>(last - i) * 4;
            m.scale = row > room ? room / row : 1;
            m.tabbed =
                last > i && left >= section.left - 1 && right <= section.width - section.right + 1;
            for (std::size_t k = i; k <= last; ++k)
                tallest = std::max(tallest, blocks[k].box.height() * m.scale);
            m.indent = std::clamp(left - section.left, 0.0f, std::max(0.0f, room - row * m.scale));
            m.height = tallest + 1;
            m.last = last;
            i = last;
            continue;
        }
        if (block.kind == BlockKind::Table) {
            const Table& table = tables[static_cast<std::size_t>(block.table)];
            m.scale = std::min(1.0f, width / std::max(table.box.width(), 1.0f));
            m.top = TableTop(table);
            m.height = TableHeight(table, m.scale, TableFontFit(table, m.scale));
            m.bottom = m.top + m.height;
            continue;
        }
        if (block.kind == BlockKind::Rotated) {
            m.height = 1;
            m.bottom = m.top + 1;
            continue;
        }
        m.size = std::max(LargestSize(block.text), 1.0f);
        float available = width;
        // On a page of one column a block keeps its indents, and one of several lines its
        // width, so its lines break about where the PDF's do; in columns the text runs across
        // the page.
        // (Right-to-left paragraphs count their indents from the other side; they keep none.)
        m.alignment = block.alignment;
        if (layout.columns == 1 && !block.rightToLeft) {
            const float textRight = section.width - section.right;
            const float tolerance = m.size * 0.5f;
            // A line alone about the middle of the text is centred there, unless a block
            // beside it starts where it does (an item of a list that happens to be centred).
            const auto sharesStart = [&](std::size_t k) {
                return k < blocks.size() && blocks[k].kind == BlockKind::Paragraph &&
                       std::fabs(blocks[k].box.x0 - block.box.x0) <= tolerance;
            };
            if (block.lines.size() == 1 && !block.hasTabs() && m.alignment == Alignment::Left &&
                block.box.x0 > section.left + m.size &&
                std::fabs(block.box.centreX() - (section.left + textRight) / 2) <= tolerance &&
                !sharesStart(i - 1) && !sharesStart(i + 1))
                m.alignment = Alignment::Centre;
            if (m.alignment == Alignment::Left || m.alignment == Alignment::Justify) {
                float start = block.box.x0;
                if (block.lines.size() > 1) {
                    start = block.lines[1].box.x0;
                    for (std::size_t k = 2; k < block.lines.size(); ++k)
                        start = std::min(start, block.lines[k].box.x0);
                    const float first = block.lines.front().box.x0 - start;
                    if (std::fabs(first) > tolerance)
                        m.firstIndent = first;
                }
                const float indent = start - section.left;
                if (indent > tolerance && indent < width * 0.8f)
                    m.indent = indent;
                const float right = textRight - block.box.x1 - tolerance;
                if (block.lines.size() > 1 && right > m.size)
                    m.rightIndent = right;
            } else if (!block.hasTabs()) {
                // Lines wrap a little later than in the PDF rather than earlier.
                const float slack = block.box.width() * 0.015f + 1;
                m.indent = std::max(0.0f, block.box.x0 - section.left - slack);
                m.rightIndent = std::max(0.0f, textRight - block.box.x1 - slack);
                if (m.alignment == Alignment::Right)
                    m.rightIndent = std::max(0.0f, textRight - block.box.x1);
            }
            available -= m.indent + m.rightIndent;
        }
        m.lineHeight = m.size * SingleSpacing;
        if (layout.doubleSpaced)
            m.lineHeight *= 2;
        else if (exactSpacing && block.lineGap > 0)
            m.lineHeight = std::max(m.size, block.lineGap);
        if (block.border.width > 0 || block.shaded)
            m.boxRoom = block.padding + std::max(block.border.width, 0.5f);
        if (!block.hasTabs() && layout.columns == 1) {
            const float spacing = fittedSpacing(block, m.size, widths);
            if (spacing != 0) {
                m.spaced = block.text;
                for (Glyph& glyph : m.spaced)
                    glyph.spacing = spacing;
            }
        }
        const std::vector<Glyph>& text = m.spaced.empty() ? block.text : m.spaced;
        const int lines = !block.hasTabs()
                              ? WrappedLines(text, available, 1, &widths, m.firstIndent)
                              : tabbedLines(block, section.left + m.indent,
                                            section.width - section.right - m.rightIndent, widths);
        m.height = m.lineHeight * static_cast<float>(lines) + 2 * m.boxRoom;
        if (!block.lines.empty()) {
            m.top = block.lines.front().baseline - m.lineHeight * BaselineShare - m.boxRoom;
            m.bottom = block.lines.back().baseline + m.lineHeight * (1 - BaselineShare) + m.boxRoom;
        }
    }

    // Drawings and the page's other shapes go with the paragraph they stand by, so they follow
    // it wherever the flow takes it; those standing above it keep their room in its gap.
    struct Shape
    {
        Rect box;
        const Drawing* drawing = nullptr;
        const Picture* artwork = nullptr;
        std::size_t anchor = 0;
    };
    std::vector<Shape> drawn;
    for (std::size_t index : layout.drawings)
        drawn.push_back(Shape{job.page.drawings[index].box, &job.page.drawings[index], nullptr});
    for (const Picture& artwork : job.page.artwork)
        drawn.push_back(Shape{artwork.box, nullptr, &artwork});
    std::vector<float> drawnAbove(blocks.size(), 1e9f);
    for (Shape& shape : drawn) {
        if (blocks.empty())
            break;
        shape.anchor = anchorOf(blocks, shape.box);
        // A drawing beside a row of pictures goes with the row's first.
        for (std::size_t k = 0; k < shape.anchor; ++k) {
            if (blocks[k].kind == BlockKind::Picture && measures[k].last >= shape.anchor) {
                shape.anchor = k;
                break;
            }
        }
        if (shape.box.y0 < blocks[shape.anchor].box.y0)
            drawnAbove[shape.anchor] = std::min(drawnAbove[shape.anchor], shape.box.y0);
    }

    // The PDF's own distance from the block before, from baseline to baseline; a block that
    // starts a column gets a modest gap, and the first one of a page that starts a page of
    // its own the room above it.
    std::vector<float> gaps(blocks.size(), 0);
    const Measure* previous = nullptr;
    const Block* previousBlock = nullptr;
    float gapsTotal = 0;
    float heightsTotal = 0;
    for (std::size_t i = 0; i < blocks.size(); i = measures[i].last + 1) {
        const Block& block = blocks[i];
        const Measure& m = measures[i];
        const float size = m.size > 0 ? m.size : std::max(LargestSize(block.text), 10.0f);
        float gap = previous ? size * 0.3f : 0;
        float above = section.top;
        if (previous && previousBlock->column == block.column &&
            block.box.y0 >= previousBlock->box.y1 - size * 0.5f) {
            // On a page of one column, a block the word processor sets shorter than the PDF
            // (a narrower font) leaves the rest of its room below it, so what follows keeps
            // its place; one set taller takes up to half the gap after it. Columns run across
            // the page and keep no such room.
            const float room = m.top - previous->bottom;
            const float shortfall =
                layout.columns == 1 ? (previous->bottom - previous->top) - previous->height : 0;
            gap = std::max(0.0f, shortfall >= 0 ? room + shortfall
                                                : std::max(room + shortfall, room / 2));
            above = previous->bottom;
        } else if (!previous && freshPage) {
            gap = std::max(0.0f, m.top - section.top);
        } else if (previous) {
            above = m.top;
        }
        if (block.kind == BlockKind::Table)
            gap = std::max(gap, 1.0f);
        // Drawings in the top margin stand by the running head, not by the text.
        const float drawing = std::max(drawnAbove[i], section.top);
        if (drawing < m.top && drawing >= above)
            gap = std::max(gap, m.top - drawing);
        if (!freshPage)
            gap = std::min(gap, size * 8);
        gaps[i] = gap;
        gapsTotal += gap;
        heightsTotal += m.height;
        previous = &m;
        previousBlock = &block;
    }
    // A page of its own keeps its text on its page: the gaps give way first, once the text
    // runs deeper than the PDF's own, or than nearly all of the page.
    float deepest = section.top;
    for (const Measure& m : measures)
        deepest = std::max(deepest, m.bottom);
    const float room = std::max(height * FullPage, std::min(height, deepest - section.top));
    if (freshPage && gapsTotal > 0 && gapsTotal + heightsTotal > room) {
        const float factor = std::clamp((room - heightsTotal) / gapsTotal, 0.0f, 1.0f);
        for (float& gap : gaps)
            gap *= factor;
    }

    // A shape is placed from the top of its paragraph's space above.
    std::vector<std::string> shapes(blocks.size());
    std::string opening = job.anchored;
    for (const Shape& shape : drawn) {
        RtfWriter rtf = writer.fresh();
        const float top = blocks.empty() ? 0 : measures[shape.anchor].top - gaps[shape.anchor];
        const ShapeAnchor anchor{true, section.left, top};
        if (shape.drawing)
            rtf.shape(*shape.drawing, anchor);
        else
            rtf.pictureShape(*shape.artwork, true, anchor);
        (blocks.empty() ? opening : shapes[shape.anchor]) += rtf.out();
    }

    bool first = true;
    for (std::size_t i = 0; i < blocks.size(); i = measures[i].last + 1) {
        const Block& block = blocks[i];
        const Measure& m = measures[i];
        const float gap = gaps[i];
        out += "\\pard\\plain";
        if (first && pageBreak)
            out += "\\pagebb";
        const std::string lead = first ? opening + shapes[i] : shapes[i];
        first = false;
        flow.advance(gap + m.height, height);
        if (block.kind == BlockKind::Picture) {
            std::vector<std::size_t> row;
            for (std::size_t k = i; k <= m.last; ++k)
                row.push_back(k);
            std::stable_sort(row.begin(), row.end(), [&blocks](std::size_t a, std::size_t b) {
                return blocks[a].box.x0 < blocks[b].box.x0;
            });
            const float centre = (blocks[row.front()].box.x0 + blocks[row.back()].box.x1) / 2;
            if (Twips(gap) > 0)
                out += "\\sb" + std::to_string(Twips(gap));
            if (!m.tabbed && std::fabs(centre - (section.left + width / 2)) < 24)
                out += "\\qc";
            else if (m.indent >= 1)
                out += "\\li" + std::to_string(Twips(m.indent));
            if (m.tabbed) {
                for (std::size_t k = 1; k < row.size(); ++k)
                    out += "\\tx" + std::to_string(Twips(blocks[row[k]].box.x0 - section.left));
            }
            // The paragraph's own font adds no room below the pictures.
            out += "\\fs2 " + lead;
            for (std::size_t k = 0; k < row.size(); ++k) {
                const Picture& picture =
                    job.page.pictures[static_cast<std::size_t>(blocks[row[k]].picture)];
                if (k > 0)
                    out += (m.tabbed ? "\\tab " : " ") + shapes[row[k]];
                writer.picture(picture, picture.box.width() * m.scale,
                               picture.box.height() * m.scale);
            }
            out += "\\par\n";
            continue;
        }
        if (block.kind == BlockKind::Table) {
            // The table under a paragraph as tall as the gap above it, narrowed to the
            // text's width if it is wider.
            const Table& table = tables[static_cast<std::size_t>(block.table)];
            out += "\\sl-" + std::to_string(Twips(gap)) + "\\slmult0\\fs2 " + lead + "\\par\n";
            const float left =
                std::clamp(table.box.x0 - section.left, 0.0f, width - table.box.width() * m.scale);
            WriteTable(writer, table, &job.page.links, left, m.scale, TableFontFit(table, m.scale));
            continue;
        }
        if (block.kind == BlockKind::Rotated) {
            out += "\\sl-20\\slmult0\\fs2 " + lead;
            WriteRotatedShape(writer, block, false);
            out += "\\par\n";
            continue;
        }
        switch (block.kind) {
        case BlockKind::Heading1:
            out += "\\s1\\outlinelevel0\\keepn";
            break;
        case BlockKind::Heading2:
            out += "\\s2\\outlinelevel1\\keepn";
            break;
        default:
            break;
        }
        WriteAlignment(out, m.alignment, block.rightToLeft);
        WriteParagraphBox(out, block, writer);
        if (Twips(gap) > 0)
            out += "\\sb" + std::to_string(Twips(gap));
        if (m.firstIndent != 0)
            out += "\\fi" + std::to_string(Twips(m.firstIndent));
        if (m.indent > 0)
            out += "\\li" + std::to_string(Twips(m.indent));
        if (m.rightIndent > 0)
            out += "\\ri" + std::to_string(Twips(m.rightIndent));
        if (layout.doubleSpaced)
            out += "\\sl480\\slmult1";
        else if (exactSpacing)
            out += "\\sl-" + std::to_string(Twips(m.lineHeight)) + "\\slmult0";
        WriteTabStops(out, block, section.left);
        out.push_back(' ');
        out += lead;
        writer.text(m.spaced.empty() ? block.text : m.spaced, &job.page.links);
        out += "\\par\n";
    }
    if (blocks.empty() && (pageBreak || !opening.empty())) {
        out += pageBreak ? "\\pard\\plain\\pagebb\\sl-20\\slmult0\\fs2 "
                         : "\\pard\\plain\\sl-20\\slmult0\\fs2 ";
        out += opening + "\\par\n";
    }
}

}  // namespace velmora
