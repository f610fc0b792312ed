#include "services/DialogFonts.h"

#include <QFont>
#include <QFontDatabase>
#include <QStringList>

namespace {

// Wine's Tahoma (Debian's fonts-wine) is drawn to Tahoma's metrics, but is kept out of the
// system's font folders; the program loads it for itself.
const QStringList TahomaFiles = {QStringLiteral("/usr/share/wine/fonts/tahoma.ttf"),
                                 QStringLiteral("/usr/share/wine/fonts/tahomabd.ttf")};

}  // namespace

void InstallDialogFonts()
{
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    for (const QString& file : TahomaFiles)
        QFontDatabase::addApplicationFont(file);
    // Where Wine's Tahoma is missing, DejaVu Sans Condensed comes closest to its widths.
    QFont::insertSubstitutions(QStringLiteral("Tahoma"), {QStringLiteral("DejaVu Sans Condensed"),
                                                          QStringLiteral("Liberation Sans")});
    // MS UI Gothic is proportional, as IPA's P Gothic is.
    QFont::insertSubstitutions(QStringLiteral("MS UI-Gothic"),
                               {QStringLiteral("IPAPGothic"), QStringLiteral("IPAGothic"),
                                QStringLiteral("Noto Sans CJK JP")});
}
