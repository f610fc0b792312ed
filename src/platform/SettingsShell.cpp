#include "platform/SettingsShell.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStringList>

namespace {

constexpr QFileDevice::Permissions OwnerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

// The store is the per-user INI file of QSettings. Whatever a hand-edited or damaged file holds,
// a read gives a value or nothing and a write succeeds or reports false: the callers never
// show store failures, so nothing here may throw, prompt or log.
class QSettingsShell final : public SettingsShell
{
public:
    QSettingsShell()
        : m_settings(QSettings::NativeFormat, QSettings::UserScope, StoreNames::Organisation,
                     StoreNames::Application)
    {
    }

    std::optional<QVariant> RegRead(const QString& name) override
    {
        if (m_settings.status() == QSettings::AccessError || !m_settings.contains(name))
            return std::nullopt;
        const QVariant value = m_settings.value(name);
        // A hand-written "@Invalid()" or a damaged "@Variant(...)" holds nothing.
        if (!value.isValid())
            return std::nullopt;
        // An unquoted hand-written value with commas comes back as a list; the store holds
        // texts and numbers only, so it is taken as the text it was, in QSettings' own form.
        if (value.typeId() == QMetaType::QStringList)
            return value.toStringList().join(QStringLiteral(", "));
        return value;
    }

    bool RegWrite(const QString& name, const QString& text) override { return write(name, text); }

    bool RegWriteDword(const QString& name, qint32 value) override { return write(name, value); }

private:
    bool write(const QString& name, const QVariant& value)
    {
        // A file that couldn't be read would be replaced by this shell's few values; a failed
        // write keeps the older store instead. A file that could be read but not understood
        // (FormatError) is rewritten with what QSettings made of it, which repairs it.
        if (m_settings.status() == QSettings::AccessError || !m_settings.isWritable())
            return false;
        const QString path = m_settings.fileName();
        if (!makePrivate(path))
            return false;
        m_settings.setValue(name, value);
        m_settings.sync();
        // QSettings replaces the file on every sync; the stored document may hold a PDF
        // password in clear text, so the new file must be the owner's alone too.
        const bool privateAfterSync = QFile::setPermissions(path, OwnerOnly);
        return m_settings.status() != QSettings::AccessError && privateAfterSync;
    }

    // The file is made (or narrowed) to owner-only before anything is written, so that the
    // password never lies in a file others can read, not even for a moment.
    static bool makePrivate(const QString& path)
    {
        const QFileInfo info(path);
        if (!QDir().mkpath(info.absolutePath()))
            return false;
        if (info.exists())
            return info.isFile() && QFile::setPermissions(path, OwnerOnly);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, OwnerOnly))
            return false;
        file.close();
        return true;
    }

    QSettings m_settings;
};

}  // namespace

SettingsShellFactory QSettingsShellFactory()
{
    return [] { return std::unique_ptr<SettingsShell>(std::make_unique<QSettingsShell>()); };
}
