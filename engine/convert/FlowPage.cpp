#include "convert/PageWriting.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

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
    std::string& out = writer.out();

    // The text stays with the PDF's pages where it runs short of them: a page that ends early
    // (a title page, a slide, a chapter's end) ends early here too. A page the text has
    // nearly filled may already have spilled over, so it is not ended.
    bool pageBreak = false;
    if (job.pageBreak && flow.outputPages - 1 < flow.sourcePages && flow.used < height * 0.7f) {
        pageBreak = true;
        flow.newPage();
    }
    const bool freshPage = pageBreak || flow.sourcePages == 0;
    ++flow.sourcePages;

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
        if (shape.box.y0 < blocks[shape.anchor].box.y0)
            drawnAbove[shape.anchor] = std::min(drawnAbove[shape.anchor], shape.box.y0);
    }

    // The PDF's own gap above each block, within reason; a block that starts a column or a
    // page gets a modest one.
    std::vector<float> gaps(blocks.size(), 0);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        const Block* previous = i > 0 ? &blocks[i - 1] : nullptr;
        const float size = std::max(LargestSize(block.text), 1.0f);
        float gap = previous ? size * 0.3f : 0;
        if (previous && previous->column == block.column && block.box.y0 >= previous->box.y1)
            gap = std::min(block.box.y0 - previous->box.y1, size * 8);
        // A page that starts a page of its own keeps the room above its first block.
        if (!previous && freshPage)
            gap = std::clamp(block.box.y0 - section.top, 0.0f, height / 3);
        if (block.kind == BlockKind::Table)
            gap = std::clamp(gap, 1.0f, 24.0f);
        // Drawings in the top margin stand by the running head, not by the text.
        const float above = std::max(drawnAbove[i], previous ? previous->box.y1 : section.top);
        if (above < block.box.y0)
            gap = std::max(gap, block.box.y0 - above);
        gaps[i] = gap;
    }

    // A shape is placed from the top of its paragraph's space above.
    std::vector<std::string> shapes(blocks.size());
    std::string opening = job.anchored;
    for (const Shape& shape : drawn) {
        RtfWriter rtf = writer.fresh();
        const float top = blocks.empty() ? 0 : blocks[shape.anchor].box.y0 - gaps[shape.anchor];
        const ShapeAnchor anchor{true, section.left, top};
        if (shape.drawing)
            rtf.shape(*shape.drawing, anchor);
        else
            rtf.pictureShape(*shape.artwork, true, anchor);
        (blocks.empty() ? opening : shapes[shape.anchor]) += rtf.out();
    }

    bool first = true;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        const float gap = gaps[i];
        out += "\\pard\\plain";
        if (first && pageBreak)
            out += "\\pagebb";
        const std::string lead = first ? opening + shapes[i] : shapes[i];
        first = false;
        if (block.kind == BlockKind::Picture) {
            // Pictures side by side in the PDF stay side by side, in one paragraph.
            std::size_t last = i;
            float row = 0;
            while (last + 1 < blocks.size() && blocks[last + 1].kind == BlockKind::Picture &&
                   blocks[last + 1].box.y0 < block.box.y1 && blocks[last + 1].box.y1 > block.box.y0)
                ++last;
            for (std::size_t k = i; k <= last; ++k)
                row += blocks[k].box.width();
            // Each picture after the first stands after a blank.
            const float room = width - static_cast<float>(last - i) * 4;
            const float fit = row > room ? room / row : 1;
            const float indent = std::clamp(block.box.x0 - section.left, 0.0f, room - row * fit);
            const float centre = (block.box.x0 + blocks[last].box.x1) / 2;
            if (gap > 0.5f)
                out += "\\sb" + std::to_string(Twips(gap));
            if (std::fabs(centre - (section.left + width / 2)) < 24)
                out += "\\qc";
            else if (indent >= 1)
                out += "\\li" + std::to_string(Twips(indent));
            out += " " + lead;
            float tallest = 0;
            for (std::size_t k = i; k <= last; ++k) {
                const Picture& picture =
                    job.page.pictures[static_cast<std::size_t>(blocks[k].picture)];
                if (k > i)
                    out += " " + shapes[k];
                writer.picture(picture, picture.box.width() * fit, picture.box.height() * fit);
                tallest = std::max(tallest, picture.box.height() * fit);
            }
            out += "\\par\n";
            flow.advance(gap + tallest + 2, height);
            i = last;
            continue;
        }
        if (block.kind == BlockKind::Table) {
            // The table under a paragraph as tall as the PDF's gap above it, narrowed to the
            // text's width if it is wider.
            const Table& table = layout.tables[static_cast<std::size_t>(block.table)];
            const float scale = std::min(1.0f, width / std::max(table.box.width(), 1.0f));
            out += "\\sl-" + std::to_string(Twips(gap)) + "\\slmult0\\fs2 " + lead + "\\par\n";
            const float fonts = TableFontFit(table, scale);
            const float left =
                std::clamp(table.box.x0 - section.left, 0.0f, width - table.box.width() * scale);
            WriteTable(writer, table, &job.page.links, left, scale, fonts);
            flow.advance(gap + TableHeight(table, scale, fonts), height);
            continue;
        }
        if (block.kind == BlockKind::Rotated) {
            out += "\\sl-20\\slmult0\\fs2 " + lead;
            WriteRotatedShape(writer, block, false);
            out += "\\par\n";
            flow.advance(1, height);
            continue;
        }
        const float size = std::max(LargestSize(block.text), 1.0f);
        switch (block.kind) {
        case BlockKind::Heading1:
            out += "\\s1\\outlinelevel0\\keepn";
            break;
        case BlockKind::Heading2:
            out += "\\s2\\outlinelevel1\\keepn";
            break;
        default:
            WriteAlignment(out, block);
            break;
        }
        const float boxRoom = WriteParagraphBox(out, block, writer);
        if (gap > 0.5f)
            out += "\\sb" + std::to_string(Twips(gap));
        // On a page of one column a block keeps its indent, and one of several lines its
        // width; in columns the text runs across the page.
        float available = width;
        const bool placed =
            block.alignment == Alignment::Left || block.alignment == Alignment::Justify;
        if (layout.columns == 1 && placed && block.kind == BlockKind::Paragraph) {
            const float indent = block.box.x0 - section.left;
            if (indent > size * 0.5f && indent < width * 0.8f) {
                out += "\\li" + std::to_string(Twips(indent));
                available -= indent;
            }
            const float right = section.width - section.right - block.box.x1 - size * 0.5f;
            if (block.lines.size() > 1 && right > size) {
                out += "\\ri" + std::to_string(Twips(right));
                available -= right;
            }
        }
        float lineHeight = size * SingleSpacing;
        if (layout.doubleSpaced) {
            out += "\\sl480\\slmult1";
            lineHeight *= 2;
        } else if (job.options.adjustSpacing && block.lineGap > 0) {
            out += "\\sl" + std::to_string(Twips(block.lineGap)) + "\\slmult0";
            lineHeight = std::max(lineHeight, block.lineGap);
        }
        WriteTabStops(out, block, section.left);
        out.push_back(' ');
        out += lead;
        writer.text(block.text, &job.page.links);
        out += "\\par\n";
        const int lines = !block.hasTabs() ? WrappedLines(block.text, available, 1)
                                           : static_cast<int>(block.lines.size());
        flow.advance(gap + lineHeight * static_cast<float>(lines) + 2 * boxRoom, height);
    }
    if (blocks.empty() && (pageBreak || !opening.empty())) {
        out += pageBreak ? "\\pard\\plain\\pagebb\\sl-20\\slmult0\\fs2 "
                         : "\\pard\\plain\\sl-20\\slmult0\\fs2 ";
        out += opening + "\\par\n";
    }
}

}  // namespace velmora
