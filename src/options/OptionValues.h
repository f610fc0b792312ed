#pragma once

// The conversion options as plain values, one field per element of the options document, named
// by its key. The front end's run record carries them; the engine reads them back.

#include <QString>
#include <QtGlobal>

struct OptionValues
{
    qint16 AdjustFontNames = 0;
    qint16 AdjustSpacing = 0;
    qint16 ConversionMethod = 0;  // 1 tabs and spaces, 2 text boxes, 3 flow
    qint16 DetectHeader = 0;
    qint16 DocumentType = 0;  // 1 single column, 2 multi-column, 3 legal pleading
    qint16 ExtractHyperlinks = 0;
    qint16 ExtractImages = 0;
    qint16 ExtractText = 0;
    qint16 ImageFormat = 0;  // 0 JPEG, 1 BMP
    qint16 JpegQuality = 0;
    qint16 MergeParagraph = 0;
    qint16 MergeText = 0;
    qint16 PageFrom = 0;
    qint16 PageTo = 0;
    qint16 PasswordLen = 0;
    qint16 PasswordSeparator = 0;
    QString Passwords;
    qint16 PreserveTextPosition = 0;
    qint16 ShrinkFonts = 0;
    qint16 UsingPageRange = 0;
    qint16 ExtractToBMP = 0;
    qint16 ZoomDpi = 0;
    qint16 WordArt = 0;
};
