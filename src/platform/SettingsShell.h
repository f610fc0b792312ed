#pragma once

// The settings store as the program sees it: named values that can be read (a read of a
// missing value fails) and written, making their keys on the way. The real store is the
// per-user QSettings of "Velmora Technologies" / "Velmora Sandpiper Converter".

#include "options/OptionsDocument.h"

#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

class SettingsShell
{
public:
    virtual ~SettingsShell() = default;

    // `name` is relative to the product key, e.g. "VOREK - RTF" or "RTF/PreviewThumb".
    // Empty when the value is missing or the store can't be read.
    virtual std::optional<QVariant> RegRead(const QString& name) = 0;
    // Writes text. False when the store refused the write.
    virtual bool RegWrite(const QString& name, const QString& text) = 0;
    // Writes a number, as a REG_DWORD would be.
    virtual bool RegWriteDword(const QString& name, qint32 value) = 0;
};

// Each store operation makes its own short-lived shell; this makes one. It may give null,
// which counts as a shell whose every read and write fails.
using SettingsShellFactory = std::function<std::unique_ptr<SettingsShell>()>;

// The store's values beside the options document (StoreNames::OptionsDocument).
namespace SettingsNames {
inline const QString PreviewThumb = QStringLiteral("RTF/PreviewThumb");
inline const QString DocumentFormat = QStringLiteral("RTF/DocumentFormat");
inline const QString LaunchWord = QStringLiteral("RTF/LaunchWord");
// Where the user last picked a PDF; the open dialog starts there.
inline const QString RecentPdfFolder = QStringLiteral("Recent/PdfFolder");
}  // namespace SettingsNames

// The real store: QSettings in the user's configuration, readable by its owner only because
// the options document may hold a password in clear text.
SettingsShellFactory QSettingsShellFactory();
