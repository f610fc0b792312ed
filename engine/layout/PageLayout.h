#pragma once

// Reading a page: glyphs grouped into fragments, lines, columns and paragraphs, pleading
// line numbers set aside, rotated text and pictures placed among the text in reading order.

#include "model/PageModel.h"

#include <string>
#include <vector>

namespace velmora {

class RunningHeads;

struct LayoutOptions final
{
    int documentType = 2;  // 1 single column, 2 multi-column, 3 legal pleading
    bool mergeParagraphs = true;
    bool mergeText = true;                       // fragments on one baseline form one line
    bool rotatedAsShapes = false;                // rotated text kept apart as its own block
    float bodySize = 0;                          // the document's body text size; 0: the page's own
    const RunningHeads* runningHeads = nullptr;  // lines to move to the header and footer
    bool paragraphBoxes = true;  // a box drawn around paragraphs becomes their border
};

// A run of glyphs on one baseline with no wide gap inside.
struct Fragment final
{
    std::vector<Glyph> glyphs;
    Rect box;
    float size = 0;
    int words = 0;
};

// A visual line: fragments left to right, joined by '\t' glyphs; tabStops holds, for each
// '\t', the x (points, page coordinates) of the fragment that follows it.
struct Line final
{
    std::vector<Glyph> glyphs;
    std::vector<float> tabStops;
    // A flush-right stop with dot leaders at this x for the line's last '\t' (a table of
    // contents' page number); 0 when there is none.
    float leaderStop = 0;
    Rect box;
    float size = 0;
    float baseline = 0;        // where most of its glyphs stand
    bool rightToLeft = false;  // its glyphs are in reading order, right to left on the page

    bool hasTabs() const { return !tabStops.empty() || leaderStop > 0; }
};

// One side of a cell: a rule of `width` points, none when 0.
struct CellBorder final
{
    float width = 0;
    uint32_t colour = 0;
};

enum class BlockKind { Paragraph, Heading1, Heading2, Picture, Rotated, Table };

enum class Alignment { Left, Centre, Right, Justify };

struct Block final
{
    BlockKind kind = BlockKind::Paragraph;
    // The paragraph's text: its lines joined by ' ' (or with a line-end hyphen undone) when
    // merged, or one line.
    std::vector<Glyph> text;
    std::vector<float> tabStops;
    float leaderStop = 0;
    std::vector<Line> lines;  // the lines it was made of, for their geometry
    Rect box;
    float size = 0;
    float lineGap = 0;  // baseline-to-baseline distance of its lines; 0 for a single line
    int picture = -1;   // index into the page's pictures
    int table = -1;     // index into the layout's tables
    float angle = 0;    // degrees, counter-clockwise, for rotated text
    int column = 0;     // region of the page it came from, for exact placement
    Alignment alignment = Alignment::Left;
    bool rightToLeft = false;
    // A drawn box around the paragraph: its border, `padding` points from the text, and
    // the fill inside it.
    CellBorder border;
    float padding = 0;
    bool shaded = false;
    uint32_t shading = 0;

    bool hasTabs() const { return !tabStops.empty() || leaderStop > 0; }
};

struct TableCell final
{
    int row = 0;
    int column = 0;
    int rowSpan = 1;
    int columnSpan = 1;
    std::vector<Block> paragraphs;
    bool shaded = false;
    uint32_t shading = 0;
    CellBorder top;
    CellBorder left;
    CellBorder bottom;
    CellBorder right;
};

struct Table final
{
    std::vector<float> columns;    // each column's left edge, then the last one's right edge
    std::vector<float> rows;       // each row's top, then the last one's bottom
    std::vector<TableCell> cells;  // row by row, left to right
    Rect box;
    std::vector<std::size_t> drawings;  // the page's drawings it was made of
    bool ruled = false;                 // drawn as a grid of rules
};

struct PageLayout final
{
    std::vector<Block> blocks;  // reading order
    std::vector<Table> tables;
    // The page's drawings left to be drawn as shapes once tables took their rules and fills.
    std::vector<std::size_t> drawings;
    std::vector<Line> pleadingNumbers;
    std::vector<Line> header;
    std::vector<Line> footer;
    Rect contentBox;
    float bodySize = 0;
    bool doubleSpaced = false;
    int columns = 1;  // most columns found side by side
};

// Glyphs of one MuPDF line cut at gaps wider than a word space would be.
std::vector<Fragment> SplitIntoFragments(const TextLine& line);

// x ranges [start, end] between text columns, left to right; empty for single-column text.
std::vector<std::pair<float, float>> FindGutters(const std::vector<Fragment>& fragments);

// Pleading line numbers: small integers stacked down the left margin. Returns their indices.
std::vector<std::size_t> FindPleadingNumbers(const std::vector<Fragment>& fragments);

// Fragments on one baseline as lines, top to bottom.
std::vector<Line> BuildLines(std::vector<Fragment> fragments, bool mergeText);

// Consecutive lines that belong together as paragraphs, with the alignment their lines show
// within the left and right edges of their region.
std::vector<Block> BuildParagraphs(const std::vector<Line>& lines, bool merge, float bodySize);

// The size most of the page's text has, weighted by glyph count.
float DominantSize(const std::vector<TextLine>& lines);

PageLayout LayOutPage(const PageContent& page, const LayoutOptions& options,
                      const std::vector<FontFace>* fonts = nullptr);

// The page's horizontal text as lines across the whole page, top to bottom.
std::vector<Line> PageLines(const PageContent& page);

// The text of glyphs as UTF-8, for tests and header detection.
std::string ToUtf8(const std::vector<Glyph>& glyphs);

}  // namespace velmora
