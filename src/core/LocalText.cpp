#include "core/LocalText.h"

#include "platform/UserLanguage.h"

namespace {

constexpr qint32 JapaneseOffset = 50000;

}  // namespace

qint32 LanguageOffset(qint32 language)
{
    return language == LanguageJapanese ? JapaneseOffset : -1;
}

QString LocalText(qint32 id, const QString& fallback)
{
    const qint32 offset = LanguageOffset(GetUserDefaultLangID());
    if (offset < 0)
        return fallback;
    return LoadResString(offset + id).value_or(QString());
}
