#include "app/StoredOptions.h"

#include "options/OptionsDocument.h"

#include <QSettings>
#include <QStringList>

#include <algorithm>

namespace {

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
    const OptionValues values = ReadOptionValues(document);
    velmora::EngineOptions options;
    options.adjustFontNames = values.AdjustFontNames != 0;
    options.adjustSpacing = values.AdjustSpacing != 0;
    options.conversionMethod = values.ConversionMethod;
    options.detectHeader = values.DetectHeader != 0;
    options.wordArt = values.WordArt != 0;
    options.documentType = values.DocumentType;
    options.extractHyperlinks = values.ExtractHyperlinks != 0;
    options.extractImages = values.ExtractImages != 0;
    options.extractText = values.ExtractText != 0;
    options.imageFormat = values.ImageFormat;
    options.jpegQuality = values.JpegQuality;
    options.mergeParagraph = values.MergeParagraph != 0;
    options.mergeText = values.MergeText != 0;
    options.pageFrom = values.PageFrom;
    options.pageTo = values.PageTo;
    options.preserveTextPosition = values.PreserveTextPosition != 0;
    options.shrinkFonts = values.ShrinkFonts != 0;
    options.extractToBmp = values.ExtractToBMP != 0;
    options.usingPageRange = values.UsingPageRange != 0;
    options.zoomDpi = values.ZoomDpi;

    // Values the dialogs would correct stand here for the nearest meaning.
    if (options.conversionMethod < 1 || options.conversionMethod > 3)
        options.conversionMethod = options.conversionMethod == 0 ? 1 : 2;
    if (options.documentType < 1 || options.documentType > 3)
        options.documentType = options.documentType == 0 ? 1 : 2;
    if (options.jpegQuality <= 0 || options.jpegQuality > 100)
        options.jpegQuality = 85;

    if (values.PasswordLen > 0) {
        // The length says how much of the text is the password; a separator may list more.
        addPassword(options.passwords, values.Passwords.left(values.PasswordLen - 1));
        if (values.PasswordSeparator > 0) {
            for (const QString& piece :
                 values.Passwords.split(QChar(values.PasswordSeparator), Qt::SkipEmptyParts))
                addPassword(options.passwords, piece);
        }
        addPassword(options.passwords, values.Passwords);
    }
    return options;
}

QString StoredOptionsDocument()
{
    const QSettings store(QSettings::NativeFormat, QSettings::UserScope, StoreNames::Organisation,
                          StoreNames::Application);
    return store.value(StoreNames::OptionsDocument).toString();
}
