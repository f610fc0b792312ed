#include "layout/FontNames.h"

#include <gtest/gtest.h>

using velmora::FontFace;
using velmora::FontStyle;
using velmora::ResolveFontStyle;

TEST(ResolveFontStyle, TurnsPostScriptNamesIntoFamiliesWithWeightAndSlant)
{
    struct Row
    {
        FontFace face;
        bool adjust;
        FontStyle expected;
    };
    const std::vector<Row> rows{
        {{"ABCDEF+TimesNewRomanPS-BoldItalicMT"}, true, {"Times New Roman", true, true}},
        {{"TimesNewRomanPSMT"}, true, {"Times New Roman", false, false}},
        {{"Times-Roman"}, true, {"Times New Roman", false, false}},
        {{"Arial,Bold"}, true, {"Arial", true, false}},
        {{"ArialMT"}, true, {"Arial", false, false}},
        {{"Arial-BoldItalicMT"}, true, {"Arial", true, true}},
        {{"Helvetica-Oblique"}, true, {"Arial", false, true}},
        {{"Helvetica-BoldOblique"}, true, {"Arial", true, true}},
        {{"Courier"}, true, {"Courier New", false, false}},
        {{"Verdana-BoldItalic"}, true, {"Verdana", true, true}},
        {{"ArialBold"}, true, {"Arial", true, false}},
        {{"QWERTY+Calibri-Light"}, true, {"Calibri", false, false}},
        {{"Minion-BdIt"}, true, {"Minion", true, true}},
        {{"Georgia", true, false}, true, {"Georgia", true, false}},
        {{"IPAGothic"}, true, {"IPAGothic", false, false}},
        {{"abcdef+Lowercase"}, true, {"abcdef+Lowercase", false, false}},
        // Off, the PDF's name stands and only the font's own flags count.
        {{"ABCDEF+Helvetica-Bold"}, false, {"ABCDEF+Helvetica-Bold", false, false}},
        {{"ABCDEF+Helvetica-Bold", true, true}, false, {"ABCDEF+Helvetica-Bold", true, true}},
    };
    for (const Row& row : rows) {
        const FontStyle style = ResolveFontStyle(row.face, row.adjust);
        EXPECT_EQ(style.family, row.expected.family) << row.face.name;
        EXPECT_EQ(style.bold, row.expected.bold) << row.face.name;
        EXPECT_EQ(style.italic, row.expected.italic) << row.face.name;
    }
}
