#include "options/OptionsDocument.h"

#include "run/RunState.h"

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

void AddElement(QString& document, const char* kind, const char* key, const QString& value)
{
    document += QStringLiteral("  <") + QLatin1String(kind) + QStringLiteral(" name = \"") +
                QLatin1String(key) + QStringLiteral("\" value = \"") + value +
                QStringLiteral("\" />") + LineEnd;
}

void AddBool(QString& document, const char* key, qint16 value)
{
    AddElement(document, "bool", key, QString::number(value));
}

void AddNumeric(QString& document, const char* key, qint16 value)
{
    AddElement(document, "numeric", key, QString::number(value));
}

// One row of the reading table: either a key read into a field (with its default and whether
// 0 turns into 1), a text read, or a field that is set without reading.
struct ParseStep final
{
    const char* key;  // null for a field that is only set
    const char* defaultValue;
    qint16 RunState::*field;
    qint16 fixedValue;
    bool zeroBecomesOne;
    bool isText;
};

constexpr ParseStep Read(const char* key, const char* defaultValue, qint16 RunState::*field,
                         bool zeroBecomesOne = false)
{
    return {key, defaultValue, field, 0, zeroBecomesOne, false};
}

constexpr ParseStep Set(qint16 RunState::*field, qint16 value)
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
    Read("AdjustFontNames", "1", &RunState::AdjustFontNames),
    Read("AdjustSpacing", "1", &RunState::AdjustSpacing),
    Read("ConversionMethod", "2", &RunState::ConversionMethod, true),
    Read("DetectHeader", "1", &RunState::DetectHeader),
    Read("DocumentType", "2", &RunState::DocumentType, true),
    Set(&RunState::ExtractHyperlinks, 1),
    Set(&RunState::ExtractImages, 1),
    Set(&RunState::ExtractText, 1),
    Read("ImageFormat", "0", &RunState::ImageFormat),
    Read("JpegQuality", "85", &RunState::JpegQuality),
    Read("MergeParagraph", "1", &RunState::MergeParagraph),
    Read("MergeText", "1", &RunState::MergeText),
    Set(&RunState::PageFrom, 0),
    Set(&RunState::PageTo, 0),
    Read("PasswordLen", "0", &RunState::PasswordLen),
    Read("PasswordSeparator", "0", &RunState::PasswordSeparator),
    ReadText("Passwords", ""),
    Read("PreserveTextPosition", "1", &RunState::PreserveTextPosition),
    Read("ShrinkFonts", "1", &RunState::ShrinkFonts),
    Set(&RunState::UsingPageRange, 0),
    Set(&RunState::ExtractToBMP, 0),
    Set(&RunState::ZoomDpi, 96),
    Read("WordArt", "0", &RunState::WordArt),
};

bool IsBlank(QChar c)
{
    return c == u' ' || c == u'\t';
}

}  // namespace

QString BuildOptionsDocument(const RunState& state)
{
    QString document = Head + LineEnd;
    AddBool(document, "AdjustFontNames", state.AdjustFontNames);
    AddBool(document, "AdjustSpacing", state.AdjustSpacing);
    AddNumeric(document, "ConversionMethod", state.ConversionMethod);
    AddBool(document, "DetectHeader", state.DetectHeader);
    AddBool(document, "WordArt", state.WordArt);
    AddNumeric(document, "DocumentType", state.DocumentType);
    // The engine must always extract everything; the fields play no part.
    AddBool(document, "ExtractHyperlinks", 1);
    AddBool(document, "ExtractImages", 1);
    AddBool(document, "ExtractText", 1);
    AddNumeric(document, "ImageFormat", state.ImageFormat);
    AddNumeric(document, "JpegQuality", state.JpegQuality);
    AddBool(document, "MergeParagraph", state.MergeParagraph);
    AddBool(document, "MergeText", state.MergeText);
    AddNumeric(document, "PageFrom", state.PageFrom);
    AddNumeric(document, "PageTo", state.PageTo);
    AddNumeric(document, "PasswordLen", state.PasswordLen);
    AddNumeric(document, "PasswordSeparator", state.PasswordSeparator);
    AddElement(document, "string", "Passwords", state.Passwords);
    AddNumeric(document, "ZoomDpi", state.ZoomDpi);
    AddBool(document, "PreserveTextPosition", state.PreserveTextPosition);
    AddBool(document, "ShrinkFonts", state.ShrinkFonts);
    // Opening the result is the front end's work; the engine must never do it itself.
    AddBool(document, "LaunchWord", 0);
    AddBool(document, "ExtractToBMP", state.ExtractToBMP);
    AddBool(document, "UsingPageRange", state.UsingPageRange);
    document += Tail;
    return document;
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

void ParseOptions(RunState& state)
{
    for (const ParseStep& step : ParseSteps) {
        if (step.key == nullptr) {
            state.*step.field = step.fixedValue;
            continue;
        }
        const std::optional<QString> text = ReadOptionValue(
            state.OptionsDocument, QLatin1String(step.key), QLatin1String(step.defaultValue));
        if (!text)
            return;
        if (step.isText) {
            state.Passwords = *text;
            continue;
        }
        const std::optional<qint16> number = ToInt16(*text);
        if (!number)
            return;
        state.*step.field = (step.zeroBecomesOne && *number == 0) ? qint16{1} : *number;
    }
}
