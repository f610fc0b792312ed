#include "platform/UserLanguage.h"

#include <QLocale>

qint32 GetUserDefaultLangID()
{
    // Only the distinction Japanese / not Japanese matters to the program; the identifiers are
    // the ones the Windows language table gives for these locales.
    const QLocale locale = QLocale::system();
    switch (locale.language()) {
    case QLocale::Japanese:
        return 1041;
    case QLocale::German:
        return 1031;
    case QLocale::French:
        return 1036;
    case QLocale::Spanish:
        return 3082;
    case QLocale::Chinese:
        return 2052;
    case QLocale::Korean:
        return 1042;
    case QLocale::English:
        return locale.territory() == QLocale::UnitedKingdom ? 2057 : 1033;
    default:
        return 1033;
    }
}
