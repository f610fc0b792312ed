#pragma once

// The one process-wide record of a run: the paths, the run mode and one field per option.
// Every part of the program reads and writes these fields directly; dialogs copy them into
// their controls when activated and back when the user leaves them.

#include <QString>
#include <QtGlobal>

struct RunState final
{
    QString OptionsDocument;
    QString SourcePath;
    QString OutputPath;
    QString PreviewPath;
    qint32 PageCount = 0;
    qint32 RunMode = 0;       // 0 no work, 1 convert, 2 options only
    qint16 HostedByWord = 0;  // -1 when converting on behalf of a running word processor
    QString WordWindowHint;

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
    qint16 LaunchWord = 0;
    qint16 ZoomDpi = 0;
    qint16 WordArt = 0;
    qint16 PreviewThumb = 0;
    qint16 DocumentFormat = 0;  // 1 .DOC, 2 .RTF
};

namespace RunModes {
inline constexpr qint32 NoWork = 0;
inline constexpr qint32 Convert = 1;
inline constexpr qint32 OptionsOnly = 2;
}  // namespace RunModes

// The record of this process. Tests make their own RunState and hand it in where they can;
// code that runs inside dialogs reaches this one.
RunState& runState();
