#include "convert/PageWriting.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// The block a drawing belongs with: the one whose lines it stands among or under.
std::size_t anchorOf(const std::vector<Block>& blocks, const Rect& box)
{
    std::size_t best = 0;
    float bestDistance = 1e9f;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Rect& b = blocks[i].box;
        const float distance = box.y0 >= b.y0 && box.y0 <= b.y1 ? 0 : std::fabs(box.y0 - b.y0);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = i;
        }
    }
    return best;
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
    ++flow.sourcePages;

    // Drawings and the page's other shapes go with the paragraph they stand by, placed from
    // its top, so they follow it wherever the flow takes it.
    std::vector<std::string> shapes(blocks.size());
    std::string opening = job.anchored;
    const auto attach = [&](const Rect& box, const std::string& rtf) {
        if (blocks.empty()) {
            opening += rtf;
            return;
        }
        shapes[anchorOf(blocks, box)] += rtf;
    };
    for (std::size_t index : layout.drawings) {
        const Drawing& drawing = job.page.drawings[index];
        RtfWriter shape = writer.fresh();
        const std::size_t at = blocks.empty() ? 0 : anchorOf(blocks, drawing.box);
        const Rect origin = blocks.empty() ? Rect{} : blocks[at].box;
        shape.shape(drawing, ShapeAnchor{true, section.left, origin.y0});
        attach(drawing.box, shape.out());
    }
    for (const Picture& artwork : job.page.artwork) {
        RtfWriter shape = writer.fresh();
        const std::size_t at = blocks.empty() ? 0 : anchorOf(blocks, artwork.box);
        const Rect origin = blocks.empty() ? Rect{} : blocks[at].box;
        shape.pictureShape(artwork, true, ShapeAnchor{true, section.left, origin.y0});
        attach(artwork.box, shape.out());
    }

    const Block* previous = nullptr;
    bool first = true;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const Block& block = blocks[i];
        out += "\\pard\\plain";
        if (first && pageBreak)
            out += "\\pagebb";
        std::string lead = first ? opening + shapes[i] : shapes[i];
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
            out += "\\qc " + lead;
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
            flow.advance(tallest + 2, height);
            previous = &blocks[last];
            i = last;
            continue;
        }
        if (block.kind == BlockKind::Table) {
            // The table under a paragraph as tall as the PDF's gap above it, narrowed to the
            // text's width if it is wider.
            const Table& table = layout.tables[static_cast<std::size_t>(block.table)];
            float gap = 1;
            if (previous && previous->column == block.column && block.box.y0 > previous->box.y1)
                gap = std::clamp(block.box.y0 - previous->box.y1, 1.0f, 24.0f);
            previous = &block;
            const float scale = std::min(1.0f, width / std::max(table.box.width(), 1.0f));
            out += "\\sl-" + std::to_string(Twips(gap)) + "\\slmult0\\fs2 " + lead + "\\par\n";
            const float fonts = TableFontFit(table, scale);
            WriteTable(writer, table, &job.page.links, 0, scale, fonts);
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
        // The PDF's own gap above the paragraph, within reason; a paragraph that starts a
        // column or a page gets a modest one.
        const float size = std::max(LargestSize(block.text), 1.0f);
        float gap = size * 0.3f;
        if (previous && previous->column == block.column && block.box.y0 >= previous->box.y1)
            gap = std::min(block.box.y0 - previous->box.y1, size * 2.5f);
        if (previous == nullptr)
            gap = 0;
        previous = &block;
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
        if (gap > 0.5f)
            out += "\\sb" + std::to_string(Twips(gap));
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
        const int lines = !block.hasTabs() ? WrappedLines(block.text, width, 1)
                                           : static_cast<int>(block.lines.size());
        flow.advance(gap + lineHeight * static_cast<float>(lines), height);
    }
    if (blocks.empty() && (pageBreak || !opening.empty())) {
        out += pageBreak ? "\\pard\\plain\\pagebb\\sl-20\\slmult0\\fs2 "
                         : "\\pard\\plain\\sl-20\\slmult0\\fs2 ";
        out += opening + "\\par\n";
    }
}

}  // namespace velmora
