#include "convert/PageWriting.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// Half the room between a cell's edge and its text; a word processor draws the cell's
// border this far left of where the row's edge is said to be.
constexpr float CellGap = 2;

void border(std::string& out, const char* side, const CellBorder& edge, RtfWriter& writer)
{
    if (edge.width <= 0)
        return;
    out += std::string("\\clbrdr") + side + "\\brdrs\\brdrw" +
           std::to_string(std::clamp(Twips(edge.width), 2L, 75L));
    if (edge.colour != 0)
        out += "\\brdrcf" + std::to_string(writer.colour(edge.colour));
}

// Where a cell's text stands in its row: at the top, in the middle or at the bottom.
const char* verticalAlignment(const Table& table, const TableCell& cell)
{
    Rect text;
    for (const Block& paragraph : cell.paragraphs)
        text.unite(paragraph.box);
    if (text.empty())
        return "";
    const float above = text.y0 - table.rows[static_cast<std::size_t>(cell.row)];
    const float below = table.rows[static_cast<std::size_t>(cell.row + cell.rowSpan)] - text.y1;
    if (above > 3 && std::fabs(above - below) < std::max(2.0f, (above + below) * 0.25f))
        return "\\clvertalc";
    if (below + 3 < above)
        return "\\clvertalb";
    return "";
}

float cellHeight(const TableCell& cell, float width, float fontScale)
{
    float height = 0;
    for (const Block& paragraph : cell.paragraphs) {
        const float size = std::max(LargestSize(paragraph.text), 1.0f) * fontScale;
        const int lines = !paragraph.hasTabs()
                              ? WrappedLines(paragraph.text, width - 2 * CellGap, fontScale)
                              : static_cast<int>(paragraph.lines.size());
        height += static_cast<float>(lines) * size * SingleSpacing;
    }
    return height;
}

}  // namespace

void WriteTable(RtfWriter& writer, const Table& table, const std::vector<Link>* links, float left,
                float widthScale, float fontScale)
{
    std::string& out = writer.out();
    const std::size_t rows = table.rows.size() - 1;
    const float origin = table.columns.front();
    const auto edge = [&](int column) {
        return Twips(left +
                     (table.columns[static_cast<std::size_t>(column)] - origin) * widthScale +
                     CellGap);
    };
    for (std::size_t r = 0; r < rows; ++r) {
        // The row's cells, and the cells of rows above that reach down into it.
        std::vector<const TableCell*> cells;
        for (const TableCell& cell : table.cells) {
            if (cell.row <= static_cast<int>(r) && cell.row + cell.rowSpan > static_cast<int>(r))
                cells.push_back(&cell);
        }
        std::sort(cells.begin(), cells.end(),
                  [](const TableCell* a, const TableCell* b) { return a->column < b->column; });
        out += "\\trowd\\trgaph" + std::to_string(Twips(CellGap)) + "\\trleft" +
               std::to_string(edge(0)) + "\\trrh" +
               std::to_string(Twips(table.rows[r + 1] - table.rows[r]));
        for (const TableCell* cell : cells) {
            const bool continued = cell->row < static_cast<int>(r);
            if (cell->rowSpan > 1)
                out += continued ? "\\clvmrg" : "\\clvmgf";
            out += verticalAlignment(table, *cell);
            border(out, "t", cell->top, writer);
            border(out, "l", cell->left, writer);
            border(out, "b", cell->bottom, writer);
            border(out, "r", cell->right, writer);
            if (cell->shaded)
                out += "\\clcbpat" + std::to_string(writer.colour(cell->shading));
            out += "\\cellx" + std::to_string(edge(cell->column + cell->columnSpan));
        }
        out += "\n";
        for (const TableCell* cell : cells) {
            const bool continued = cell->row < static_cast<int>(r);
            if (continued || cell->paragraphs.empty()) {
                out += "\\pard\\plain\\intbl\\cell";
                continue;
            }
            for (std::size_t k = 0; k < cell->paragraphs.size(); ++k) {
                const Block& paragraph = cell->paragraphs[k];
                out += k > 0 ? "\\par\\pard\\plain\\intbl" : "\\pard\\plain\\intbl";
                WriteAlignment(out, paragraph);
                WriteTabStops(out, paragraph,
                              table.columns[static_cast<std::size_t>(cell->column)]);
                out.push_back(' ');
                writer.text(paragraph.text, links, fontScale);
            }
            out += "\\cell";
        }
        out += "\\row\n";
    }
}

float TableHeight(const Table& table, float widthScale, float fontScale)
{
    std::vector<float> heights;
    for (std::size_t r = 0; r + 1 < table.rows.size(); ++r)
        heights.push_back(table.rows[r + 1] - table.rows[r]);
    for (const TableCell& cell : table.cells) {
        if (cell.rowSpan != 1)
            continue;
        const float width =
            (table.columns[static_cast<std::size_t>(cell.column + cell.columnSpan)] -
             table.columns[static_cast<std::size_t>(cell.column)]) *
            widthScale;
        float& row = heights[static_cast<std::size_t>(cell.row)];
        row = std::max(row, cellHeight(cell, width, fontScale));
    }
    float height = 0;
    for (float row : heights)
        height += row;
    return height;
}

float TableFontFit(const Table& table, float widthScale)
{
    float fit = 1;
    for (const TableCell& cell : table.cells) {
        const float width =
            (table.columns[static_cast<std::size_t>(cell.column + cell.columnSpan)] -
             table.columns[static_cast<std::size_t>(cell.column)]) *
                widthScale -
            2 * CellGap;
        for (const Block& paragraph : cell.paragraphs) {
            if (paragraph.lines.size() != 1 || paragraph.hasTabs())
                continue;
            const float needed = EstimatedWidth(paragraph.text, 1);
            if (needed > width && width > 0)
                fit = std::min(fit, width / needed);
        }
    }
    return std::max(fit, 0.75f);
}

float TableTop(const Table& table)
{
    if (table.ruled)
        return table.box.y0;
    float top = table.box.y0;
    bool found = false;
    for (const TableCell& cell : table.cells) {
        if (cell.row != 0 || cell.paragraphs.empty() || cell.paragraphs.front().lines.empty())
            continue;
        const Line& line = cell.paragraphs.front().lines.front();
        const float size = std::max(LargestSize(line.glyphs), 1.0f);
        const float candidate = line.baseline - (SingleSpacing - DescentShare) * size;
        top = found ? std::min(top, candidate) : candidate;
        found = true;
    }
    return top;
}

void WriteTableShape(RtfWriter& writer, const Table& table, const std::vector<Link>* links)
{
    std::string& out = writer.out();
    const Rect& box = table.box;
    out += "{\\shp{\\*\\shpinst\\shpleft" + std::to_string(Twips(box.x0)) + "\\shptop" +
           std::to_string(Twips(box.y0)) + "\\shpright" + std::to_string(Twips(box.x1 + 4)) +
           "\\shpbottom" + std::to_string(Twips(box.y1)) +
           "\\shpfhdr0\\shpbxpage\\shpbxignore\\shpbypage\\shpbyignore\\shpwr3\\shpwrk0"
           "\\shpfblwtxt0\\shpz0";
    out += "{\\sp{\\sn shapeType}{\\sv 202}}{\\sp{\\sn fLine}{\\sv 0}}{\\sp{\\sn fFilled}{\\sv 0}}"
           "{\\sp{\\sn dxTextLeft}{\\sv 0}}{\\sp{\\sn dxTextRight}{\\sv 0}}{\\sp{\\sn dyTextTop}"
           "{\\sv 0}}{\\sp{\\sn dyTextBottom}{\\sv 0}}{\\sp{\\sn fFitShapeToText}{\\sv 1}}";
    out += "{\\shptxt ";
    WriteTable(writer, table, links, 0, 1, 1);
    out += "\\pard\\plain\\par}}}";
}

}  // namespace velmora
