#include "GlyphBuilder.h"

#include "rtf/RtfWriter.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(AppendEscaped, EscapesWhatRtfReservesAndWritesTheRestAsUnicode)
{
    struct Row
    {
        char32_t c;
        std::string expected;
    };
    const std::vector<Row> rows{
        {'a', "a"},
        {'\\', "\\\\"},
        {'{', "\\{"},
        {'}', "\\}"},
        {'\t', "\\tab "},
        {0x01, ""},
        {0xa0, "\\~"},
        {0xad, "\\-"},
        {0xe9, "\\u233\\'e9"},  // the Windows-1252 byte follows for readers without Unicode
        {0x2019, "\\u8217\\'92"},
        {0x65e5, "\\u26085?"},             // 日
        {0xff01, "\\u-255?"},              // past 32767 the number is negative
        {0x1f600, "\\u-10179?\\u-8704?"},  // a surrogate pair
        {0xd800, "\\u-3?"},
    };
    for (const Row& row : rows) {
        std::string out;
        AppendEscaped(out, row.c);
        EXPECT_EQ(out, row.expected) << static_cast<unsigned>(row.c);
    }
    std::string text;
    AppendEscaped(text, std::string("a{\xe6\x97\xa5}"));
    EXPECT_EQ(text, "a\\{\\u26085?\\}");
}

TEST(CharsetFor, GivesTheFontCharsetOfEachScript)
{
    const std::vector<std::pair<char32_t, int>> rows{
        {'A', 0},      {0xe9, 0},     {0x3042, 128}, {0x30a2, 128}, {0x65e5, 128},
        {0xff21, 128}, {0xac00, 129}, {0x0416, 204}, {0x03a9, 161}, {0x05d0, 177},
        {0x0627, 178}, {0x0e01, 222}, {0x0151, 238},
    };
    for (const auto& [c, charset] : rows)
        EXPECT_EQ(CharsetFor(c), charset) << static_cast<unsigned>(c);
}

TEST(RtfWriter, WritesRunsWithFontsSizesColoursAndLinks)
{
    const std::vector<FontFace> faces{{"ABCDEF+Arial-BoldMT"}, {"IPAGothic"}};
    RtfTables tables;
    RtfWriter writer(tables, faces, true);
    std::vector<Glyph> glyphs = enginetest::MakeLine(0, 10, "Go here now", 12).glyphs;
    for (std::size_t i = 3; i < 7; ++i)
        glyphs[i].link = 0;
    for (std::size_t i = 8; i < glyphs.size(); ++i)
        glyphs[i].colour = 0xff0000;
    Glyph sun;
    sun.c = 0x65e5;
    sun.size = 9;
    sun.font = 1;
    glyphs.push_back(sun);
    const std::vector<Link> links{{Rect{}, "https://example.com/a\"b"}};
    writer.text(glyphs, &links);
    const std::string& out = writer.out();

    EXPECT_NE(out.find("{\\field{\\*\\fldinst HYPERLINK \"https://example.com/a\\\"b\"}{\\fldrslt "
                       "{\\f0\\fs24\\b\\ul here}}}"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("{\\f0\\fs24\\b Go }"), std::string::npos) << out;
    EXPECT_NE(out.find("\\cf1 now}"), std::string::npos) << out;
    EXPECT_NE(out.find("{\\f1\\fs18 \\u26085?}"), std::string::npos) << out;
    EXPECT_EQ(tables.fontTable(),
              "{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\fmodern\\fprq1\\fcharset128 "
              "IPAGothic{\\*\\falt Courier New};}}\n");
    EXPECT_EQ(tables.colourTable(), "{\\colortbl;\\red255\\green0\\blue0;}\n");

    RtfTables plainTables;
    RtfWriter plain(plainTables, faces, false);
    plain.text(glyphs, nullptr, 0.5f);
    EXPECT_EQ(plain.out().find("HYPERLINK"), std::string::npos);
    EXPECT_NE(plain.out().find("\\fs12"), std::string::npos);
    EXPECT_NE(plainTables.fontTable().find("ABCDEF+Arial-BoldMT{\\*\\falt Arial};"),
              std::string::npos);
}

TEST(RtfWriter, WritesPicturesAsHexWithTheirSizes)
{
    const std::vector<FontFace> faces;
    RtfTables tables;
    RtfWriter writer(tables, faces, true);
    Picture jpeg;
    jpeg.data = {0xff, 0xd8, 0x00, 0x7f};
    jpeg.pixelWidth = 40;
    jpeg.pixelHeight = 30;
    writer.picture(jpeg, 72, 36);
    EXPECT_EQ(writer.out(),
              "{\\pict\\jpegblip\\picw40\\pich30\\picwgoal1440\\pichgoal720\nffd8007f}");

    writer.out().clear();
    Picture dib = jpeg;
    dib.kind = PictureKind::Dib;
    writer.picture(dib, 10, 10);
    EXPECT_EQ(writer.out().rfind("{\\pict\\dibitmap0", 0), 0u);
}
