#pragma once

// The one process-wide record of a run: the paths, the run mode and one field per option (the
// options document's, and the store's switches).
// Every part of the program reads and writes these fields directly; dialogs copy them into
// their controls when activated and back when the user leaves them.

#include "options/OptionValues.h"

#include <QString>
#include <QtGlobal>

struct RunState final : OptionValues
{
    QString OptionsDocument;
    QString SourcePath;
    QString OutputPath;
    QString PreviewPath;
    qint32 PageCount = 0;
    qint32 RunMode = 0;       // 0 no work, 1 convert, 2 options only
    qint16 HostedByWord = 0;  // -1 when converting on behalf of a running word processor
    QString WordWindowHint;

    // The store's switches beside the document.
    qint16 LaunchWord = 0;
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
