#include "options/OptionsDocument.h"

#include <array>
#include <limits>

namespace {

// The engine reads positions in the document as 16-bit numbers; a one-based position past
// this one cannot be held and makes the read fail.
constexpr qsizetype LastReadablePosition = std::numeric_limits<qint16>::max();

const QString Head = QStringLiteral("<?XML version = \"1.0\" encoding = \"ISO-8859-1\"?>"
                                    "<conversion><product name = \"Vorek\"/><options>");
const QString Tail = QStringLiteral("</options></conversion>");
const QString LineEnd = QStringLiteral("\r\n");
const QString Quote = QStringLiteral("\"");

enum class Kind { Bool, Numeric, Text };

// One element of the document, in the order the document holds them: its key, its kind, the
// field that holds it, and the value of a first start. An element with a fixed value is written
// with it whatever the field holds.
struct Element final
{
    const char* key = nullptr;
    Kind kind = Kind::Bool;
    qint16 OptionValues::*field = nullptr;  // null for the text
    qint16 firstStart = 0;
    std::optional<qint16> fixedValue;
};

const std::array<Element, 24> Elements = {{
    {"AdjustFontNames", Kind::Bool, &OptionValues::AdjustFontNames, 1, {}},
    {"AdjustSpacing", Kind::Bool, &OptionValues::AdjustSpacing, 1, {}},
    {"ConversionMethod", Kind::Numeric, &OptionValues::ConversionMethod, 2, {}},
    {"DetectHeader", Kind::Bool, &OptionValues::DetectHeader, 1, {}},
    {"WordArt", Kind::Bool, &OptionValues::WordArt, 0, {}},
    {"DocumentType", Kind::Numeric, &OptionValues::DocumentType, 2, {}},
    {"ExtractHyperlinks", Kind::Bool, &OptionValues::ExtractHyperlinks, 1, 1},
    {"ExtractImages", Kind::Bool, &OptionValues::ExtractImages, 1, 1},
    {"ExtractText", Kind::Bool, &OptionValues::ExtractText, 1, 1},
    {"ImageFormat", Kind::Numeric, &OptionValues::ImageFormat, 0, {}},
    {"JpegQuality", Kind::Numeric, &OptionValues::JpegQuality, 85, {}},
    {"MergeParagraph", Kind::Bool, &OptionValues::MergeParagraph, 1, {}},
    {"MergeText", Kind::Bool, &OptionValues::MergeText, 1, {}},
    {"PageFrom", Kind::Numeric, &OptionValues::PageFrom, 0, {}},
    {"PageTo", Kind::Numeric, &OptionValues::PageTo, 0, {}},
    {"PasswordLen", Kind::Numeric, &OptionValues::PasswordLen, 0, {}},
    {"PasswordSeparator", Kind::Numeric, &OptionValues::PasswordSeparator, 0, {}},
    {"Passwords", Kind::Text, nullptr, 0, {}},
    {"ZoomDpi", Kind::Numeric, &OptionValues::ZoomDpi, 96, {}},
    {"PreserveTextPosition", Kind::Bool, &OptionValues::PreserveTextPosition, 1, {}},
    {"ShrinkFonts", Kind::Bool, &OptionValues::ShrinkFonts, 1, {}},
    // Opening the result is the front end's work; the engine must never do it itself.
    {"LaunchWord", Kind::Bool, nullptr, 0, 0},
    {"ExtractToBMP", Kind::Bool, &OptionValues::ExtractToBMP, 0, {}},
    {"UsingPageRange", Kind::Bool, &OptionValues::UsingPageRange, 0, {}},
}};

QString KindName(Kind kind)
{
    switch (kind) {
    case Kind::Bool:
        return QStringLiteral("bool");
    case Kind::Numeric:
        return QStringLiteral("numeric");
    case Kind::Text:
        break;
    }
    return QStringLiteral("string");
}

// One row of the reading table: either a key read into a field (with its default and whether
// 0 turns into 1), the text read, or a field that is set without reading.
struct ParseStep final
{
    const char* key;  // null for a field that is only set
    const char* defaultValue;
    qint16 OptionValues::*field;
    qint16 fixedValue;
    bool zeroBecomesOne;
    bool isText;
};

constexpr ParseStep Read(const char* key, const char* defaultValue, qint16 OptionValues::*field,
                         bool zeroBecomesOne = false)
{
    return {key, defaultValue, field, 0, zeroBecomesOne, false};
}

constexpr ParseStep Set(qint16 OptionValues::*field, qint16 value)
{
    return {nullptr, nullptr, field, value, false, false};
}

constexpr ParseStep ReadText(const char* key, const char* defaultValue)
{
    return {key, defaultValue, nullptr, 0, false, true};
}

// The reading order matters: a bad value ends the parse, and every field behind it keeps
// what it held.
constexpr std::array ParseSteps = {
    Read("AdjustFontNames", "1", &OptionValues::AdjustFontNames),
    Read("AdjustSpacing", "1", &OptionValues::AdjustSpacing),
    Read("ConversionMethod", "2", &OptionValues::ConversionMethod, true),
    Read("DetectHeader", "1", &OptionValues::DetectHeader),
    Read("DocumentType", "2", &OptionValues::DocumentType, true),
    Set(&OptionValues::ExtractHyperlinks, 1),
    Set(&OptionValues::ExtractImages, 1),
    Set(&OptionValues::ExtractText, 1),
    Read("ImageFormat", "0", &OptionValues::ImageFormat),
    Read("JpegQuality", "85", &OptionValues::JpegQuality),
    Read("MergeParagraph", "1", &OptionValues::MergeParagraph),
    Read("MergeText", "1", &OptionValues::MergeText),
    Set(&OptionValues::PageFrom, 0),
    Set(&OptionValues::PageTo, 0),
    Read("PasswordLen", "0", &OptionValues::PasswordLen),
    Read("PasswordSeparator", "0", &OptionValues::PasswordSeparator),
    ReadText("Passwords", ""),
    Read("PreserveTextPosition", "1", &OptionValues::PreserveTextPosition),
    Read("ShrinkFonts", "1", &OptionValues::ShrinkFonts),
    Set(&OptionValues::UsingPageRange, 0),
    Set(&OptionValues::ExtractToBMP, 0),
    Set(&OptionValues::ZoomDpi, 96),
    Read("WordArt", "0", &OptionValues::WordArt),
};

bool IsBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

}  // namespace

QString BuildOptionsDocument(const OptionValues& values)
{
    QString document = Head + LineEnd;
    for (const Element& element : Elements) {
        QString value;
        if (element.kind == Kind::Text)
            value = values.Passwords;
        else if (element.fixedValue)
            value = QString::number(*element.fixedValue);
        else
            value = QString::number(values.*element.field);
        document += QStringLiteral("  <") + KindName(element.kind) + QStringLiteral(" name = \"") +
                    QLatin1String(element.key) + QStringLiteral("\" value = \"") + value +
                    QStringLiteral("\" />") + LineEnd;
    }
    document += Tail;
    return document;
}

OptionValues FirstStartValues()
{
    OptionValues values;
    for (const Element& element : Elements) {
        if (element.field)
            values.*element.field = element.firstStart;
    }
    return values;
}

OptionValues ReadOptionValues(const QString& document)
{
    OptionValues values = FirstStartValues();
    for (const Element& element : Elements) {
        const QString key = QLatin1String(element.key);
        if (element.kind == Kind::Text) {
            values.Passwords = ReadOptionValue(document, key, QString()).value_or(QString());
            continue;
        }
        if (!element.field)
            continue;
        const std::optional<QString> text =
            ReadOptionValue(document, key, QString::number(element.firstStart));
        if (const std::optional<qint16> number = text ? ToInt16(*text) : std::nullopt)
            values.*element.field = *number;
    }
    return values;
}

std::optional<QString> ReadOptionValue(const QString& document, const QString& key,
                                       const QString& defaultValue)
{
    // Positions below are one-based, as the engine counts them; 0 means "not found".
    const auto find = [&document](const QString& needle, qsizetype from,
                                  Qt::CaseSensitivity cs) -> qsizetype {
        return document.indexOf(needle, from - 1, cs) + 1;
    };

    const qsizetype hit = find(Quote + key + Quote, 1, Qt::CaseInsensitive);
    if (hit > LastReadablePosition)
        return std::nullopt;
    if (hit <= 1)
        return defaultValue;

    const qsizetype word = find(QStringLiteral("value"), hit, Qt::CaseInsensitive);
    if (word == 0 || word > LastReadablePosition)
        return std::nullopt;

    // Quotes are not letters, so ignoring case changes nothing for them.
    const qsizetype opening = find(Quote, word, Qt::CaseInsensitive);
    if (opening == 0 || opening > LastReadablePosition)
        return std::nullopt;
    const qsizetype closing = find(Quote, opening + 1, Qt::CaseInsensitive);
    if (closing == 0 || closing > LastReadablePosition)
        return std::nullopt;

    const QString value = document.mid(opening, closing - opening - 1);
    if (value.isEmpty())
        return QStringLiteral("0");
    return value;
}

// Whole decimal numbers only, as the stored document and the store write them: blanks (space,
// tab) around the number are allowed, then an optional sign and at least one digit. No
// fractions, exponents, hexadecimal forms or thousands separators; anything else, and any
// number outside -32768..32767, fails.
std::optional<qint16> ToInt16(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && IsBlank(text.at(begin)))
        ++begin;
    while (end > begin && IsBlank(text.at(end - 1)))
        --end;

    bool negative = false;
    if (begin < end && (text.at(begin) == u'+' || text.at(begin) == u'-')) {
        negative = text.at(begin) == u'-';
        ++begin;
    }
    if (begin == end)
        return std::nullopt;

    qint32 magnitude = 0;
    for (qsizetype i = begin; i < end; ++i) {
        const char16_t c = text.at(i).unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        magnitude = magnitude * 10 + (c - u'0');
        // Stop before the number can outgrow 32 bits on a long run of digits.
        if (magnitude > 32768)
            return std::nullopt;
    }
    const qint32 value = negative ? -magnitude : magnitude;
    if (value < std::numeric_limits<qint16>::min() || value > std::numeric_limits<qint16>::max())
        return std::nullopt;
    return static_cast<qint16>(value);
}

void ParseOptions(const QString& document, OptionValues& values)
{
    for (const ParseStep& step : ParseSteps) {
        if (step.key == nullptr) {
            values.*step.field = step.fixedValue;
            continue;
        }
        const std::optional<QString> text =
            ReadOptionValue(document, QLatin1String(step.key), QLatin1String(step.defaultValue));
        if (!text)
            return;
        if (step.isText) {
            values.Passwords = *text;
            continue;
        }
        const std::optional<qint16> number = ToInt16(*text);
        if (!number)
            return;
        values.*step.field = (step.zeroBecomesOne && *number == 0) ? qint16{1} : *number;
    }
}
