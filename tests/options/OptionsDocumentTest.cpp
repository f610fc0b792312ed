// The options document: the golden files are the text the engine reads; ReadOptionValue finds a
// value as the engine does; ParseOptions fills the dialogs' fields in its reading order and
// stops at the first value that fails.

#include "options/OptionsDocument.h"

#include "TestPaths.h"

#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <optional>

namespace {

QString Fixture(const char* name)
{
    QFile file(QStringLiteral(VELMORA_FIXTURES_DIR "/options/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("<missing fixture %1>").arg(QLatin1String(name));
    return QString::fromUtf8(file.readAll());
}

// The number fields in the parser's reading order; the text Passwords follows PasswordSeparator.
#define F(field) std::pair<const char*, qint16 OptionValues::*>(#field, &OptionValues::field)
// clang-format off
const std::pair<const char*, qint16 OptionValues::*> NumberFields[] = {
    F(AdjustFontNames), F(AdjustSpacing), F(ConversionMethod), F(DetectHeader), F(DocumentType),
    F(ExtractHyperlinks), F(ExtractImages), F(ExtractText), F(ImageFormat), F(JpegQuality),
    F(MergeParagraph), F(MergeText), F(PageFrom), F(PageTo), F(PasswordLen), F(PasswordSeparator),
    F(PreserveTextPosition), F(ShrinkFonts), F(UsingPageRange), F(ExtractToBMP), F(ZoomDpi),
    F(WordArt),
};
// clang-format on
#undef F

// Every field as "Name=value", in the reading order.
QStringList Described(const OptionValues& values)
{
    QStringList fields;
    for (const auto& [name, member] : NumberFields) {
        fields << QLatin1String(name) + u'=' + QString::number(values.*member);
        if (fields.last().startsWith(QStringLiteral("PasswordSeparator=")))
            fields << QStringLiteral("Passwords=") + values.Passwords;
    }
    return fields;
}

TEST(BuildOptionsDocument, WritesTheGoldenFilesByteForByte)
{
    const QString golden = Fixture("first-start.xml");
    ASSERT_EQ(golden.size(), 1250);
    EXPECT_EQ(BuildOptionsDocument(FirstStartValues()), golden);
    // The empty document of a first start reads as its values, both as the dialogs and as the
    // engine read it.
    OptionValues parsed;
    ParseOptions(QString(), parsed);
    EXPECT_EQ(BuildOptionsDocument(parsed), golden);
    EXPECT_EQ(BuildOptionsDocument(ReadOptionValues(QString())), golden);

    // The engine reads every element on its own, the password up to its quote; written back,
    // those values give the edited file again, with everything extracted whatever the fields say.
    OptionValues edited = ReadOptionValues(Fixture("edited.xml"));
    EXPECT_EQ(edited.Passwords, QStringLiteral(u"秘密&<x>"));
    EXPECT_EQ(edited.PageTo, -32768);
    edited.Passwords += QStringLiteral("\"q");
    edited.ExtractText = 0;
    EXPECT_EQ(BuildOptionsDocument(edited), Fixture("edited.xml"));
}

TEST(ReadOptionValue, FindsValuesAsTheEngineDoes)
{
    const std::optional<QString> fails;
    const std::tuple<QString, std::optional<QString>> rows[] = {
        // the document, what "K" reads as, "9" by default
        {R"(<a NAME = "k" VALUE = "5" />)", QStringLiteral("5")},
        {R"(<a name = "J" value = "5" />)", QStringLiteral("9")},
        {QString(), QStringLiteral("9")},
        {R"(<a name = "K" value = "" />)", QStringLiteral("0")},  // not the default
        {R"("K" value = "5")", QStringLiteral("9")},              // a hit at the first character
        {R"(<a name = K value = "5" />)", QStringLiteral("9")},
        {R"(<a name = "KX" value = "5" />)", QStringLiteral("9")},
        {R"(<a name = "K" value = "1" /><a name = "K" value = "2" />)", QStringLiteral("1")},
        {R"(<a name = "K" value = " 1 2" />)", QStringLiteral(" 1 2")},
        {R"(<a name = "K" value = "ab"cd" />)", QStringLiteral("ab")},
        {R"(<a name = "K" /><b name = "L" value = "3" />)", QStringLiteral("3")},
        {R"(<a name = "K" v = "5" />)", fails},
        {R"(<a name = "K" value = 5 />)", fails},
        {R"(<a name = "K" value = "5 />)", fails},
    };
    for (const auto& [document, expected] : rows)
        EXPECT_EQ(ReadOptionValue(document, QStringLiteral("K"), QStringLiteral("9")), expected)
            << document.toStdString();
    // Positions are one-based, as the engine counts them: the key's opening quote, the value
    // word, and the value's two quotes must each lie within the first 32,767 characters.
    const std::tuple<qsizetype, qsizetype, qsizetype, qsizetype, bool> positions[] = {
        {2, 5, 10, 32767, true},
        {2, 5, 10, 32768, false},
        {2, 32768, 32773, 32775, false},
        {32768, 32771, 32776, 32778, false},
    };
    for (const auto& [key, word, opening, closing, readable] : positions) {
        const QString document = QString(key - 1, u'x') + QStringLiteral("\"K\"") +
                                 QString(word - key - 3, u' ') + QStringLiteral("value") +
                                 QString(opening - word - 5, u' ') + u'"' +
                                 QString(closing - opening - 1, u'v') + u'"';
        EXPECT_EQ(ReadOptionValue(document, QStringLiteral("K"), QStringLiteral("9")),
                  readable ? std::optional(QString(closing - opening - 1, u'v')) : std::nullopt)
            << key << " " << word << " " << opening << " " << closing;
    }
}

TEST(ParseOptions, FillsTheFieldsInReadingOrderAndStopsAtTheFirstBadValue)
{
    const QString firstStart = Fixture("first-start.xml");
    const auto with = [&firstStart](const char* key, const QString& value) {
        const QString needle = QStringLiteral("name = \"%1\" value = \"").arg(QLatin1String(key));
        const qsizetype start = firstStart.indexOf(needle) + needle.size();
        return QString(firstStart).replace(start, firstStart.indexOf(u'"', start) - start, value);
    };
    struct Row
    {
        const char* name;
        QString document;
        QString changed;  // "Name=value" words for the fields that differ from a first start's
        const char* stopsAt = nullptr;  // this field and those behind it keep what they held
    };
    const Row rows[] = {
        {"empty document gives every default", QString(), "Passwords="},
        {"first-start document", firstStart, ""},
        {"edited document: engine-only values never come back", Fixture("edited.xml"),
         "AdjustFontNames=0 AdjustSpacing=0 ConversionMethod=3 DetectHeader=0 WordArt=1 "
         "DocumentType=3 ImageFormat=1 JpegQuality=10 MergeParagraph=0 MergeText=0 "
         "PasswordLen=10 PasswordSeparator=44 Passwords=秘密&<x> PreserveTextPosition=0 "
         "ShrinkFonts=-1"},
        {"ConversionMethod 0 becomes 1", with("ConversionMethod", "0"), "ConversionMethod=1"},
        {"an empty DocumentType becomes 1", with("DocumentType", ""), "DocumentType=1"},
        {"out-of-range values are left", with("ConversionMethod", "7"), "ConversionMethod=7"},
        {"blanks around a number", with("JpegQuality", " \t-32768\t "), "JpegQuality=-32768"},
        {"a number past 16 bits stops", with("JpegQuality", "0032768"), "", "JpegQuality"},
        {"no whole decimal number stops", with("JpegQuality", "1.5"), "", "JpegQuality"},
        {"a password past 32,767 characters stops", with("Passwords", QString(40000, u'p')), "",
         "Passwords"},
        {"a key without a value word behind it stops",
         R"( <bool name = "AdjustFontNames" value = "0" /> <bool name = "AdjustSpacing" />)",
         "AdjustFontNames=0", "AdjustSpacing"},
    };
    // A first-start document holds an empty password, which reads back as "0".
    OptionValues firstStartRead = FirstStartValues();
    firstStartRead.Passwords = QStringLiteral("0");
    OptionValues untouched;
    for (const auto& [name, member] : NumberFields)
        untouched.*member = 77;
    untouched.Passwords = QStringLiteral("old");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QStringList expected = Described(firstStartRead);
        for (const QString& word : row.changed.split(u' ', Qt::SkipEmptyParts))
            expected[expected.indexOf(QRegularExpression(word.section(u'=', 0, 0) + "=.*"))] = word;
        const qsizetype stop =
            row.stopsAt ? expected.indexOf(QRegularExpression(QLatin1String(row.stopsAt) + "=.*"))
                        : expected.size();
        ASSERT_GE(stop, 0);
        for (qsizetype i = stop; i < expected.size(); ++i)
            expected[i] = Described(untouched).at(i);

        OptionValues values = untouched;
        ParseOptions(row.document, values);
        EXPECT_EQ(Described(values), expected);
    }
}

}  // namespace
