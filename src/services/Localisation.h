#pragma once

// English is built in; Japanese is an overlay of a string table and six pictures, applied
// when a dialog loads and whenever a message is composed. The language is asked anew at
// each use.

#include <QList>
#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>

class QWidget;

inline constexpr qint32 LanguageJapanese = 1041;

// Texts this platform adds to the program's own: the ids of their rows.
namespace PlatformTexts {
inline constexpr qint32 PasswordWithQuote = 7001;
inline constexpr qint32 HelpPageFailed = 7002;
inline constexpr qint32 SavedAsRichText = 7003;
inline constexpr qint32 PdfLibraryMissing = 7004;
inline constexpr qint32 HelpPageMissing = 7005;
inline constexpr qint32 HelpViewerFailed = 7006;
}  // namespace PlatformTexts

// 50000 for Japanese, -1 (no table) for every other language.
qint32 LanguageOffset(qint32 language);

// The text of one row of the string table (text id + language offset), empty when there is
// no such row.
std::optional<QString> LoadResString(qint32 row);

// The text for `id` in the user's language: the fallback in English, the table's text in
// Japanese, and the empty text for an id the table lacks.
QString LocalText(qint32 id, const QString& fallback);

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
