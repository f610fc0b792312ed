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

TEST(ResolveFontStyle, GivesEveryFontItsKindAndAFallbackOfTheSameKind)
{
    using velmora::FontKind;
    struct Row
    {
        FontFace face;
        bool adjust;
        FontStyle expected;
    };
    const FontKind R = FontKind::Roman;
    const FontKind S = FontKind::Swiss;
    const FontKind M = FontKind::Modern;
    const std::vector<Row> rows{
        {{"ABCDEF+CMR10"}, true, {"Times New Roman", false, false, R, ""}},
        {{"CMBX12"}, true, {"Times New Roman", true, false, R, ""}},
        {{"CMTI10"}, true, {"Times New Roman", false, true, R, ""}},
        {{"CMTT10"}, true, {"Courier New", false, false, M, ""}},
        {{"CMSLTT10"}, true, {"Courier New", false, true, M, ""}},
        {{"CMSS10"}, true, {"Arial", false, false, S, ""}},
        {{"LMRoman10-Italic"}, true, {"Times New Roman", false, true, R, ""}},
        {{"NimbusRomNo9L-Regu"}, true, {"Times New Roman", false, false, R, ""}},
        {{"NimbusSans-Bold"}, true, {"Arial", true, false, S, ""}},
        {{"NimbusSanL-BoldItal"}, true, {"Arial", true, true, S, ""}},
        {{"NimbusMonoPS-Regular"}, true, {"Courier New", false, false, M, ""}},
        {{"TeXGyrePagella-Regular"},
         true,
         {"Palatino Linotype", false, false, R, "Times New Roman"}},
        {{"LiberationSerif-Bold"}, true, {"Times New Roman", true, false, R, ""}},
        {{"DejaVuSans"}, true, {"DejaVu Sans", false, false, S, "Arial"}},
        // Unknown families take their kind from the font's own flags.
        {{"Minion-Regular", false, false, false, true},
         true,
         {"Minion", false, false, R, "Times New Roman"}},
        {{"Inconsolata", false, false, true, false},
         true,
         {"Inconsolata", false, false, M, "Courier New"}},
        {{"Frutiger"}, true, {"Frutiger", false, false, S, "Arial"}},
        // Off, the name stands but the fallback is still the family it stands for.
        {{"ABCDEF+CMR10"}, false, {"ABCDEF+CMR10", false, false, R, "Times New Roman"}},
    };
    for (const Row& row : rows) {
        const FontStyle style = ResolveFontStyle(row.face, row.adjust);
        EXPECT_EQ(style, row.expected)
            << row.face.name << ": " << style.family << " / " << style.alternative;
    }
}
