#include "convert/PageWriting.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// How a block of the flow is set: its fixed horizontal frame and the vertical model that
// fitting adjusts.
struct Placement
{
    const Block* block = nullptr;
    const Table* table = nullptr;  // set for a table's block
    int band = -1;                 // index into the bands; -1 for the single-column flow
    bool newColumn = false;        // starts the next column of its band
    float origin = 0;              // the left edge of its column, page x
    float rightEdge = 0;           // the right edge of its column, page x
    float indent = 0;
    float rightIndent = 0;
    float size = 0;            // largest size of its text
    float pitch = 0;           // line pitch it asks for
    float targetBaseline = 0;  // where its first baseline stands in the PDF
    float shrink = 1;          // font scale that lets its lines fit their width
    float boxRoom = 0;         // room a drawn box around it adds above and below its text
    // Set by the fitting.
    float gap = 0;
    float lineHeight = 0;
    float scale = 1;
    int lines = 1;
};

struct Band
{
    int columns = 2;
    float gutter = 18;
};

// The vertical model of a page: where each paragraph lands in the word processor, with the
// gaps, line pitches and font sizes scaled by the factors given. Returns the bottom of the
// lowest text.
float layOut(std::vector<Placement>& placements, float top, float gapFactor, float pitchFactor,
             float fontFactor, bool exactSpacing)
{
    float cursor = top;
    float bandTop = top;
    float bandBottom = top;
    int band = -1;
    for (Placement& p : placements) {
        if (p.band != band) {
            if (band >= 0)
                cursor = bandBottom;
            band = p.band;
            bandTop = cursor;
            bandBottom = cursor;
        }
        if (p.band >= 0 && p.newColumn)
            cursor = bandTop;
        if (p.table) {
            // A table stands under a paragraph as tall as the gap above it.
            p.scale = p.shrink * fontFactor;
            p.gap = std::max(0.0f, TableTop(*p.table) - cursor) * gapFactor;
            p.lineHeight = std::max(p.gap, 1.0f);
            cursor += p.lineHeight + TableHeight(*p.table, 1, p.scale);
            bandBottom = std::max(bandBottom, cursor);
            continue;
        }
        p.scale = p.shrink * fontFactor;
        const float size = p.size * p.scale;
        const float natural = size * SingleSpacing;
        if (!exactSpacing)
            p.lineHeight = natural;
        else if (p.block->lines.size() > 1)
            p.lineHeight = std::max(size, p.pitch * fontFactor * pitchFactor);
        else
            p.lineHeight = std::max(size, natural * pitchFactor);
        const float available = p.rightEdge - p.origin - p.indent - p.rightIndent;
        p.lines = !p.block->hasTabs() ? WrappedLines(p.block->text, available, p.scale)
                                      : static_cast<int>(p.block->lines.size());
        // The paragraph's first baseline stands a line's height less its descent below its top.
        const float baselineDrop = p.lineHeight - size * DescentShare + p.boxRoom;
        const float wanted = p.targetBaseline - baselineDrop - cursor;
        p.gap = std::max(0.0f, wanted) * gapFactor;
        cursor += p.gap + p.lineHeight * static_cast<float>(p.lines) + 2 * p.boxRoom;
        bandBottom = std::max(bandBottom, cursor);
    }
    return band >= 0 ? std::max(cursor, bandBottom) : cursor;
}

// Finds the largest gap, then pitch, then font factors that let the page's text end above
// `limit`.
void fit(std::vector<Placement>& placements, float top, float limit, bool exactSpacing)
{
    if (layOut(placements, top, 1, 1, 1, exactSpacing) <= limit)
        return;
    const auto search = [&](auto&& bottomAt, float low) {
        float lo = low;
        float hi = 1;
        if (bottomAt(lo) > limit)
            return lo;
        for (int step = 0; step < 12; ++step) {
            const float mid = (lo + hi) / 2;
            (bottomAt(mid) <= limit ? lo : hi) = mid;
        }
        return lo;
    };
    const float gaps =
        search([&](float g) { return layOut(placements, top, g, 1, 1, exactSpacing); }, 0.0f);
    if (layOut(placements, top, gaps, 1, 1, exactSpacing) <= limit)
        return;
    const float pitch =
        search([&](float h) { return layOut(placements, top, 0, h, 1, exactSpacing); }, 0.7f);
    if (layOut(placements, top, 0, pitch, 1, exactSpacing) <= limit)
        return;
    const float font =
        search([&](float f) { return layOut(placements, top, 0, pitch, f, exactSpacing); }, 0.6f);
    layOut(placements, top, 0, pitch, font, exactSpacing);
}

bool sideBySide(const Block& a, const Block& b)
{
    const float tolerance = std::max(a.size, b.size) * 0.3f;
    const bool overlapY = b.box.y0 < a.box.y1 - tolerance && a.box.y0 < b.box.y1 - tolerance;
    const bool apartX = b.box.x0 >= a.box.x1 - 1 || b.box.x1 <= a.box.x0 + 1;
    return overlapY && apartX;
}

}  // namespace

void WriteTabbedPage(RtfWriter& writer, PageJob& job)
{
    const PageLayout& layout = job.layout;
    const EngineOptions& options = job.options;
    const Section& section = job.section;
    const std::vector<Block>& blocks = layout.blocks;
    const float textRight = section.width - section.right;
    const bool exactSpacing = options.adjustSpacing || layout.doubleSpaced;

    // What keeps its place on the page whatever the text does: pictures and turned text as
    // shapes, blocks beside the flow and pleading numbers as frames.
    std::string anchored = job.anchored;
    std::string frames;
    const auto frame = [&frames](const Rect& box, float width, float height) {
        frames += "\\pard\\plain\\phpg\\pvpg\\posx" +
                  std::to_string(Twips(std::max(0.0f, box.x0))) + "\\posy" +
                  std::to_string(Twips(std::max(0.0f, box.y0))) + "\\absw" +
                  std::to_string(Twips(width)) + "\\absh" + std::to_string(Twips(height)) +
                  "\\dxfrtext0\\dfrmtxtx0\\dfrmtxty0";
    };
    const auto frameText = [&](const std::vector<Glyph>& glyphs, const std::vector<Link>* links,
                               float scale) {
        RtfWriter text = writer.fresh();
        text.text(glyphs, links, scale);
        frames += text.out() + "\\par\n";
    };
    for (const Line& number : layout.pleadingNumbers) {
        frame(number.box, number.box.width() + 4, number.box.height());
        frames += "\\qr ";
        frameText(number.glyphs, nullptr, 1);
    }

    std::vector<Placement> placements;
    std::vector<Band> bands;
    const Block* lastFlowed = nullptr;
    std::size_t i = 0;
    while (i < blocks.size()) {
        const Block& block = blocks[i];
        if (block.kind == BlockKind::Rotated) {
            RtfWriter shape = writer.fresh();
            WriteRotatedShape(shape, block, true);
            anchored += shape.out();
            ++i;
            continue;
        }
        if (block.kind == BlockKind::Picture) {
            const Picture& picture = job.page.pictures[static_cast<std::size_t>(block.picture)];
            RtfWriter shape = writer.fresh();
            const bool overText = std::any_of(blocks.begin(), blocks.end(), [&](const Block& b) {
                return b.kind != BlockKind::Picture && b.box.x0 < picture.box.x1 &&
                       b.box.x1 > picture.box.x0 && b.box.y0 < picture.box.y1 &&
                       b.box.y1 > picture.box.y0;
            });
            shape.pictureShape(picture, overText);
            anchored += shape.out();
            ++i;
            continue;
        }
        std::size_t end = i;
        int columns = 0;
        if (layout.columns > 1) {
            while (end < blocks.size() && blocks[end].column >= 0) {
                columns = std::max(columns, blocks[end].column + 1);
                ++end;
            }
        }
        // What stands above the other columns, a title say, goes before the columns.
        if (columns >= 2) {
            float othersTop = 1e9f;
            for (std::size_t k = i; k < end; ++k) {
                if (blocks[k].column != block.column && blocks[k].kind != BlockKind::Picture)
                    othersTop = std::min(othersTop, blocks[k].box.y0);
            }
            if (block.box.y1 <= othersTop)
                columns = 0;
        }
        const auto place = [&](const Block& member, float origin, float rightEdge, int band,
                               bool newColumn) {
            Placement p;
            p.block = &member;
            p.band = band;
            p.newColumn = newColumn;
            p.origin = origin;
            p.rightEdge = rightEdge;
            if (member.kind == BlockKind::Table) {
                p.table = &layout.tables[static_cast<std::size_t>(member.table)];
                if (options.shrinkFonts)
                    p.shrink = TableFontFit(*p.table, 1);
                placements.push_back(p);
                return;
            }
            p.size = std::max(LargestSize(member.text), 1.0f);
            p.pitch = member.lineGap > 0 ? member.lineGap : p.size * SingleSpacing;
            p.targetBaseline = member.lines.empty() ? member.box.y1 : member.lines.front().baseline;
            if (member.border.width > 0 || member.shaded)
                p.boxRoom = member.padding + std::max(member.border.width, 0.5f);
            if (options.preserveTextPosition) {
                // Lines wrap a little later than in the PDF rather than earlier.
                const float slack = member.box.width() * 0.015f + 1;
                switch (member.alignment) {
                case Alignment::Left:
                case Alignment::Justify:
                    p.indent = member.box.x0 - origin;
                    if (member.lines.size() > 1)
                        p.rightIndent = rightEdge - member.box.x1 - slack;
                    break;
                case Alignment::Centre:
                    p.indent = member.box.x0 - origin - slack;
                    p.rightIndent = rightEdge - member.box.x1 - slack;
                    break;
                case Alignment::Right:
                    p.rightIndent = rightEdge - member.box.x1;
                    break;
                }
                // Text may stand in the margin, never beyond the page.
                p.indent = std::max(p.indent, -origin + 4);
                p.rightIndent = std::max(p.rightIndent, -(section.width - rightEdge) + 4);
            }
            if (options.shrinkFonts && member.hasTabs())
                p.shrink = ShrinkTabbed(member, rightEdge);
            else if (options.shrinkFonts)
                p.shrink = ShrinkToFit(member, rightEdge - p.rightIndent - origin - p.indent,
                                       member.box.height() * 1.5f + member.size);
            placements.push_back(p);
        };
        if (columns < 2) {
            if (lastFlowed && block.kind != BlockKind::Table && sideBySide(*lastFlowed, block)) {
                float scale = 1;
                float width = block.box.width() * 1.06f + 3;
                if (options.shrinkFonts)
                    scale = ShrinkToFit(block, width, block.box.height() + 2);
                frame(block.box, width, block.box.height());
                WriteAlignment(frames, block);
                if (exactSpacing && block.lineGap > 0)
                    frames += "\\sl" + std::to_string(Twips(block.lineGap)) + "\\slmult0";
                WriteTabStops(frames, block, block.box.x0);
                frames.push_back(' ');
                frameText(block.text, &job.page.links, scale);
            } else {
                place(block, section.left, textRight, -1, false);
                lastFlowed = &block;
            }
            ++i;
            continue;
        }
        // Columns side by side become a section of as many columns, each read in turn.
        std::vector<Rect> extents(static_cast<std::size_t>(columns));
        for (std::size_t k = i; k < end; ++k) {
            if (blocks[k].kind != BlockKind::Rotated && blocks[k].kind != BlockKind::Picture)
                extents[static_cast<std::size_t>(blocks[k].column)].unite(blocks[k].box);
        }
        float gutters = 0;
        int gaps = 0;
        for (std::size_t c = 1; c < extents.size(); ++c) {
            if (!extents[c - 1].empty() && !extents[c].empty()) {
                gutters += extents[c].x0 - extents[c - 1].x1;
                ++gaps;
            }
        }
        bands.push_back(
            Band{columns, gaps ? std::max(6.0f, gutters / static_cast<float>(gaps)) : 18});
        int column = -1;
        for (std::size_t k = i; k < end; ++k) {
            const Block& member = blocks[k];
            if (member.kind == BlockKind::Rotated || member.kind == BlockKind::Picture) {
                RtfWriter shape = writer.fresh();
                if (member.kind == BlockKind::Rotated)
                    WriteRotatedShape(shape, member, true);
                else
                    shape.pictureShape(job.page.pictures[static_cast<std::size_t>(member.picture)],
                                       false);
                anchored += shape.out();
                continue;
            }
            // The band opens in its first block's column; each change of column breaks to the
            // next one.
            const bool newColumn = column >= 0 && member.column != column;
            column = member.column;
            const Rect& extent = extents[static_cast<std::size_t>(member.column)];
            place(member, extent.x0, extent.x1, static_cast<int>(bands.size()) - 1, newColumn);
            lastFlowed = &member;
        }
        i = end;
    }

    fit(placements, section.top, section.textBottom() - 2, exactSpacing);

    std::string& out = writer.out();
    // The columns the page before ended in close here, with the page break if there is one;
    // closed at the end of their own page, they would leave a trailing empty paragraph that
    // a full page pushes onto a page of its own.
    bool pageBreak = job.pageBreak;
    if (job.columnsOpen && *job.columnsOpen) {
        out += std::string("\\sect\\sectd") + (pageBreak ? "\\sbkpage" : "\\sbknone") +
               job.sectionFormat + "\n";
        pageBreak = false;
        *job.columnsOpen = false;
    }
    out += frames;
    bool first = true;
    int band = -1;
    for (const Placement& p : placements) {
        if (p.band != band) {
            if (band >= 0)
                out += "\\sect\\sectd\\sbknone" + job.sectionFormat + "\n";
            if (p.band >= 0) {
                const Band& b = bands[static_cast<std::size_t>(p.band)];
                out += "\\sect\\sectd\\sbknone" + job.sectionFormat + "\\cols" +
                       std::to_string(b.columns) + "\\colsx" + std::to_string(Twips(b.gutter)) +
                       "\n";
            }
            band = p.band;
        }
        const Block& block = *p.block;
        out += "\\pard\\plain";
        if (first && pageBreak)
            out += "\\pagebb";
        if (p.table) {
            out += "\\sl-" + std::to_string(Twips(p.lineHeight)) + "\\slmult0\\fs2 ";
            if (p.newColumn)
                out += "\\column ";
            if (first)
                out += anchored;
            first = false;
            out += "\\par\n";
            WriteTable(writer, *p.table, &job.page.links, p.table->box.x0 - p.origin, 1, p.scale);
            continue;
        }
        if (p.gap > 0.5f)
            out += "\\sb" + std::to_string(Twips(p.gap));
        if (std::fabs(p.indent) > 0.5f)
            out += "\\li" + std::to_string(Twips(p.indent));
        if (std::fabs(p.rightIndent) > 0.5f)
            out += "\\ri" + std::to_string(Twips(p.rightIndent));
        WriteAlignment(out, block);
        WriteParagraphBox(out, block, writer);
        if (exactSpacing)
            out += "\\sl-" + std::to_string(Twips(p.lineHeight)) + "\\slmult0";
        // Stops are measured from where the paragraph's indent also starts.
        WriteTabStops(out, block, options.preserveTextPosition ? p.origin : block.box.x0);
        out.push_back(' ');
        if (p.newColumn)
            out += "\\column ";
        if (first)
            out += anchored;
        first = false;
        writer.text(block.text, &job.page.links, p.scale);
        out += "\\par\n";
    }
    if (band >= 0 && job.columnsOpen)
        *job.columnsOpen = true;
    else if (band >= 0)
        out += "\\sect\\sectd\\sbknone" + job.sectionFormat + "\n";
    if (first) {
        out += pageBreak ? "\\pard\\plain\\pagebb\\sl-20\\slmult0\\fs2 "
                         : "\\pard\\plain\\sl-20\\slmult0\\fs2 ";
        out += anchored + "\\par\n";
    }
}

}  // namespace velmora
