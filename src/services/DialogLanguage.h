#pragma once

// Puts a dialog into the user's language when it loads: the Japanese interface's font on every
// control, and the texts of the string table on the controls that show them.

#include "core/LocalText.h"

#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>

class QWidget;

// In Japanese, every control of the dialog that has a font gets the Japanese UI font at
// 9 points, keeping weight and underline; other languages change nothing.
void ApplyDialogFont(QWidget& dialog, qint32 language);

// One text that a dialog's load step sets: the ids are joined in order (two for an option
// caption and its access key), and `apply` puts the text on its target.
struct DialogText final
{
    QList<qint32> ids;
    std::function<void(const QString&)> apply;
};

// The usual target of a dialog text: the caption of `control` (see SetControlText).
std::function<void(const QString&)> CaptionOf(QWidget* control);

// The load step that every dialog shares: nothing in English; in Japanese the font, then
// each text in order. A missing row leaves its control's English text. Returns whether the
// overlay applied, so that a dialog can load its localised pictures too.
bool ApplyDialogLanguage(QWidget& dialog, const QList<DialogText>& texts);

// Sets a caption on any of our controls: window title for a dialog, title for a frame,
// text for a label or a button. A label shows the caption as a Windows label would: "&&" as
// one ampersand, and a single "&" (which marks an access key) not at all.
void SetControlText(QWidget& control, const QString& text);

// What a caption shows where no access key can be marked: "&&" becomes "&", a lone "&" goes.
QString DisplayedCaption(const QString& caption);
