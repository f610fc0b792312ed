#pragma once

// The program's texts in the user's language: English is built in, and Japanese is a string
// table keyed by text id plus the language's offset. The language is asked anew at each use.

#include <QString>
#include <QtGlobal>

#include <optional>

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
