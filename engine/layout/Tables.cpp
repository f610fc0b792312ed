#include "layout/Tables.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora {

namespace {

// A straight rule of a drawing: a line, a thin filled bar or a stroked rectangle's side.
struct Rule
{
    bool horizontal = true;
    float at = 0;  // y of a horizontal rule, x of a vertical one
    float from = 0;
    float to = 0;
    CellBorder border;
    std::vector<std::size_t> drawings;  // the drawings it is drawn by
};

constexpr float Tolerance = 2;
// Room a word processor leaves between a cell's edge and its text.
constexpr float CellGap = 2;
constexpr float MaxRowHeight = 250;

std::vector<Rule> rulesOf(const std::vector<Drawing>& drawings, std::vector<std::size_t>& fills)
{
    std::vector<Rule> rules;
    for (std::size_t i = 0; i < drawings.size(); ++i) {
        const Drawing& d = drawings[i];
        const Rect& b = d.box;
        const auto add = [&](bool horizontal, float at, float from, float to, float width,
                             uint32_t colour) {
            rules.push_back(Rule{horizontal, at, from, to, CellBorder{width, colour}, {i}});
        };
        if (d.kind == Drawing::Kind::Line) {
            if (b.height() < 1)
                add(true, b.centreY(), b.x0, b.x1, d.lineWidth, d.stroke);
            else if (b.width() < 1)
                add(false, b.centreX(), b.y0, b.y1, d.lineWidth, d.stroke);
            continue;
        }
        if (d.stroked) {
            add(true, b.y0, b.x0, b.x1, d.lineWidth, d.stroke);
            add(true, b.y1, b.x0, b.x1, d.lineWidth, d.stroke);
            add(false, b.x0, b.y0, b.y1, d.lineWidth, d.stroke);
            add(false, b.x1, b.y0, b.y1, d.lineWidth, d.stroke);
        } else if (d.filled && b.height() <= 2.5f && b.width() > b.height() * 3) {
            add(true, b.centreY(), b.x0, b.x1, b.height(), d.fill);
            continue;
        } else if (d.filled && b.width() <= 2.5f && b.height() > b.width() * 3) {
            add(false, b.centreX(), b.y0, b.y1, b.width(), d.fill);
            continue;
        }
        if (d.filled)
            fills.push_back(i);
    }
    // Pieces of one rule (a table's column rule drawn row by row) become one.
    std::sort(rules.begin(), rules.end(), [](const Rule& a, const Rule& b) {
        return a.horizontal != b.horizontal ? a.horizontal
                                            : (a.at != b.at ? a.at < b.at : a.from < b.from);
    });
    std::vector<Rule> merged;
    for (Rule& rule : rules) {
        bool joined = false;
        for (auto other = merged.rbegin(); other != merged.rend() && !joined; ++other) {
            if (other->horizontal != rule.horizontal || rule.at - other->at > 1)
                break;
            if (rule.from <= other->to + Tolerance && rule.to >= other->from - Tolerance) {
                other->from = std::min(other->from, rule.from);
                other->to = std::max(other->to, rule.to);
                other->drawings.insert(other->drawings.end(), rule.drawings.begin(),
                                       rule.drawings.end());
                joined = true;
            }
        }
        if (!joined)
            merged.push_back(std::move(rule));
    }
    return merged;
}

bool touches(const Rule& h, const Rule& v)
{
    const float tolerance = Tolerance + std::max(h.border.width, v.border.width);
    return v.at >= h.from - tolerance && v.at <= h.to + tolerance && h.at >= v.from - tolerance &&
           h.at <= v.to + tolerance;
}

std::size_t findRoot(std::vector<std::size_t>& parent, std::size_t i)
{
    while (parent[i] != i) {
        parent[i] = parent[parent[i]];
        i = parent[i];
    }
    return i;
}

// Positions closer than the tolerance count as one, at their mean.
std::vector<float> clusters(std::vector<float> values)
{
    std::sort(values.begin(), values.end());
    std::vector<float> out;
    float sum = 0;
    int count = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (count > 0 && values[i] - values[i - 1] > Tolerance) {
            out.push_back(sum / static_cast<float>(count));
            sum = 0;
            count = 0;
        }
        sum += values[i];
        ++count;
    }
    if (count > 0)
        out.push_back(sum / static_cast<float>(count));
    return out;
}

// The rule of `rules` at `at` that covers most of [from, to], if it covers at least 60 %.
const Rule* ruleAlong(const std::vector<const Rule*>& rules, float at, float from, float to)
{
    const Rule* best = nullptr;
    float covered = 0;
    for (const Rule* rule : rules) {
        if (std::fabs(rule->at - at) > Tolerance + rule->border.width)
            continue;
        const float shared = std::min(rule->to, to) - std::max(rule->from, from);
        if (shared > covered) {
            covered = shared;
            best = rule;
        }
    }
    return covered >= (to - from) * 0.6f ? best : nullptr;
}

// Fills that cover most of a cell shade it; the last one painted shows.
void shadeCells(Table& table, const std::vector<Drawing>& drawings,
                const std::vector<std::size_t>& fills)
{
    for (TableCell& cell : table.cells) {
        const Rect box{table.columns[static_cast<std::size_t>(cell.column)],
                       table.rows[static_cast<std::size_t>(cell.row)],
                       table.columns[static_cast<std::size_t>(cell.column + cell.columnSpan)],
                       table.rows[static_cast<std::size_t>(cell.row + cell.rowSpan)]};
        const float area = box.width() * box.height();
        for (std::size_t f : fills) {
            const Rect& fill = drawings[f].box;
            const float w = std::min(fill.x1, box.x1) - std::max(fill.x0, box.x0);
            const float h = std::min(fill.y1, box.y1) - std::max(fill.y0, box.y0);
            if (w > 0 && h > 0 && w * h >= area * 0.7f) {
                cell.shaded = true;
                cell.shading = drawings[f].fill;
                if (std::find(table.drawings.begin(), table.drawings.end(), f) ==
                    table.drawings.end())
                    table.drawings.push_back(f);
            }
        }
    }
}

// Lines' parts between their tabs, as lines of their own.
std::vector<Line> partsOf(const Line& line)
{
    std::vector<Line> parts(1);
    for (const Glyph& glyph : line.glyphs) {
        if (glyph.c == '\t') {
            parts.emplace_back();
            continue;
        }
        parts.back().glyphs.push_back(glyph);
        if (glyph.c != ' ')
            parts.back().box.unite(glyph.box);
    }
    for (Line& part : parts) {
        part.size = line.size;
        part.baseline = line.baseline;
    }
    std::erase_if(parts, [](const Line& part) { return part.box.empty(); });
    return parts;
}

// The x ranges no part of a row crosses, as column edges: the left edge, each gap's middle,
// the right edge.
std::vector<float> columnEdges(const std::vector<std::vector<Line>>& rows)
{
    std::vector<std::pair<float, float>> spans;
    for (const auto& row : rows) {
        if (row.size() < 2)
            continue;
        for (const Line& part : row)
            spans.emplace_back(part.box.x0, part.box.x1);
    }
    std::sort(spans.begin(), spans.end());
    std::vector<float> edges;
    if (spans.empty())
        return edges;
    edges.push_back(spans.front().first);
    float reach = spans.front().second;
    for (const auto& [from, to] : spans) {
        if (from > reach + 1)
            edges.push_back((reach + from) / 2);
        reach = std::max(reach, to);
    }
    edges.push_back(reach);
    return edges;
}

// A bullet or an item's number ("3.", "(b)", "iv)") standing before its text.
bool isListMarker(const Line& part)
{
    std::u32string text;
    for (const Glyph& glyph : part.glyphs) {
        if (glyph.c != ' ')
            text.push_back(glyph.c);
    }
    if (text.empty() || text.size() > 5)
        return false;
    if (text.size() == 1)
        return true;
    const char32_t last = text.back();
    return last == '.' || last == ')' || last == ']' || last == ':';
}

int columnAt(const std::vector<float>& edges, float x)
{
    int column = 0;
    while (column + 2 < static_cast<int>(edges.size()) &&
           x >= edges[static_cast<std::size_t>(column + 1)])
        ++column;
    return column;
}

float median(std::vector<float> values, float fallback)
{
    if (values.empty())
        return fallback;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// A cell's lines as paragraphs; a cell holds no headings. Parts on one baseline stay one
// line, apart by a tab.
void setParagraphs(TableCell& cell, std::vector<Line> lines, bool merge)
{
    std::sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) {
        return a.baseline < b.baseline - 1 ||
               (std::fabs(a.baseline - b.baseline) <= 1 && a.box.x0 < b.box.x0);
    });
    std::vector<Line> joined;
    for (Line& line : lines) {
        if (joined.empty() || std::fabs(joined.back().baseline - line.baseline) > 1) {
            joined.push_back(std::move(line));
            continue;
        }
        Line& previous = joined.back();
        Glyph tab = line.glyphs.front();
        tab.c = '\t';
        tab.box.x0 = previous.box.x1;
        tab.box.x1 = line.box.x0;
        tab.link = -1;
        previous.glyphs.push_back(tab);
        previous.glyphs.insert(previous.glyphs.end(), line.glyphs.begin(), line.glyphs.end());
        previous.tabStops.push_back(line.box.x0);
        previous.box.unite(line.box);
    }
    cell.paragraphs = BuildParagraphs(joined, merge, 0);
}

}  // namespace

std::vector<Table> FindRuledTables(const std::vector<Drawing>& drawings)
{
    std::vector<std::size_t> fills;
    const std::vector<Rule> rules = rulesOf(drawings, fills);
    std::vector<std::size_t> parent(rules.size());
    std::iota(parent.begin(), parent.end(), 0);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        for (std::size_t j = i + 1; j < rules.size(); ++j) {
            if (rules[i].horizontal == rules[j].horizontal)
                continue;
            const Rule& h = rules[i].horizontal ? rules[i] : rules[j];
            const Rule& v = rules[i].horizontal ? rules[j] : rules[i];
            if (touches(h, v))
                parent[findRoot(parent, i)] = findRoot(parent, j);
        }
    }
    std::vector<Table> tables;
    for (std::size_t root = 0; root < rules.size(); ++root) {
        if (findRoot(parent, root) != root)
            continue;
        std::vector<const Rule*> horizontal;
        std::vector<const Rule*> vertical;
        for (std::size_t i = 0; i < rules.size(); ++i) {
            if (findRoot(parent, i) == root)
                (rules[i].horizontal ? horizontal : vertical).push_back(&rules[i]);
        }
        if (horizontal.size() < 2 || vertical.size() < 2)
            continue;
        std::vector<float> xs;
        std::vector<float> ys;
        xs.reserve(vertical.size());
        ys.reserve(horizontal.size());
        for (const Rule* rule : vertical)
            xs.push_back(rule->at);
        for (const Rule* rule : horizontal)
            ys.push_back(rule->at);
        Table table;
        table.columns = clusters(xs);
        table.rows = clusters(ys);
        const std::size_t columns = table.columns.size() - 1;
        const std::size_t rows = table.rows.size() - 1;
        // One cell is a box around a paragraph, not a table; a frame around the page with a
        // rule across it is no table either.
        if (columns * rows < 2)
            continue;
        bool tall = false;
        for (std::size_t r = 0; r < rows; ++r)
            tall = tall || table.rows[r + 1] - table.rows[r] > MaxRowHeight;
        if (tall)
            continue;
        table.box = Rect{table.columns.front(), table.rows.front(), table.columns.back(),
                         table.rows.back()};
        table.ruled = true;
        const auto across = [&](std::size_t row, std::size_t c0, std::size_t c1) {
            return ruleAlong(horizontal, table.rows[row], table.columns[c0], table.columns[c1]);
        };
        const auto down = [&](std::size_t column, std::size_t r0, std::size_t r1) {
            return ruleAlong(vertical, table.columns[column], table.rows[r0], table.rows[r1]);
        };
        // Which cell each grid square belongs to: a missing rule between two squares merges
        // them.
        std::vector<int> owner(rows * columns, -1);
        for (std::size_t r = 0; r < rows; ++r) {
            std::size_t c = 0;
            while (c < columns) {
                std::size_t span = 1;
                while (c + span < columns && !down(c + span, r, r + 1))
                    ++span;
                const int above = r > 0 ? owner[(r - 1) * columns + c] : -1;
                if (above >= 0 && !across(r, c, c + span) &&
                    table.cells[static_cast<std::size_t>(above)].columnSpan ==
                        static_cast<int>(span) &&
                    table.cells[static_cast<std::size_t>(above)].column == static_cast<int>(c)) {
                    ++table.cells[static_cast<std::size_t>(above)].rowSpan;
                    for (std::size_t k = 0; k < span; ++k)
                        owner[r * columns + c + k] = above;
                } else {
                    TableCell cell;
                    cell.row = static_cast<int>(r);
                    cell.column = static_cast<int>(c);
                    cell.columnSpan = static_cast<int>(span);
                    for (std::size_t k = 0; k < span; ++k)
                        owner[r * columns + c + k] = static_cast<int>(table.cells.size());
                    table.cells.push_back(cell);
                }
                c += span;
            }
        }
        for (TableCell& cell : table.cells) {
            const auto r0 = static_cast<std::size_t>(cell.row);
            const auto r1 = r0 + static_cast<std::size_t>(cell.rowSpan);
            const auto c0 = static_cast<std::size_t>(cell.column);
            const auto c1 = c0 + static_cast<std::size_t>(cell.columnSpan);
            if (const Rule* rule = across(r0, c0, c1))
                cell.top = rule->border;
            if (const Rule* rule = across(r1, c0, c1))
                cell.bottom = rule->border;
            if (const Rule* rule = down(c0, r0, r1))
                cell.left = rule->border;
            if (const Rule* rule = down(c1, r0, r1))
                cell.right = rule->border;
        }
        for (const Rule* rule : horizontal)
            table.drawings.insert(table.drawings.end(), rule->drawings.begin(),
                                  rule->drawings.end());
        for (const Rule* rule : vertical)
            table.drawings.insert(table.drawings.end(), rule->drawings.begin(),
                                  rule->drawings.end());
        std::vector<std::size_t> inside;
        for (std::size_t f : fills) {
            const Rect& box = drawings[f].box;
            if (box.x0 >= table.box.x0 - Tolerance && box.x1 <= table.box.x1 + Tolerance &&
                box.y0 >= table.box.y0 - Tolerance && box.y1 <= table.box.y1 + Tolerance)
                inside.push_back(f);
        }
        shadeCells(table, drawings, inside);
        tables.push_back(std::move(table));
    }
    return tables;
}

void FillCells(Table& table, std::vector<Fragment>& fragments, bool merge)
{
    const std::size_t columns = table.columns.size() - 1;
    std::vector<std::vector<Fragment>> inCell(table.cells.size());
    std::vector<int> owner((table.rows.size() - 1) * columns, -1);
    for (std::size_t i = 0; i < table.cells.size(); ++i) {
        const TableCell& cell = table.cells[i];
        for (int r = cell.row; r < cell.row + cell.rowSpan; ++r) {
            for (int c = cell.column; c < cell.column + cell.columnSpan; ++c)
                owner[static_cast<std::size_t>(r) * columns + static_cast<std::size_t>(c)] =
                    static_cast<int>(i);
        }
    }
    std::erase_if(fragments, [&](Fragment& fragment) {
        const float x = fragment.box.centreX();
        const float y = fragment.box.centreY();
        if (!table.box.contains(x, y))
            return false;
        std::size_t c = 0;
        while (c + 1 < columns && x >= table.columns[c + 1])
            ++c;
        std::size_t r = 0;
        while (r + 2 < table.rows.size() && y >= table.rows[r + 1])
            ++r;
        const int cell = owner[r * columns + c];
        if (cell < 0)
            return false;
        inCell[static_cast<std::size_t>(cell)].push_back(std::move(fragment));
        return true;
    });
    for (std::size_t i = 0; i < table.cells.size(); ++i) {
        TableCell& cell = table.cells[i];
        setParagraphs(cell, BuildLines(std::move(inCell[i]), true), merge);
        // Text set flush right or centred in its cell keeps that place.
        const float left = table.columns[static_cast<std::size_t>(cell.column)];
        const float right = table.columns[static_cast<std::size_t>(cell.column + cell.columnSpan)];
        for (Block& paragraph : cell.paragraphs) {
            if (paragraph.alignment != Alignment::Left)
                continue;
            const float before = paragraph.box.x0 - left;
            const float after = right - paragraph.box.x1;
            if (before > 4 && std::fabs(before - after) < std::max(3.0f, (right - left) * 0.1f))
                paragraph.alignment = Alignment::Centre;
            else if (after + 4 < before && after < 8)
                paragraph.alignment = Alignment::Right;
        }
    }
}

std::vector<TableRun> FindUnruledTables(const std::vector<Line>& lines, bool merge)
{
    std::vector<TableRun> runs;
    std::size_t i = 0;
    while (i < lines.size()) {
        // A table of contents' line, with its leader, is no table row.
        if (lines[i].tabStops.empty() || lines[i].leaderStop > 0) {
            ++i;
            continue;
        }
        // The run: lines of several parts, and lines of one part close under them.
        std::size_t end = i;
        float left = lines[i].box.x0;
        float right = lines[i].box.x1;
        for (std::size_t k = i + 1; k < lines.size(); ++k) {
            const Line& line = lines[k];
            const float size = std::max({line.size, lines[k - 1].size, 1.0f});
            const float step = line.baseline - lines[k - 1].baseline;
            if (step <= 0 || step > size * 2.5f || line.leaderStop > 0)
                break;
            if (line.tabStops.empty() && (step > size * 1.6f || line.box.x0 < left - Tolerance ||
                                          line.box.x1 > right + Tolerance))
                break;
            if (!line.tabStops.empty()) {
                left = std::min(left, line.box.x0);
                right = std::max(right, line.box.x1);
            }
            end = k;
        }
        std::vector<std::vector<Line>> parts;
        int rowsOfSeveral = 0;
        for (std::size_t k = i; k <= end; ++k) {
            parts.push_back(partsOf(lines[k]));
            rowsOfSeveral += parts.back().size() >= 2 ? 1 : 0;
        }
        const std::vector<float> edges = columnEdges(parts);
        // Lines of one part after the last row belong to it only as a wrapped cell beyond the
        // first column; one in the first column starts the text after the table.
        std::size_t lastRow = end;
        while (lastRow > i && lines[lastRow].tabStops.empty())
            --lastRow;
        std::size_t kept = lastRow;
        while (kept < end && edges.size() >= 3 && columnAt(edges, lines[kept + 1].box.x0) > 0)
            ++kept;
        end = kept;
        parts.resize(end - i + 1);
        const std::size_t count = end - i + 1;
        // Bullets or numbers before their items are a list, not a table.
        bool list = edges.size() == 3;
        for (const auto& row : parts) {
            if (row.size() >= 2 && !isListMarker(row.front()))
                list = false;
        }
        // Columns of running prose side by side are columns of a page, not of a table.
        std::vector<std::vector<float>> words(edges.size() - 1);
        for (const auto& row : parts) {
            for (const Line& part : row) {
                int inPart = 0;
                bool inWord = false;
                for (const Glyph& glyph : part.glyphs) {
                    const bool blank = glyph.c == ' ';
                    inPart += !blank && !inWord ? 1 : 0;
                    inWord = !blank;
                }
                words[static_cast<std::size_t>(columnAt(edges, part.box.x0))].push_back(
                    static_cast<float>(inPart));
            }
        }
        const bool prose = std::all_of(words.begin(), words.end(), [](const std::vector<float>& w) {
            return median(w, 0) >= 5;
        });
        if (count < 3 || rowsOfSeveral < 2 || rowsOfSeveral * 2 < static_cast<int>(count) ||
            edges.size() < 3 || list || prose) {
            ++i;
            continue;
        }
        // Rows: each line of several parts starts one; a line of one part closer under the
        // line before than rows stand apart continues its row.
        std::vector<float> steps;
        for (std::size_t k = i + 1; k <= end; ++k) {
            if (!lines[k].tabStops.empty() && !lines[k - 1].tabStops.empty())
                steps.push_back(lines[k].baseline - lines[k - 1].baseline);
        }
        const float rowStep = median(steps, 1e9f);
        std::vector<std::vector<std::size_t>> rows;
        for (std::size_t k = i; k <= end; ++k) {
            const bool continues = k > i && lines[k].tabStops.empty() &&
                                   (lines[k].baseline - lines[k - 1].baseline < rowStep * 0.85f ||
                                    columnAt(edges, lines[k].box.x0) > 0);
            if (!continues)
                rows.emplace_back();
            rows.back().push_back(k - i);
        }
        Table table;
        const std::size_t columns = edges.size() - 1;
        // Each column's text starts where the PDF has it: a column's edge stands just left of
        // its text, or just right of the column before when that one is flush right.
        std::vector<float> lefts(columns, 1e9f);
        std::vector<float> rights(columns, -1e9f);
        std::vector<float> leftSpread(columns, 0);
        std::vector<float> rightSpread(columns, 0);
        std::vector<std::pair<float, float>> firstSeen(columns, {-1, -1});
        for (const auto& row : parts) {
            for (const Line& part : row) {
                const auto c = static_cast<std::size_t>(columnAt(edges, part.box.x0));
                if (columnAt(edges, part.box.x1 - 1) != static_cast<int>(c))
                    continue;
                if (firstSeen[c].first < 0)
                    firstSeen[c] = {part.box.x0, part.box.x1};
                leftSpread[c] =
                    std::max(leftSpread[c], std::fabs(part.box.x0 - firstSeen[c].first));
                rightSpread[c] =
                    std::max(rightSpread[c], std::fabs(part.box.x1 - firstSeen[c].second));
                lefts[c] = std::min(lefts[c], part.box.x0);
                rights[c] = std::max(rights[c], part.box.x1);
            }
        }
        std::vector<bool> flushRight(columns, false);
        for (std::size_t c = 0; c < columns; ++c)
            flushRight[c] = rights[c] > lefts[c] && rightSpread[c] + 1 < leftSpread[c];
        table.columns = edges;
        for (std::size_t c = 0; c < columns; ++c) {
            if (lefts[c] > 1e8f)
                continue;
            if (!flushRight[c])
                table.columns[c] = lefts[c] - CellGap;
            else if (c > 0 && flushRight[c - 1])
                table.columns[c] = rights[c - 1] + CellGap;
        }
        // The last column has room to spare on its right for a wider font.
        table.columns.back() = std::max(table.columns.back(), rights.back() + CellGap + 6);
        if (flushRight.back())
            table.columns.back() = rights.back() + CellGap;
        for (std::size_t r = 0; r < rows.size(); ++r) {
            const Line& top = lines[i + rows[r].front()];
            const Line& bottom = lines[i + rows[r].back()];
            if (r == 0)
                table.rows.push_back(top.box.y0 - 1);
            else
                table.rows.push_back((lines[i + rows[r - 1].back()].box.y1 + top.box.y0) / 2);
            if (r + 1 == rows.size())
                table.rows.push_back(bottom.box.y1 + 1);
            // Each part goes to the column it starts in and spans those it reaches into.
            std::vector<std::vector<Line>> cellLines(columns);
            std::vector<int> spans(columns, 1);
            for (std::size_t k : rows[r]) {
                for (const Line& part : parts[k]) {
                    const auto first = static_cast<std::size_t>(columnAt(edges, part.box.x0));
                    const auto last = static_cast<std::size_t>(columnAt(edges, part.box.x1 - 1));
                    cellLines[first].push_back(part);
                    spans[first] = std::max(spans[first], static_cast<int>(last - first) + 1);
                }
            }
            std::size_t c = 0;
            while (c < columns) {
                TableCell cell;
                cell.row = static_cast<int>(r);
                cell.column = static_cast<int>(c);
                cell.columnSpan = std::min(spans[c], static_cast<int>(columns - c));
                std::vector<Line> text;
                for (std::size_t k = c; k < c + static_cast<std::size_t>(cell.columnSpan); ++k)
                    text.insert(text.end(), cellLines[k].begin(), cellLines[k].end());
                setParagraphs(cell, std::move(text), merge);
                if (flushRight[c] && cell.columnSpan == 1) {
                    for (Block& paragraph : cell.paragraphs)
                        paragraph.alignment = Alignment::Right;
                }
                c += static_cast<std::size_t>(cell.columnSpan);
                table.cells.push_back(std::move(cell));
            }
        }
        table.box = Rect{table.columns.front(), table.rows.front(), table.columns.back(),
                         table.rows.back()};
        runs.push_back(TableRun{i, end, std::move(table)});
        i = end + 1;
    }
    return runs;
}

void DressTable(Table& table, const std::vector<Drawing>& drawings, const std::vector<bool>& used)
{
    std::vector<std::size_t> fills;
    const std::vector<Rule> rules = rulesOf(drawings, fills);
    const float width = table.box.width();
    for (const Rule& rule : rules) {
        const bool taken = std::any_of(rule.drawings.begin(), rule.drawings.end(),
                                       [&used](std::size_t d) { return used[d]; });
        if (taken || !rule.horizontal)
            continue;
        // A rule across most of the table at one of its row edges.
        const float shared = std::min(rule.to, table.box.x1) - std::max(rule.from, table.box.x0);
        if (shared < width * 0.8f)
            continue;
        std::size_t nearest = 0;
        for (std::size_t r = 1; r < table.rows.size(); ++r) {
            if (std::fabs(table.rows[r] - rule.at) < std::fabs(table.rows[nearest] - rule.at))
                nearest = r;
        }
        const float size = table.rows.size() > 1 ? table.rows[1] - table.rows[0] : 10;
        if (std::fabs(table.rows[nearest] - rule.at) > std::max(4.0f, size * 0.4f))
            continue;
        for (TableCell& cell : table.cells) {
            if (cell.row + cell.rowSpan == static_cast<int>(nearest))
                cell.bottom = rule.border;
            if (cell.row == static_cast<int>(nearest))
                cell.top = rule.border;
        }
        table.drawings.insert(table.drawings.end(), rule.drawings.begin(), rule.drawings.end());
    }
    std::vector<std::size_t> inside;
    for (std::size_t f : fills) {
        const Rect& box = drawings[f].box;
        if (!used[f] && box.x0 >= table.box.x0 - 6 && box.x1 <= table.box.x1 + 6 &&
            box.y0 >= table.box.y0 - 6 && box.y1 <= table.box.y1 + 6)
            inside.push_back(f);
    }
    shadeCells(table, drawings, inside);
}

}  // namespace velmora
