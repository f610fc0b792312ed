#include "options/OptionsDocument.h"
#include "run/RunState.h"

#include "TestPaths.h"

#include <QFile>
#include <QMap>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

namespace {

QString Fixture(const char* name)
{
    QFile file(QStringLiteral(VELMORA_FIXTURES_DIR "/options/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("<missing fixture %1>").arg(QLatin1String(name));
    return QString::fromUtf8(file.readAll());
}

// Every field that the document or its parser touches, by name, as text.
QMap<QString, QString> OptionFields(const RunState& s)
{
    QMap<QString, QString> fields;
    const auto put = [&fields](const char* name, qint16 value) {
        fields.insert(QLatin1String(name), QString::number(value));
    };
    put("AdjustFontNames", s.AdjustFontNames);
    put("AdjustSpacing", s.AdjustSpacing);
    put("ConversionMethod", s.ConversionMethod);
    put("DetectHeader", s.DetectHeader);
    put("DocumentType", s.DocumentType);
    put("ExtractHyperlinks", s.ExtractHyperlinks);
    put("ExtractImages", s.ExtractImages);
    put("ExtractText", s.ExtractText);
    put("ImageFormat", s.ImageFormat);
    put("JpegQuality", s.JpegQuality);
    put("MergeParagraph", s.MergeParagraph);
    put("MergeText", s.MergeText);
    put("PageFrom", s.PageFrom);
    put("PageTo", s.PageTo);
    put("PasswordLen", s.PasswordLen);
    put("PasswordSeparator", s.PasswordSeparator);
    fields.insert(QStringLiteral("Passwords"), s.Passwords);
    put("PreserveTextPosition", s.PreserveTextPosition);
    put("ShrinkFonts", s.ShrinkFonts);
    put("UsingPageRange", s.UsingPageRange);
    put("ExtractToBMP", s.ExtractToBMP);
    put("ZoomDpi", s.ZoomDpi);
    put("WordArt", s.WordArt);
    put("LaunchWord", s.LaunchWord);
    return fields;
}

// A record whose option fields all hold a value that no parse gives, so that a field the parse
// leaves alone shows.
RunState Untouched()
{
    RunState s;
    for (qint16* field : {&s.AdjustFontNames,
                          &s.AdjustSpacing,
                          &s.ConversionMethod,
                          &s.DetectHeader,
                          &s.DocumentType,
                          &s.ExtractHyperlinks,
                          &s.ExtractImages,
                          &s.ExtractText,
                          &s.ImageFormat,
                          &s.JpegQuality,
                          &s.MergeParagraph,
                          &s.MergeText,
                          &s.PageFrom,
                          &s.PageTo,
                          &s.PasswordLen,
                          &s.PasswordSeparator,
                          &s.PreserveTextPosition,
                          &s.ShrinkFonts,
                          &s.UsingPageRange,
                          &s.ExtractToBMP,
                          &s.ZoomDpi,
                          &s.WordArt,
                          &s.LaunchWord})
        *field = 77;
    s.Passwords = QStringLiteral("old");
    return s;
}

// The values of a first start, set by hand rather than through the parser.
RunState FirstStart()
{
    RunState s;
    s.AdjustFontNames = 1;
    s.AdjustSpacing = 1;
    s.ConversionMethod = 2;
    s.DetectHeader = 1;
    s.WordArt = 0;
    s.DocumentType = 2;
    s.ExtractHyperlinks = 1;
    s.ExtractImages = 1;
    s.ExtractText = 1;
    s.JpegQuality = 85;
    s.MergeParagraph = 1;
    s.MergeText = 1;
    s.ZoomDpi = 96;
    s.PreserveTextPosition = 1;
    s.ShrinkFonts = 1;
    s.LaunchWord = 1;
    s.PreviewThumb = 1;
    s.DocumentFormat = 1;
    return s;
}

TEST(BuildOptionsDocument, FirstStartMatchesTheGoldenFileByteForByte)
{
    const QString golden = Fixture("first-start.xml");
    ASSERT_EQ(golden.size(), 1250);
    EXPECT_EQ(BuildOptionsDocument(FirstStart()), golden);

    // A first start parses the empty document into the same values.
    RunState parsed;
    ParseOptions(parsed);
    EXPECT_EQ(BuildOptionsDocument(parsed), golden);
}

TEST(BuildOptionsDocument, EditedValuesMatchTheGoldenFile)
{
    RunState s;
    s.AdjustFontNames = 0;
    s.AdjustSpacing = 0;
    s.ConversionMethod = 3;
    s.DetectHeader = 0;
    s.WordArt = 1;
    s.DocumentType = 3;
    // The engine always extracts everything and never opens the result, whatever these hold.
    s.ExtractHyperlinks = 0;
    s.ExtractImages = 0;
    s.ExtractText = 0;
    s.LaunchWord = 1;
    s.ImageFormat = 1;
    s.JpegQuality = 10;
    s.MergeParagraph = 0;
    s.MergeText = 0;
    s.PageFrom = 4;
    s.PageTo = -32768;
    s.PasswordLen = 10;
    s.PasswordSeparator = 44;
    s.Passwords = QStringLiteral(u"秘密&<x>\"q");
    s.ZoomDpi = 20;
    s.PreserveTextPosition = 0;
    s.ShrinkFonts = -1;
    s.ExtractToBMP = 1;
    s.UsingPageRange = 1;
    EXPECT_EQ(BuildOptionsDocument(s), Fixture("edited.xml"));
}

struct ReadRow
{
    const char* name;
    QString document;
    QString key;
    QString defaultValue;
    std::optional<QString> expected;
};

TEST(ReadOptionValue, FindsValuesAsTheEngineDoes)
{
    const std::optional<QString> fails;
    const QString padding(40000, u'x');
    const QString document = Fixture("first-start.xml");
    const ReadRow rows[] = {
        {"numeric element", document, "JpegQuality", "9", QStringLiteral("85")},
        {"bool element", document, "AdjustFontNames", "9", QStringLiteral("1")},
        {"missing key gives the default", document, "Nothing", "9", QStringLiteral("9")},
        {"empty document gives the default", "", "JpegQuality", "85", QStringLiteral("85")},
        {"empty value gives 0, not the default", document, "Passwords", "x", QStringLiteral("0")},
        {"key case ignored", document, "jpegQUALITY", "9", QStringLiteral("85")},
        {"value word case ignored", R"(<a NAME = "K" VALUE = "5" />)", "k", "9",
         QStringLiteral("5")},
        {"hit at the first character counts as missing", R"("K" value = "5")", "K", "9",
         QStringLiteral("9")},
        {"hit at the second character is found", R"( "K" value = "5")", "K", "9",
         QStringLiteral("5")},
        {"key must stand in quotes", R"(<a name = K value = "5" />)", "K", "9",
         QStringLiteral("9")},
        {"a longer key is not a hit", R"(<a name = "KX" value = "5" />)", "K", "9",
         QStringLiteral("9")},
        {"first of two elements", R"(<a name = "K" value = "1" /><a name = "K" value = "2" />)",
         "K", "9", QStringLiteral("1")},
        {"value taken unchanged", R"(<a name = "K" value = " 1 2 " />)", "K", "9",
         QStringLiteral(" 1 2 ")},
        {"a quote ends the value", R"(<a name = "K" value = "ab"cd" />)", "K", "9",
         QStringLiteral("ab")},
        {"value word of a later element", R"(<a name = "K" /><b name = "L" value = "3" />)", "K",
         "9", QStringLiteral("3")},
        {"no value word fails", R"(<a name = "K" v = "5" />)", "K", "9", fails},
        {"no quote after the value word fails", R"(<a name = "K" value = 5 />)", "K", "9", fails},
        {"no closing quote fails", R"(<a name = "K" value = "5 />)", "K", "9", fails},
        {"missing key in a long document gives the default", padding, "K", "9",
         QStringLiteral("9")},
        {"non-ASCII value", QStringLiteral(u"<s name = \"P\" value = \"秘密\" />"), "P", "",
         QStringLiteral(u"秘密")},
    };
    for (const ReadRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(ReadOptionValue(row.document, row.key, row.defaultValue), row.expected);
    }
}

// Positions are one-based, as the engine counts them: the key's opening quote, the value
// word, and the value's two quotes. Each must lie within the first 32,767 characters.
struct PositionRow
{
    qsizetype key;
    qsizetype word;
    qsizetype opening;
    qsizetype closing;
    bool readable;
};

QString DocumentWithPositions(const PositionRow& row)
{
    QString document(row.key - 1, u'x');
    document += QStringLiteral("\"K\"");
    document += QString(row.word - row.key - 3, u' ') + QStringLiteral("value");
    document += QString(row.opening - row.word - 5, u' ') + QStringLiteral("\"");
    document += QString(row.closing - row.opening - 1, u'v') + QStringLiteral("\"");
    return document;
}

TEST(ReadOptionValue, FailsWhenAPositionPassesSixteenBits)
{
    const PositionRow rows[] = {
        {2, 5, 10, 32767, true},
        {2, 5, 10, 32768, false},
        {2, 5, 32766, 32767, true},
        {2, 5, 32767, 32768, false},
        {2, 32762, 32767, 32768, false},
        {2, 32768, 32773, 32775, false},
        {32750, 32753, 32760, 32767, true},
        {32767, 32770, 32775, 32777, false},
        {32768, 32771, 32776, 32778, false},
    };
    for (const PositionRow& row : rows) {
        const QString document = DocumentWithPositions(row);
        SCOPED_TRACE(testing::Message() << "key " << row.key << " word " << row.word << " quotes "
                                        << row.opening << "," << row.closing);
        ASSERT_EQ(document.indexOf(u'"') + 1, row.key);
        ASSERT_EQ(document.indexOf(QStringLiteral("value")) + 1, row.word);
        ASSERT_EQ(document.size(), row.closing);
        const std::optional<QString> value = ReadOptionValue(document, "K", "9");
        if (row.readable) {
            const QString expected(row.closing - row.opening - 1, u'v');
            EXPECT_EQ(value, expected.isEmpty() ? QStringLiteral("0") : expected);
        } else {
            EXPECT_EQ(value, std::nullopt);
        }
    }
}

TEST(ToInt16, AcceptsWholeDecimalNumbersWithinSixteenBits)
{
    const std::optional<qint16> fails;
    const std::pair<QString, std::optional<qint16>> rows[] = {
        {"0", 0},
        {"85", 85},
        {"-1", -1},
        {"+7", 7},
        {"-0", 0},
        {"007", 7},
        {" 12 ", 12},
        {"\t3\t", 3},
        {"32767", 32767},
        {"-32768", -32768},
        {"000000000000000000000000001", 1},
        {"32768", fails},
        {"-32769", fails},
        {"70000", fails},
        {"99999999999999999999", fails},
        {"", fails},
        {"  ", fails},
        {"-", fails},
        {"+-1", fails},
        {"abc", fails},
        {"12abc", fails},
        {"1 2", fails},
        {"1.5", fails},
        {"1e2", fails},
        {"&H10", fails},
        {"0x10", fails},
        {"1,000", fails},
        {QStringLiteral(u"١٢"), fails},
        {"\n5", fails},
    };
    for (const auto& [text, expected] : rows) {
        SCOPED_TRACE(text.toStdString());
        EXPECT_EQ(ToInt16(text), expected);
    }
}

struct ParseRow
{
    const char* name;
    QString document;
    QMap<QString, QString> expected;  // fields that differ from a first start's
    QStringList untouched;            // fields the parse must leave as they were
};

// The fields from `first` to the end of the reading order, and LaunchWord, which is never read.
QStringList FieldsFrom(const char* first)
{
    static const QStringList order = {"AdjustFontNames",   "AdjustSpacing",  "ConversionMethod",
                                      "DetectHeader",      "DocumentType",   "ExtractHyperlinks",
                                      "ExtractImages",     "ExtractText",    "ImageFormat",
                                      "JpegQuality",       "MergeParagraph", "MergeText",
                                      "PageFrom",          "PageTo",         "PasswordLen",
                                      "PasswordSeparator", "Passwords",      "PreserveTextPosition",
                                      "ShrinkFonts",       "UsingPageRange", "ExtractToBMP",
                                      "ZoomDpi",           "WordArt"};
    return order.mid(order.indexOf(QLatin1String(first))) << QStringLiteral("LaunchWord");
}

TEST(ParseOptions, FillsTheFieldsInTableOrderAndStopsAtTheFirstBadValue)
{
    const QString firstStart = Fixture("first-start.xml");
    const auto with = [&firstStart](const char* key, const char* value) {
        QString document = firstStart;
        const QString needle = QStringLiteral("name = \"%1\" value = \"").arg(QLatin1String(key));
        const qsizetype start = document.indexOf(needle) + needle.size();
        const qsizetype end = document.indexOf(u'"', start);
        return document.replace(start, end - start, QLatin1String(value));
    };
    const QString longPassword =
        with("Passwords", "")
            .replace(QStringLiteral("\"Passwords\" value = \"\""),
                     QStringLiteral("\"Passwords\" value = \"%1\"").arg(QString(40000, u'p')));

    const ParseRow rows[] = {
        {"empty document gives every default", "", {{"Passwords", ""}}, {"LaunchWord"}},
        {"first-start document", firstStart, {}, {"LaunchWord"}},
        {"edited document: engine-only values never come back",
         Fixture("edited.xml"),
         {{"AdjustFontNames", "0"},
          {"AdjustSpacing", "0"},
          {"ConversionMethod", "3"},
          {"DetectHeader", "0"},
          {"WordArt", "1"},
          {"DocumentType", "3"},
          {"ImageFormat", "1"},
          {"JpegQuality", "10"},
          {"MergeParagraph", "0"},
          {"MergeText", "0"},
          {"PasswordLen", "10"},
          {"PasswordSeparator", "44"},
          {"Passwords", QStringLiteral(u"秘密&<x>")},
          {"PreserveTextPosition", "0"},
          {"ShrinkFonts", "-1"}},
         {"LaunchWord"}},
        {"ConversionMethod 0 becomes 1",
         with("ConversionMethod", "0"),
         {{"ConversionMethod", "1"}},
         {"LaunchWord"}},
        {"empty ConversionMethod becomes 1",
         with("ConversionMethod", ""),
         {{"ConversionMethod", "1"}},
         {"LaunchWord"}},
        {"DocumentType 0 becomes 1",
         with("DocumentType", "0"),
         {{"DocumentType", "1"}},
         {"LaunchWord"}},
        {"out-of-range values are left for the dialogs",
         with("ConversionMethod", "7"),
         {{"ConversionMethod", "7"}},
         {"LaunchWord"}},
        {"blanks around a number",
         with("JpegQuality", " 60 "),
         {{"JpegQuality", "60"}},
         {"LaunchWord"}},
        {"other flags are not corrected",
         with("AdjustFontNames", "0"),
         {{"AdjustFontNames", "0"}},
         {"LaunchWord"}},
        {"the LaunchWord element is never read", with("LaunchWord", "5"), {}, {"LaunchWord"}},
        {"bad first value stops at once",
         with("AdjustFontNames", "abc"),
         {},
         FieldsFrom("AdjustFontNames")},
        {"out-of-range number stops", with("JpegQuality", "70000"), {}, FieldsFrom("JpegQuality")},
        {"bad PasswordLen stops after the page fields were set",
         with("PasswordLen", "x"),
         {},
         FieldsFrom("PasswordLen")},
        {"a password past 32,767 characters stops at Passwords",
         longPassword,
         {},
         FieldsFrom("Passwords")},
        {"bad last value keeps the rest", with("WordArt", "1.0"), {}, FieldsFrom("WordArt")},
        {"key without a value word behind it stops",
         R"( <bool name = "AdjustFontNames" value = "0" /> <bool name = "AdjustSpacing" />)",
         {{"AdjustFontNames", "0"}},
         FieldsFrom("AdjustSpacing")},
        {"key without a closing quote behind it stops",
         R"( <bool name = "AdjustFontNames" value = "0" /> <bool name = "AdjustSpacing" value = "1)",
         {{"AdjustFontNames", "0"}},
         FieldsFrom("AdjustSpacing")},
    };

    // A first-start document holds an empty Passwords value, which reads back as "0".
    QMap<QString, QString> firstStartFields = OptionFields(FirstStart());
    firstStartFields.insert(QStringLiteral("Passwords"), QStringLiteral("0"));
    const QMap<QString, QString> untouchedFields = OptionFields(Untouched());
    for (const ParseRow& row : rows) {
        SCOPED_TRACE(row.name);
        QMap<QString, QString> expected = firstStartFields;
        for (auto it = row.expected.cbegin(); it != row.expected.cend(); ++it)
            expected.insert(it.key(), it.value());
        for (const QString& field : row.untouched)
            expected.insert(field, untouchedFields.value(field));

        RunState state = Untouched();
        state.OptionsDocument = row.document;
        ParseOptions(state);
        EXPECT_EQ(OptionFields(state), expected);
        EXPECT_EQ(state.OptionsDocument, row.document);
    }
}

TEST(ParseOptions, KeysAreFoundWhateverTheirOrderAndCase)
{
    // The first start's lines in reverse order, every key in lower case, and two values
    // changed so that the read can't pass by luck.
    QStringList lines = Fixture("edited.xml").split(QStringLiteral("\r\n"));
    std::reverse(lines.begin(), lines.end());
    QString document;
    for (const QString& line : lines) {
        const qsizetype start = line.indexOf(QStringLiteral("name = \"")) + 8;
        const qsizetype end = line.indexOf(u'"', start);
        document += start < 8 ? line
                              : QString(line).replace(start, end - start,
                                                      line.mid(start, end - start).toLower());
        document += QStringLiteral("\r\n");
    }
    RunState reordered = Untouched();
    reordered.OptionsDocument = document;
    ParseOptions(reordered);

    RunState ordered = Untouched();
    ordered.OptionsDocument = Fixture("edited.xml");
    ParseOptions(ordered);

    EXPECT_EQ(OptionFields(reordered), OptionFields(ordered));
    EXPECT_EQ(reordered.ConversionMethod, 3);
    EXPECT_EQ(reordered.JpegQuality, 10);
}

}  // namespace
