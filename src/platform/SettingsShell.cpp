#include "platform/SettingsShell.h"

#include <QFile>
#include <QSettings>

namespace {

class QSettingsShell final : public SettingsShell
{
public:
    QSettingsShell()
        : m_settings(QSettings::NativeFormat, QSettings::UserScope, SettingsNames::Organisation,
                     SettingsNames::Application)
    {
    }

    std::optional<QVariant> RegRead(const QString& name) override
    {
        if (m_settings.status() != QSettings::NoError || !m_settings.contains(name))
            return std::nullopt;
        return m_settings.value(name);
    }

    bool RegWrite(const QString& name, const QString& text) override
    {
        return write(name, text);
    }

    bool RegWriteDword(const QString& name, qint32 value) override
    {
        return write(name, value);
    }

private:
    bool write(const QString& name, const QVariant& value)
    {
        if (!m_settings.isWritable())
            return false;
        m_settings.setValue(name, value);
        m_settings.sync();
        // The stored document may hold a PDF password in clear text.
        QFile::setPermissions(m_settings.fileName(), QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        return m_settings.status() == QSettings::NoError;
    }

    QSettings m_settings;
};

}  // namespace

SettingsShellFactory QSettingsShellFactory()
{
    return [] { return std::unique_ptr<SettingsShell>(std::make_unique<QSettingsShell>()); };
}
