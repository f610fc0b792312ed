#include "options/SettingsStore.h"

#include "options/OptionsDocument.h"
#include "run/RunState.h"

#include <QDir>
#include <QFileInfo>

#include <limits>

namespace {

// A store value as a 16-bit number. A value the store keeps as a number must fit; one that
// comes back as text (a hand-edited store, or a format that keeps everything as text) is
// converted the way the document's values are.
std::optional<qint16> VariantToInt16(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
    case QMetaType::QByteArray:
        return ToInt16(value.toString());
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong: {
        const qlonglong number = value.toLongLong();
        if (number < std::numeric_limits<qint16>::min() ||
            number > std::numeric_limits<qint16>::max())
            return std::nullopt;
        return static_cast<qint16>(number);
    }
    case QMetaType::ULongLong: {
        const qulonglong number = value.toULongLong();
        if (number > static_cast<qulonglong>(std::numeric_limits<qint16>::max()))
            return std::nullopt;
        return static_cast<qint16>(number);
    }
    default:
        return std::nullopt;
    }
}

std::optional<QString> VariantToText(const QVariant& value)
{
    if (!value.canConvert<QString>())
        return std::nullopt;
    return value.toString();
}

std::unique_ptr<SettingsShell> MakeShell(const SettingsShellFactory& shellFactory)
{
    if (!shellFactory)
        return nullptr;
    return shellFactory();
}

// A read that fails for every reason alike: no shell, a missing value, or a value that isn't
// what the field holds.
std::optional<QString> ReadText(SettingsShell* shell, const QString& name)
{
    if (shell == nullptr)
        return std::nullopt;
    const std::optional<QVariant> value = shell->RegRead(name);
    if (!value)
        return std::nullopt;
    return VariantToText(*value);
}

std::optional<qint16> ReadNumber(SettingsShell* shell, const QString& name)
{
    if (shell == nullptr)
        return std::nullopt;
    const std::optional<QVariant> value = shell->RegRead(name);
    if (!value)
        return std::nullopt;
    return VariantToInt16(*value);
}

// Store failures are never shown and never stop a run, so the results of writes are dropped.
void WriteText(SettingsShell* shell, const QString& name, const QString& text)
{
    if (shell != nullptr)
        shell->RegWrite(name, text);
}

void WriteNumber(SettingsShell* shell, const QString& name, qint16 value)
{
    if (shell != nullptr)
        shell->RegWriteDword(name, value);
}

// A switch that can't be read, or holds no 16-bit number, is made anew with 1.
void LoadSwitch(SettingsShell* shell, const QString& name, qint16& field)
{
    if (const std::optional<qint16> value = ReadNumber(shell, name))
        field = *value;
    else
        WriteNumber(shell, name, 1);
}

void ReadStoredNumber(const QString& document, const QString& key, qint16& field)
{
    const std::optional<QString> text = ReadOptionValue(document, key, QStringLiteral("0"));
    if (!text)
        return;
    if (const std::optional<qint16> value = ToInt16(*text))
        field = *value;
}

}  // namespace

void LoadSettings(RunState& state, const SettingsShellFactory& shellFactory)
{
    state.PreviewThumb = 1;
    state.DocumentFormat = 1;
    state.LaunchWord = 1;

    std::unique_ptr<SettingsShell> shell = MakeShell(shellFactory);

    if (const std::optional<QString> document = ReadText(shell.get(), StoreNames::OptionsDocument))
        state.OptionsDocument = *document;
    else
        WriteText(shell.get(), StoreNames::OptionsDocument, QString());

    LoadSwitch(shell.get(), SettingsNames::PreviewThumb, state.PreviewThumb);

    // On behalf of a word processor the document is always .DOC for this run alone; the user's
    // own choice in the store is neither read nor touched.
    if (state.HostedByWord == 0)
        LoadSwitch(shell.get(), SettingsNames::DocumentFormat, state.DocumentFormat);
    else
        state.DocumentFormat = 1;

    LoadSwitch(shell.get(), SettingsNames::LaunchWord, state.LaunchWord);

    shell.reset();
    ParseOptions(state.OptionsDocument, state);
}

void SaveOptions(RunState& state, const SettingsShellFactory& shellFactory, bool keepRunPasswords)
{
    std::unique_ptr<SettingsShell> shell = MakeShell(shellFactory);

    // Only a password that was just accepted is newer than the stored one; otherwise the stored
    // password fields win, and an unreadable store leaves them at their defaults.
    if (!keepRunPasswords) {
        const QString stored =
            ReadText(shell.get(), StoreNames::OptionsDocument).value_or(QString());
        ReadStoredNumber(stored, QStringLiteral("PasswordLen"), state.PasswordLen);
        ReadStoredNumber(stored, QStringLiteral("PasswordSeparator"), state.PasswordSeparator);
        if (const std::optional<QString> passwords =
                ReadOptionValue(stored, QStringLiteral("Passwords"), QString()))
            state.Passwords = *passwords;
    }

    const QString document = BuildOptionsDocument(state);
    WriteText(shell.get(), StoreNames::OptionsDocument, document);
    WriteNumber(shell.get(), SettingsNames::PreviewThumb, state.PreviewThumb);
    if (state.HostedByWord == 0)
        WriteNumber(shell.get(), SettingsNames::DocumentFormat, state.DocumentFormat);
    WriteNumber(shell.get(), SettingsNames::LaunchWord, state.LaunchWord);

    shell.reset();
    state.OptionsDocument = document;
}

QString RecentPdfFolder(const SettingsShellFactory& shellFactory)
{
    const std::unique_ptr<SettingsShell> shell = MakeShell(shellFactory);
    const std::optional<QString> folder = ReadText(shell.get(), SettingsNames::RecentPdfFolder);
    if (folder && !folder->isEmpty() && QDir::isAbsolutePath(*folder) && QFileInfo(*folder).isDir())
        return *folder;
    return QDir::homePath();
}

void RememberPdfFolder(const SettingsShellFactory& shellFactory, const QString& pdfPath)
{
    const std::unique_ptr<SettingsShell> shell = MakeShell(shellFactory);
    WriteText(shell.get(), SettingsNames::RecentPdfFolder, QFileInfo(pdfPath).absolutePath());
}
