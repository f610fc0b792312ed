#include "GlyphBuilder.h"

#include "convert/PageWriting.h"
#include "layout/PageLayout.h"
#include "layout/RunningHeads.h"

#include <gtest/gtest.h>

#include <numeric>

using namespace velmora;
using enginetest::MakeLine;
using enginetest::MakeRow;

namespace {

std::vector<Fragment> FragmentsOf(const std::vector<TextLine>& lines)
{
    std::vector<Fragment> out;
    for (const TextLine& line : lines) {
        for (Fragment& fragment : SplitIntoFragments(line))
            out.push_back(std::move(fragment));
    }
    return out;
}

std::vector<std::string> BlockTexts(const PageLayout& layout)
{
    std::vector<std::string> out;
    for (const Block& block : layout.blocks)
        out.push_back(ToUtf8(block.text));
    return out;
}

// Two columns of `rows` lines of prose, with a title across both and a closing line below.
PageContent TwoColumnPage(int rows)
{
    PageContent page;
    page.lines.push_back(MakeLine(
        72, 60, "The title crosses both of the columns here and goes on to the right", 10));
    for (int row = 0; row < rows; ++row) {
        const float y = 100 + 12.0f * static_cast<float>(row);
        page.lines.push_back(MakeLine(72, y, "left words " + std::to_string(row) + " go on", 10));
        page.lines.push_back(MakeLine(330, y, "right words " + std::to_string(row) + " go on", 10));
    }
    page.lines.push_back(MakeLine(
        72, 400, "A closing line runs across the whole page width from left to right side", 10));
    return page;
}

std::vector<int> Rising(int count)
{
    std::vector<int> numbers(static_cast<std::size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

}  // namespace

TEST(SplitIntoFragments, CutsAtGapsWiderThanTheTextIsHigh)
{
    struct Row
    {
        const char* name;
        std::vector<std::pair<float, std::string>> cells;
        std::vector<std::string> expected;
    };
    const std::vector<Row> rows{
        {"one run", {{72, "plain words here"}}, {"plain words here"}},
        {"gap of 9 points", {{72, "left"}, {101, "right"}}, {"left right"}},
        {"gap of 11 points", {{72, "left"}, {103, "right"}}, {"left", "right"}},
        {"three cells", {{72, "a"}, {150, "b"}, {300, "c"}}, {"a", "b", "c"}},
        {"blanks only", {{72, "   "}}, {}},
        {"blanks trimmed", {{72, "  word  "}}, {"word"}},
    };
    for (const Row& row : rows) {
        TextLine line = MakeRow(100, row.cells);
        // The gap glyphs of MakeRow are missing; runs only 4 points apart read as one word
        // space when MuPDF would have put a blank between them.
        std::vector<std::string> texts;
        for (const Fragment& fragment : SplitIntoFragments(line)) {
            std::string text;
            for (std::size_t i = 0; i < fragment.glyphs.size(); ++i) {
                if (i > 0 && fragment.glyphs[i].box.x0 - fragment.glyphs[i - 1].box.x1 > 1)
                    text += ' ';
                text += ToUtf8({fragment.glyphs[i]});
            }
            texts.push_back(text);
        }
        EXPECT_EQ(texts, row.expected) << row.name;
    }
}

TEST(FindGutters, FindsTheSpaceBetweenColumnsOfProseOnly)
{
    const std::vector<Fragment> twoColumns = FragmentsOf(TwoColumnPage(12).lines);
    const auto gutters = FindGutters(twoColumns);
    ASSERT_EQ(gutters.size(), 1u);
    EXPECT_GE(gutters[0].first, 72 + 15 * 5);  // after the longest left line
    EXPECT_LE(gutters[0].second, 330.5f);

    std::vector<TextLine> single;
    for (int row = 0; row < 20; ++row)
        single.push_back(MakeLine(72, 100 + 12.0f * static_cast<float>(row),
                                  "a long line of prose that fills the width of the page"));
    single.push_back(MakeLine(72, 400, "short"));
    EXPECT_TRUE(FindGutters(FragmentsOf(single)).empty());

    // A table of one-word cells is no set of columns.
    std::vector<TextLine> table;
    for (int row = 0; row < 10; ++row)
        table.push_back(MakeRow(100 + 14.0f * static_cast<float>(row),
                                {{72, "cell"}, {200, "cell"}, {330, "123"}}));
    EXPECT_TRUE(FindGutters(FragmentsOf(table)).empty());

    // Columns that never stand side by side are no columns either.
    std::vector<TextLine> staggered;
    for (int row = 0; row < 6; ++row)
        staggered.push_back(
            MakeLine(72, 100 + 12.0f * static_cast<float>(row), "left words go on here"));
    for (int row = 0; row < 6; ++row)
        staggered.push_back(
            MakeLine(330, 300 + 12.0f * static_cast<float>(row), "right words go on here"));
    EXPECT_TRUE(FindGutters(FragmentsOf(staggered)).empty());
}

TEST(FindPleadingNumbers, TakesOnlyARisingColumnOfNumbersLeftOfTheText)
{
    struct Row
    {
        const char* name;
        std::vector<int> numbers;
        float x;
        std::size_t expected;
    };
    const std::vector<Row> rows{
        {"28 lines in the margin", Rising(28), 40, 28},
        {"too few to be a column", {1, 2, 3, 4}, 40, 0},
        {"falling numbers", {9, 8, 7, 6, 5, 4, 3}, 40, 0},
        {"numbers inside the text", Rising(6), 120, 0},
    };
    for (const Row& row : rows) {
        std::vector<TextLine> lines;
        for (std::size_t i = 0; i < row.numbers.size(); ++i) {
            const float y = 100 + 24.0f * static_cast<float>(i);
            lines.push_back(MakeLine(row.x, y, std::to_string(row.numbers[i])));
            lines.push_back(MakeLine(100, y, "the body of the pleading goes on"));
        }
        EXPECT_EQ(FindPleadingNumbers(FragmentsOf(lines)).size(), row.expected) << row.name;
    }
}

TEST(BuildParagraphs, JoinsTheLinesOfAParagraphAndNoMore)
{
    struct Row
    {
        const char* name;
        std::vector<TextLine> lines;
        bool merge;
        std::vector<std::string> expected;
    };
    const float pitch = 12;
    const auto japanese = [](TextLine line) {
        for (Glyph& glyph : line.glyphs)
            glyph.c = 0x65e5;
        return line;
    };
    const auto days = [](std::size_t count) {
        std::string text;
        for (std::size_t i = 0; i < count; ++i)
            text += "\xe6\x97\xa5";
        return text;
    };
    const std::vector<Row> rows{
        {"a short line of Japanese, which breaks anywhere, ends its paragraph",
         {japanese(MakeLine(72, 100, std::string(8, 'a'), 14)),
          japanese(MakeLine(72, 113, std::string(40, 'a'), 12))},
         true,
         {days(8), days(40)}},
        {"full lines run on",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd"),
          MakeLine(72, 100 + pitch, "eeee ffff gggg hhhh"), MakeLine(72, 100 + 2 * pitch, "end")},
         true,
         {"aaaa bbbb cccc dddd eeee ffff gggg hhhh end"}},
        {"merging off keeps lines",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd"),
          MakeLine(72, 100 + pitch, "eeee ffff gggg hhhh")},
         false,
         {"aaaa bbbb cccc dddd", "eeee ffff gggg hhhh"}},
        {"a short line ends the paragraph",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd"), MakeLine(72, 100 + pitch, "eeee"),
          MakeLine(72, 100 + 2 * pitch, "ffff gggg hhhh iiii")},
         true,
         {"aaaa bbbb cccc dddd eeee", "ffff gggg hhhh iiii"}},
        {"a line-end hyphen is undone",
         {MakeLine(72, 100, "aaaa bbbb cccc exam-"), MakeLine(72, 100 + pitch, "ple of it")},
         true,
         {"aaaa bbbb cccc example of it"}},
        {"a word broken at the line's end is whole again",
         {MakeLine(72, 100, "aaaa bbbb cccc corpo-"), MakeLine(72, 100 + pitch, "ration of it")},
         true,
         {"aaaa bbbb cccc corporation of it"}},
        // As the English dictionary the setup installs tells.
        {"a compound keeps its hyphen",
         {MakeLine(72, 100, "aaaa bbbb cccc long-"), MakeLine(72, 100 + pitch, "stay of it")},
         true,
         {"aaaa bbbb cccc long-stay of it"}},
        {"a hyphen before a capital stays",
         {MakeLine(72, 100, "aaaa bbbb cccc Jean-"), MakeLine(72, 100 + pitch, "Paul went")},
         true,
         {"aaaa bbbb cccc Jean- Paul went"}},
        {"a wide gap starts a paragraph",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd"),
          MakeLine(72, 100 + pitch, "eeee ffff gggg hhhh"),
          MakeLine(72, 100 + 4 * pitch, "iiii jjjj kkkk llll")},
         true,
         {"aaaa bbbb cccc dddd eeee ffff gggg hhhh", "iiii jjjj kkkk llll"}},
        {"an indented line starts a paragraph",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd"),
          MakeLine(72, 100 + pitch, "eeee ffff gggg hhhh"),
          MakeLine(92, 100 + 2 * pitch, "iiii jjjj kkkk")},
         true,
         {"aaaa bbbb cccc dddd eeee ffff gggg hhhh", "iiii jjjj kkkk"}},
        {"bullets and enumerators start items",
         {MakeLine(72, 100, "* aaaa bbbb cccc dd"),
          MakeLine(72, 100 + pitch, "1. eeee ffff gggg h"),
          MakeLine(72, 100 + 2 * pitch, "b) iiii jjjj kkkk l"),
          MakeLine(72, 100 + 3 * pitch, "(c) mmmm nnnn ooo"),
          MakeLine(72, 100 + 4 * pitch, "e.g. pppp qqqq rrrr"),
          MakeLine(72, 100 + 5 * pitch, "\x88 ssss tttt uuuu")},
         true,
         {"* aaaa bbbb cccc dd", "1. eeee ffff gggg h", "b) iiii jjjj kkkk l",
          "(c) mmmm nnnn ooo e.g. pppp qqqq rrrr", "\u0088 ssss tttt uuuu"}},
        {"list items that share a middle by chance stay apart",
         {MakeLine(92, 100, "- pTransfer"), MakeLine(72, 100 + pitch, "aaaa bbbb cccc ddd:"),
          MakeLine(72, 100 + 4 * pitch, "wwww wwww wwww wwww wwww wwww wwww wwww")},
         true,
         {"- pTransfer", "aaaa bbbb cccc ddd:", "wwww wwww wwww wwww wwww wwww wwww wwww"}},
        {"another size starts a paragraph",
         {MakeLine(72, 100, "aaaa bbbb cccc dddd", 16),
          MakeLine(72, 100 + 18, "eeee ffff gggg hhhh hhhh iiii", 10)},
         true,
         {"aaaa bbbb cccc dddd", "eeee ffff gggg hhhh hhhh iiii"}},
    };
    for (const Row& row : rows) {
        std::vector<Fragment> fragments = FragmentsOf(row.lines);
        const std::vector<Line> lines = BuildLines(fragments, true);
        std::vector<std::string> texts;
        for (const Block& block : BuildParagraphs(lines, row.merge, 10))
            texts.push_back(ToUtf8(block.text));
        EXPECT_EQ(texts, row.expected) << row.name;
    }
}

TEST(BuildLines, JoinsRunsOfOneBaselineWithTabsWhenAsked)
{
    const std::vector<Fragment> fragments = FragmentsOf(
        {MakeRow(100, {{72, "name"}, {200, "price"}, {330, "12"}}), MakeLine(72, 114, "next")});
    const std::vector<Line> merged = BuildLines(fragments, true);
    ASSERT_EQ(merged.size(), 2u);
    EXPECT_EQ(ToUtf8(merged[0].glyphs), "name\tprice\t12");
    ASSERT_EQ(merged[0].tabStops.size(), 2u);
    EXPECT_FLOAT_EQ(merged[0].tabStops[0], 200);
    EXPECT_FLOAT_EQ(merged[0].tabStops[1], 330);
    EXPECT_EQ(BuildLines(fragments, false).size(), 4u);
}

TEST(LayOutPage, ReadsColumnsOneAfterTheOtherOnlyForMultiColumnDocuments)
{
    const PageContent page = TwoColumnPage(10);
    LayoutOptions options;
    options.mergeParagraphs = false;

    options.documentType = 2;
    const std::vector<std::string> columns = BlockTexts(LayOutPage(page, options));
    ASSERT_EQ(columns.size(), 22u);
    EXPECT_EQ(columns[0], "The title crosses both of the columns here and goes on to the right");
    EXPECT_EQ(columns[1], "left words 0 go on");
    EXPECT_EQ(columns[10], "left words 9 go on");
    EXPECT_EQ(columns[11], "right words 0 go on");
    EXPECT_EQ(columns[20], "right words 9 go on");
    EXPECT_EQ(columns[21],
              "A closing line runs across the whole page width from left to right side");

    options.documentType = 1;
    const std::vector<std::string> rows = BlockTexts(LayOutPage(page, options));
    ASSERT_EQ(rows.size(), 12u);
    EXPECT_EQ(rows[1], "left words 0 go on\tright words 0 go on");
}

TEST(LayOutPage, SetsPleadingNumbersAsideAndNoticesDoubleSpacing)
{
    PageContent page;
    for (int n = 1; n <= 12; ++n) {
        const float y = 100 + 24.0f * static_cast<float>(n - 1);
        page.lines.push_back(MakeLine(40, y, std::to_string(n)));
        page.lines.push_back(MakeLine(100, y, "aaaa bbbb cccc dddd eeee ffff gggg"));
    }
    LayoutOptions options;
    options.documentType = 3;
    const PageLayout layout = LayOutPage(page, options);
    EXPECT_EQ(layout.pleadingNumbers.size(), 12u);
    EXPECT_TRUE(layout.doubleSpaced);
    for (const Block& block : layout.blocks)
        EXPECT_EQ(ToUtf8(block.text).find_first_of("0123456789"), std::string::npos);

    options.documentType = 1;
    const PageLayout plain = LayOutPage(page, options);
    EXPECT_TRUE(plain.pleadingNumbers.empty());
    EXPECT_FALSE(plain.doubleSpaced);
}

TEST(LayOutPage, PlacesPicturesAndRotatedTextInReadingOrder)
{
    PageContent page;
    page.lines.push_back(MakeLine(72, 100, "Above the picture"));
    page.lines.push_back(MakeLine(72, 400, "Below the picture"));
    TextLine turned = MakeLine(500, 300, "SIDEWAYS", 20);
    turned.dirX = 0;
    turned.dirY = -1;
    page.lines.push_back(turned);
    Picture picture;
    picture.box = Rect{72, 150, 272, 300};
    page.pictures.push_back(picture);

    LayoutOptions options;
    options.rotatedAsShapes = true;
    const PageLayout layout = LayOutPage(page, options);
    ASSERT_EQ(layout.blocks.size(), 4u);
    EXPECT_EQ(layout.blocks[0].kind, BlockKind::Paragraph);
    EXPECT_EQ(layout.blocks[1].kind, BlockKind::Picture);
    EXPECT_EQ(layout.blocks[2].kind, BlockKind::Rotated);
    EXPECT_FLOAT_EQ(layout.blocks[2].angle, 90);
    EXPECT_EQ(ToUtf8(layout.blocks[3].text), "Below the picture");

    options.rotatedAsShapes = false;
    for (const Block& block : LayOutPage(page, options).blocks)
        EXPECT_NE(block.kind, BlockKind::Rotated);
}

TEST(LayOutPage, MarksHeadingsBySize)
{
    PageContent page;
    page.lines.push_back(MakeLine(72, 80, "Big title", 24));
    page.lines.push_back(MakeLine(72, 120, "Section", 13));
    for (int row = 0; row < 10; ++row)
        page.lines.push_back(
            MakeLine(72, 150 + 12.0f * static_cast<float>(row), "body text of the page"));
    const PageLayout layout = LayOutPage(page, LayoutOptions{});
    ASSERT_GE(layout.blocks.size(), 3u);
    EXPECT_FLOAT_EQ(layout.bodySize, 10);
    EXPECT_EQ(layout.blocks[0].kind, BlockKind::Heading1);
    EXPECT_EQ(layout.blocks[1].kind, BlockKind::Heading2);
    EXPECT_EQ(layout.blocks[2].kind, BlockKind::Paragraph);
}

TEST(RunningHeads, LearnsWhatRepeatsAtTheEdgesOfMostPages)
{
    std::vector<PageContent> pages;
    for (int p = 1; p <= 4; ++p) {
        PageContent page;
        page.lines.push_back(MakeLine(200, 40, "Journal of Studies"));
        page.lines.push_back(
            MakeLine(72, 100, "body line " + std::string(static_cast<std::size_t>(p), 'x')));
        page.lines.push_back(MakeLine(72, 112, "another body line"));
        page.lines.push_back(MakeLine(
            72, 124, "and one more different " + std::string(static_cast<std::size_t>(p), 'y')));
        page.lines.push_back(MakeLine(300, 760, "Page " + std::to_string(p) + " of 4"));
        pages.push_back(page);
    }
    std::vector<std::vector<Line>> lines;
    for (const PageContent& page : pages)
        lines.push_back(PageLines(page));
    const RunningHeads heads = RunningHeads::Learn(lines);
    EXPECT_TRUE(heads.isHeader(lines[0], 0));
    EXPECT_FALSE(heads.isHeader(lines[0], 1));
    EXPECT_TRUE(heads.isFooter(lines[2], lines[2].size() - 1));
    EXPECT_FALSE(heads.isFooter(lines[2], lines[2].size() - 2));

    LayoutOptions options;
    options.runningHeads = &heads;
    const PageLayout layout = LayOutPage(pages[1], options);
    ASSERT_EQ(layout.header.size(), 1u);
    ASSERT_EQ(layout.footer.size(), 1u);
    EXPECT_EQ(ToUtf8(layout.footer[0].glyphs), "Page 2 of 4");
    for (const Block& block : layout.blocks)
        EXPECT_EQ(ToUtf8(block.text).find("Journal"), std::string::npos);

    EXPECT_TRUE(RunningHeads::Learn({lines[0]}).empty());

    // The same number at the foot of every page (a pleading's last line number) is no page
    // number.
    for (std::vector<Line>& page : lines)
        page.back().glyphs = MakeLine(300, 760, "28").glyphs;
    EXPECT_FALSE(RunningHeads::Learn(lines).isFooter(lines[2], lines[2].size() - 1));
}

TEST(RunningPattern, ReadsPageNumbersAndBlanksAlikeButNotOtherWords)
{
    struct Row
    {
        const char* a;
        float sizeA;
        const char* b;
        float sizeB;
        bool alike;
    };
    const std::vector<Row> rows{
        {"Page 12 of 40", 10, "Page  3\tof 7 ", 10, true},
        {"Page 2: A4 portrait", 16, "Page 4: A5 portrait", 16, false},
        {"Chapter One", 10, "Chapter Two", 10, false},
        {"Harbour Authority annual report", 9, "Harbour Authority Annual Report", 9, false},
        {"Annual report", 9, "Annual report", 18, false},
    };
    for (const Row& row : rows) {
        const std::string a = RunningPattern(MakeLine(0, 0, row.a, row.sizeA).glyphs);
        const std::string b = RunningPattern(MakeLine(0, 0, row.b, row.sizeB).glyphs);
        EXPECT_EQ(a == b, row.alike) << row.a << " / " << row.b;
    }
}

TEST(BuildParagraphs, TellsHowTheLinesAreAligned)
{
    struct Row
    {
        const char* name;
        std::vector<TextLine> lines;
        Alignment expected;
    };
    const auto at = [](float x, int row, const std::string& text) {
        return MakeLine(x, 100 + 12.0f * static_cast<float>(row), text);
    };
    const std::vector<Row> rows{
        {"ragged right",
         {at(72, 0, "aaaa bbbb cccc dddd"), at(72, 1, "eeee ffff gggg hh"), at(72, 2, "iiii jjjj")},
         Alignment::Left},
        {"justified",
         {at(72, 0, "aaaa bbbb cccc dddd"), at(72, 1, "eeee ffff gggg hhhh"),
          at(72, 2, "iiii jjjj")},
         Alignment::Justify},
        {"centred",
         {at(72, 0, "aaaa bbbb cccc dddd"), at(84.5f, 1, "eeee ffff gggg"), at(97, 2, "iiii jjjj")},
         Alignment::Centre},
        {"flush right",
         {at(72, 0, "aaaa bbbb cccc dddd"), at(102, 1, "eeee ffff hhh"), at(122, 2, "iiii jjjj")},
         Alignment::Right},
        {"lines of a centred block stay one paragraph",
         {at(72, 0, "aaaa bbbb cccc dddd"), at(84.5f, 1, "eeee ffff gggg"), at(97, 2, "iiii jjjj"),
          at(72, 3, "kkkk llll mmmm nnnn")},
         Alignment::Centre},
    };
    for (const Row& row : rows) {
        // Each row is one paragraph; a wide line below sets the region's edges.
        std::vector<TextLine> lines = row.lines;
        const std::vector<Line> built = BuildLines(FragmentsOf(lines), true);
        std::vector<Block> blocks = BuildParagraphs(built, true, 10);
        ASSERT_FALSE(blocks.empty()) << row.name;
        EXPECT_EQ(blocks.front().alignment, row.expected) << row.name;
    }
}

TEST(LayOutPage, CentresATitleOnTheTextWidth)
{
    PageContent page;
    page.lines.push_back(MakeLine(197, 60, "Centred title"));
    for (int row = 0; row < 10; ++row)
        page.lines.push_back(
            MakeLine(72, 100 + 12.0f * static_cast<float>(row),
                     "a line of body text that runs all the way across the text width"));
    page.lines.push_back(MakeLine(72, 240, "Left"));
    const PageLayout layout = LayOutPage(page, LayoutOptions{});
    ASSERT_GE(layout.blocks.size(), 3u);
    EXPECT_EQ(layout.blocks.front().alignment, Alignment::Centre);
    EXPECT_EQ(layout.blocks.back().alignment, Alignment::Left);
}

// Text in a standard family wraps by that face's own widths, whatever the PDF's advances (every
// letter 5 points wide here); text in another face by the PDF's.
TEST(WrappedLines, MeasuresTheStandardFacesByTheirOwnWidths)
{
    struct Row
    {
        const char* face;
        const char* text;
        float width;
        float firstIndent;
        int lines;
    };
    const std::vector<Row> rows{
        {"Times-Roman", "WWWW WWWW", 60, 0, 2},  // W is nearly an em wide
        {"Minion-Regular", "WWWW WWWW", 60, 0, 1},
        {"Times-Roman", "iiii iiii", 30, 0, 1},  // i is a quarter of one
        {"Times-Roman", "iiii iiii", 30, 10, 2},
        {"Helvetica-Bold", "iiii iiii", 30, 0, 1},
        {"Minion-Regular", "iiii iiii", 30, 0, 2},
        {"Courier", "WWWW WWWW", 50, 0, 2},
    };
    for (const Row& row : rows) {
        const TextWidths widths({FontFace{row.face, false, false, false, true}}, true);
        const TextLine line = MakeLine(0, 100, row.text);
        EXPECT_EQ(WrappedLines(line.glyphs, row.width, 1, &widths, row.firstIndent), row.lines)
            << row.face << " " << row.text << " in " << row.width;
    }
}
