#include "convert/PageWriting.h"

namespace velmora {

void WriteBoxedPage(RtfWriter& writer, PageJob& job)
{
    const PageLayout& layout = job.layout;
    const EngineOptions& options = job.options;
    std::string& out = writer.out();
    if (job.pageBreak)
        out += "\\pard\\plain\\page\\par\n";
    const auto frame = [&out](const Rect& box, float width, float height, bool exact) {
        out += "\\pard\\plain\\phpg\\pvpg\\posx" + std::to_string(Twips(std::max(0.0f, box.x0))) +
               "\\posy" + std::to_string(Twips(std::max(0.0f, box.y0))) + "\\absw" +
               std::to_string(Twips(width)) + "\\absh" +
               std::to_string(exact ? -Twips(height) : Twips(height)) +
               "\\dxfrtext0\\dfrmtxtx0\\dfrmtxty0";
    };
    for (const Line& number : layout.pleadingNumbers) {
        frame(number.box, number.box.width() + 4, number.box.height(), false);
        out += "\\qr ";
        writer.text(number.glyphs, nullptr);
        out += "\\par\n";
    }
    std::string closing = job.anchored;
    for (const Block& block : layout.blocks) {
        if (block.kind == BlockKind::Table) {
            // The table keeps its place as one text box; like other shapes, it closes the page.
            RtfWriter shape = writer.fresh();
            WriteTableShape(shape, layout.tables[static_cast<std::size_t>(block.table)],
                            &job.page.links);
            closing += shape.out();
            continue;
        }
        if (block.kind == BlockKind::Rotated) {
            out += "\\pard\\plain ";
            WriteRotatedShape(writer, block, true);
            out += "\\par\n";
            continue;
        }
        if (block.kind == BlockKind::Picture) {
            const Picture& picture = job.page.pictures[static_cast<std::size_t>(block.picture)];
            frame(block.box, block.box.width(), block.box.height(), true);
            out.push_back(' ');
            writer.picture(picture, picture.box.width(), picture.box.height());
            out += "\\par\n";
            continue;
        }
        // Word's fonts are seldom the PDF's: the frame gets room for a substitute's wider
        // letters, and its height is a minimum, so a line that wraps all the same is shown
        // rather than cut off.
        float width = block.box.width();
        const float height = block.box.height();
        float scale = 1;
        if (options.shrinkFonts) {
            width = width * 1.06f + 3;
            scale = ShrinkToFit(block, width, height + 2);
        } else {
            width = width * 1.08f + 4;
        }
        frame(block.box, width, height, false);
        WriteAlignment(out, block);
        if (layout.doubleSpaced)
            out += "\\sl480\\slmult1";
        else if (options.adjustSpacing && block.lineGap > 0)
            out += "\\sl" + std::to_string(Twips(block.lineGap)) + "\\slmult0";
        WriteTabStops(out, block, block.box.x0);
        out.push_back(' ');
        writer.text(block.text, &job.page.links, scale);
        out += "\\par\n";
    }
    // A word processor lets frames that follow a shape's anchor lose their text, so the
    // shapes' paragraph closes the page.
    if (!closing.empty())
        out += "\\pard\\plain\\fs2 " + closing + "\\par\n";
}

}  // namespace velmora
