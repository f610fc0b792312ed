#pragma once

// Tables of a page: ruled ones from the grid their rules draw, unruled ones from text that
// lines up in columns over several rows; their cells' text, borders and shading.

#include "layout/PageLayout.h"

#include <vector>

namespace velmora {

// Grids of rules among the drawings, each a table of the rows and columns its rules give,
// with the borders and the shading the drawings draw.
std::vector<Table> FindRuledTables(const std::vector<Drawing>& drawings);

// Gives each cell of `table` the fragments whose centres fall in it, as paragraphs, and takes
// them out of `fragments`.
void FillCells(Table& table, std::vector<Fragment>& fragments, bool merge);

// A run of lines that reads as an unruled table.
struct TableRun final
{
    std::size_t first = 0;  // index of its first line
    std::size_t last = 0;   // index of its last line
    Table table;
};

// Runs of at least three lines whose parts stand in the same columns, as tables; a line of
// one part that continues a row's cell (a wrapped cell) joins that cell.
std::vector<TableRun> FindUnruledTables(const std::vector<Line>& lines, bool merge);

// Rules along an unruled table's rows and edges become its borders, fills inside it its
// cells' shading; drawings marked in `used` are left alone.
void DressTable(Table& table, const std::vector<Drawing>& drawings, const std::vector<bool>& used);

}  // namespace velmora
