#include "app/StoredOptions.h"

#include "options/OptionsDocument.h"
#include "platform/SettingsShell.h"

#include <QStringList>

#include <algorithm>

namespace {

void readNumber(const QString& document, const char* key, int defaultValue, int& field)
{
    const std::optional<QString> text =
        ReadOptionValue(document, QLatin1String(key), QString::number(defaultValue));
    if (!text)
        return;
    if (const std::optional<qint16> value = ToInt16(*text))
        field = *value;
}

void readFlag(const QString& document, const char* key, bool defaultValue, bool& field)
{
    int value = defaultValue ? 1 : 0;
    readNumber(document, key, value, value);
    field = value != 0;
}

void addPassword(std::vector<std::string>& out, const QString& password)
{
    // Newer PDFs take passwords as UTF-8, older ones as Latin-1 bytes; both are tried.
    for (const QByteArray& bytes : {password.toUtf8(), password.toLatin1()}) {
        std::string candidate = bytes.toStdString();
        if (std::find(out.begin(), out.end(), candidate) == out.end())
            out.push_back(std::move(candidate));
    }
}

}  // namespace

velmora::EngineOptions EngineOptionsFromDocument(const QString& document)
{
    velmora::EngineOptions options;
    readFlag(document, "AdjustFontNames", true, options.adjustFontNames);
    readFlag(document, "AdjustSpacing", true, options.adjustSpacing);
    readNumber(document, "ConversionMethod", 2, options.conversionMethod);
    readFlag(document, "DetectHeader", true, options.detectHeader);
    readFlag(document, "WordArt", false, options.wordArt);
    readNumber(document, "DocumentType", 2, options.documentType);
    readFlag(document, "ExtractHyperlinks", true, options.extractHyperlinks);
    readFlag(document, "ExtractImages", true, options.extractImages);
    readFlag(document, "ExtractText", true, options.extractText);
    readNumber(document, "ImageFormat", 0, options.imageFormat);
    readNumber(document, "JpegQuality", 85, options.jpegQuality);
    readFlag(document, "MergeParagraph", true, options.mergeParagraph);
    readFlag(document, "MergeText", true, options.mergeText);
    readNumber(document, "PageFrom", 0, options.pageFrom);
    readNumber(document, "PageTo", 0, options.pageTo);
    readFlag(document, "PreserveTextPosition", true, options.preserveTextPosition);
    readFlag(document, "ShrinkFonts", true, options.shrinkFonts);
    readFlag(document, "ExtractToBMP", false, options.extractToBmp);
    readFlag(document, "UsingPageRange", false, options.usingPageRange);
    readNumber(document, "ZoomDpi", 96, options.zoomDpi);

    // Values the dialogs would correct stand here for the nearest meaning.
    if (options.conversionMethod < 1 || options.conversionMethod > 3)
        options.conversionMethod = options.conversionMethod == 0 ? 1 : 2;
    if (options.documentType < 1 || options.documentType > 3)
        options.documentType = options.documentType == 0 ? 1 : 2;
    if (options.jpegQuality <= 0 || options.jpegQuality > 100)
        options.jpegQuality = 85;

    int passwordLength = 0;
    int separator = 0;
    readNumber(document, "PasswordLen", 0, passwordLength);
    readNumber(document, "PasswordSeparator", 0, separator);
    const std::optional<QString> passwords =
        ReadOptionValue(document, QStringLiteral("Passwords"), QString());
    if (passwordLength > 0 && passwords) {
        // The length says how much of the text is the password; a separator may list more.
        addPassword(options.passwords, passwords->left(passwordLength - 1));
        if (separator > 0) {
            for (const QString& piece : passwords->split(QChar(separator), Qt::SkipEmptyParts))
                addPassword(options.passwords, piece);
        }
        addPassword(options.passwords, *passwords);
    }
    return options;
}

QString StoredOptionsDocument()
{
    const std::unique_ptr<SettingsShell> shell = QSettingsShellFactory()();
    if (!shell)
        return {};
    const std::optional<QVariant> value = shell->RegRead(StoreNames::OptionsDocument);
    return value ? value->toString() : QString();
}
