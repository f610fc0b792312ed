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

// The 16-bit fields the document or its parser touches, in the parser's reading order (Passwords,
// a text, comes after PasswordSeparator), then LaunchWord, which is written but never read.
#define F(field) std::pair<const char*, qint16 RunState::*>(#field, &RunState::field)
// clang-format off
const std::pair<const char*, qint16 RunState::*> NumberFields[] = {
    F(AdjustFontNames), F(AdjustSpacing), F(ConversionMethod), F(DetectHeader), F(DocumentType),
    F(ExtractHyperlinks), F(ExtractImages), F(ExtractText), F(ImageFormat), F(JpegQuality),
    F(MergeParagraph), F(MergeText), F(PageFrom), F(PageTo), F(PasswordLen), F(PasswordSeparator),
    F(PreserveTextPosition), F(ShrinkFonts), F(UsingPageRange), F(ExtractToBMP), F(ZoomDpi),
    F(WordArt), F(LaunchWord),
};
// clang-format on
#undef F

// Every option field by name, as text.
QMap<QString, QString> OptionFields(const RunState& s)
{
    QMap<QString, QString> fields;
    for (const auto& [name, member] : NumberFields)
        fields.insert(QLatin1String(name), QString::number(s.*member));
    fields.insert(QStringLiteral("Passwords"), s.Passwords);
    return fields;
}

// A record whose option fields all hold a value that no parse gives, so that a field the parse
// leaves alone shows.
RunState Untouched()
{
    RunState s;
    for (const auto& [name, member] : NumberFields)
        s.*member = 77;
    s.Passwords = QStringLiteral("old");
    return s;
}

// A record with 16-bit option fields set from "Name=value" words; the rest keep their zeros.
RunState WithFields(const char* assignments)
{
    QMap<QString, qint16> values;
    for (const QString& word : QString::fromLatin1(assignments).split(u' ', Qt::SkipEmptyParts))
        values.insert(word.section(u'=', 0, 0), static_cast<qint16>(word.section(u'=', 1).toInt()));
    RunState s;
    for (const auto& [name, member] : NumberFields)
        s.*member = values.take(QLatin1String(name));
    EXPECT_TRUE(values.isEmpty()) << "no such field: " << values.firstKey().toStdString();
    return s;
}

// The values of a first start, set by hand rather than through the parser.
RunState FirstStart()
{
    return WithFields("AdjustFontNames=1 AdjustSpacing=1 ConversionMethod=2 DetectHeader=1 "
                      "DocumentType=2 ExtractHyperlinks=1 ExtractImages=1 ExtractText=1 "
                      "JpegQuality=85 MergeParagraph=1 MergeText=1 ZoomDpi=96 "
                      "PreserveTextPosition=1 ShrinkFonts=1 LaunchWord=1");
}

TEST(BuildOptionsDocument, FirstStartMatchesTheGoldenFileByteForByte)
{
    const QString golden = Fixture("first-start.xml");
    ASSERT_EQ(golden.size(), 1250);
    EXPECT_EQ(BuildOptionsDocument(FirstStart()), golden);

    // A first start parses the empty document into the same values.
    RunState parsed;
    ParseOptions(parsed.OptionsDocument, parsed);
    EXPECT_EQ(BuildOptionsDocument(parsed), golden);
}

TEST(BuildOptionsDocument, EditedValuesMatchTheGoldenFile)
{
    // The engine always extracts everything and never opens the result, whatever the Extract
    // fields and LaunchWord hold.
    RunState s = WithFields("ConversionMethod=3 WordArt=1 DocumentType=3 LaunchWord=1 "
                            "ImageFormat=1 JpegQuality=10 PageFrom=4 PageTo=-32768 PasswordLen=10 "
                            "PasswordSeparator=44 ZoomDpi=20 ShrinkFonts=-1 ExtractToBMP=1 "
                            "UsingPageRange=1");
    s.Passwords = QStringLiteral(u"秘密&<x>\"q");
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
        {"007", 7},
        {" 12 ", 12},
        {"\t3\t", 3},
        {"32767", 32767},
        {"-32768", -32768},
        {"000000000000000000000000001", 1},
        {"32768", fails},
        {"-32769", fails},
        {"99999999999999999999", fails},
        {"", fails},
        {"  ", fails},
        {"-", fails},
        {"+-1", fails},
        {"12abc", fails},
        {"1 2", fails},
        {"1.5", fails},
        {"&H10", fails},
        {"0x10", fails},
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
    const char* expected;  // "Name=value" words for fields that differ from a first start's
    const char* untouchedFrom = "LaunchWord";  // this and later fields keep what they held
};

// The fields from `first` to the end of the reading order, and LaunchWord.
QStringList FieldsFrom(const char* first)
{
    QStringList order;
    for (const auto& [name, member] : NumberFields) {
        order << QLatin1String(name);
        if (order.last() == QStringLiteral("PasswordSeparator"))
            order << QStringLiteral("Passwords");
    }
    return order.mid(order.indexOf(QLatin1String(first)));
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
        {"empty document gives every default", "", "Passwords="},
        {"first-start document", firstStart, ""},
        {"edited document: engine-only values never come back", Fixture("edited.xml"),
         "AdjustFontNames=0 AdjustSpacing=0 ConversionMethod=3 DetectHeader=0 WordArt=1 "
         "DocumentType=3 ImageFormat=1 JpegQuality=10 MergeParagraph=0 MergeText=0 "
         "PasswordLen=10 PasswordSeparator=44 Passwords=秘密&<x> PreserveTextPosition=0 "
         "ShrinkFonts=-1"},
        {"ConversionMethod 0 becomes 1", with("ConversionMethod", "0"), "ConversionMethod=1"},
        {"empty ConversionMethod becomes 1", with("ConversionMethod", ""), "ConversionMethod=1"},
        {"DocumentType 0 becomes 1", with("DocumentType", "0"), "DocumentType=1"},
        {"out-of-range values are left", with("ConversionMethod", "7"), "ConversionMethod=7"},
        {"blanks around a number", with("JpegQuality", " 60 "), "JpegQuality=60"},
        {"other flags are not corrected", with("AdjustFontNames", "0"), "AdjustFontNames=0"},
        {"the LaunchWord element is never read", with("LaunchWord", "5"), ""},
        {"bad first value stops at once", with("AdjustFontNames", "abc"), "", "AdjustFontNames"},
        {"out-of-range number stops", with("JpegQuality", "70000"), "", "JpegQuality"},
        {"a password past 32,767 characters stops", longPassword, "", "Passwords"},
        {"bad last value keeps the rest", with("WordArt", "1.0"), "", "WordArt"},
        {"key without a value word behind it stops",
         R"( <bool name = "AdjustFontNames" value = "0" /> <bool name = "AdjustSpacing" />)",
         "AdjustFontNames=0", "AdjustSpacing"},
        {"key without a closing quote behind it stops",
         R"( <bool name = "AdjustFontNames" value = "0" /> <bool name = "AdjustSpacing" value = "1)",
         "AdjustFontNames=0", "AdjustSpacing"},
    };

    // A first-start document holds an empty Passwords value, which reads back as "0".
    QMap<QString, QString> firstStartFields = OptionFields(FirstStart());
    firstStartFields.insert(QStringLiteral("Passwords"), QStringLiteral("0"));
    const QMap<QString, QString> untouchedFields = OptionFields(Untouched());
    for (const ParseRow& row : rows) {
        SCOPED_TRACE(row.name);
        QMap<QString, QString> expected = firstStartFields;
        for (const QString& word : QString::fromUtf8(row.expected).split(u' ', Qt::SkipEmptyParts))
            expected.insert(word.section(u'=', 0, 0), word.section(u'=', 1));
        for (const QString& field : FieldsFrom(row.untouchedFrom))
            expected.insert(field, untouchedFields.value(field));

        RunState state = Untouched();
        state.OptionsDocument = row.document;
        ParseOptions(state.OptionsDocument, state);
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
    ParseOptions(reordered.OptionsDocument, reordered);

    RunState ordered = Untouched();
    ordered.OptionsDocument = Fixture("edited.xml");
    ParseOptions(ordered.OptionsDocument, ordered);

    EXPECT_EQ(OptionFields(reordered), OptionFields(ordered));
    EXPECT_EQ(reordered.ConversionMethod, 3);
    EXPECT_EQ(reordered.JpegQuality, 10);
}

}  // namespace
