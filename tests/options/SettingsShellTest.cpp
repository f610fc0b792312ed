#include "platform/SettingsShell.h"
#include "options/OptionsDocument.h"
#include "options/SettingsStore.h"
#include "run/RunState.h"

#include "TestPaths.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <optional>

namespace {

// The real store in the test's private configuration home.
class SettingsShellTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const char* home = std::getenv("XDG_CONFIG_HOME");
        ASSERT_NE(home, nullptr) << "the test needs its own configuration home";
        m_folder = QString::fromLocal8Bit(home) + QStringLiteral("/Velmora Technologies");
        m_path = m_folder + QStringLiteral("/Velmora Sandpiper Converter.conf");
        QDir(m_folder).removeRecursively();
    }

    void TearDown() override { QDir(m_folder).removeRecursively(); }

    // A store written by hand. Each gets its own modification time so that no cached copy
    // of an earlier file can be taken for it.
    void WriteRawStore(const QByteArray& text,
                       QFileDevice::Permissions permissions = QFileDevice::ReadOwner |
                                                              QFileDevice::WriteOwner)
    {
        static int generation = 0;
        QDir().mkpath(m_folder);
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
        ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-3600 + ++generation),
                                     QFileDevice::FileModificationTime));
        file.close();
        ASSERT_TRUE(QFile::setPermissions(m_path, permissions));
    }

    int Mode() const
    {
        struct stat info
        {
        };
        if (stat(QFile::encodeName(m_path).constData(), &info) != 0)
            return -1;
        return static_cast<int>(info.st_mode & 07777);
    }

    static std::optional<QVariant> Read(const QString& name)
    {
        return QSettingsShellFactory()()->RegRead(name);
    }

    QString m_folder;
    QString m_path;
};

TEST_F(SettingsShellTest, FirstStartLeavesAPrivateStoreWithAllFourValues)
{
    RunState state;
    LoadSettings(state, QSettingsShellFactory());

    ASSERT_TRUE(QFileInfo::exists(m_path));
    EXPECT_EQ(Mode(), 0600);
    EXPECT_EQ(Read(StoreNames::OptionsDocument).value_or(QVariant()).toString(), QString());
    for (const QString& name :
         {SettingsNames::PreviewThumb, SettingsNames::DocumentFormat, SettingsNames::LaunchWord})
        EXPECT_EQ(Read(name).value_or(QVariant()).toInt(), 1) << name.toStdString();
    EXPECT_EQ(state.PreviewThumb, 1);
    EXPECT_EQ(state.JpegQuality, 85);

    state.Passwords = QStringLiteral(u"秘密\"&<>");
    state.PasswordLen = 7;
    state.PasswordSeparator = 44;
    state.JpegQuality = 30;
    state.PreviewThumb = 0;
    state.DocumentFormat = 2;
    state.LaunchWord = -1;
    SaveOptions(state, QSettingsShellFactory(), true);
    EXPECT_EQ(Mode(), 0600);

    RunState next;
    LoadSettings(next, QSettingsShellFactory());
    EXPECT_EQ(next.OptionsDocument, state.OptionsDocument);
    EXPECT_EQ(next.Passwords, QStringLiteral(u"秘密"));
    EXPECT_EQ(next.PasswordLen, 7);
    EXPECT_EQ(next.JpegQuality, 30);
    EXPECT_EQ(next.PreviewThumb, 0);
    EXPECT_EQ(next.DocumentFormat, 2);
    EXPECT_EQ(next.LaunchWord, -1);
}

TEST_F(SettingsShellTest, AStoreOthersCanReadIsNarrowedToItsOwner)
{
    for (const int mode : {0644, 0666, 0640}) {
        SCOPED_TRACE(mode);
        WriteRawStore("[RTF]\nPreviewThumb=0\n", QFileDevice::Permissions::fromInt(0));
        ASSERT_EQ(chmod(QFile::encodeName(m_path).constData(), static_cast<mode_t>(mode)), 0);
        RunState state;
        state.Passwords = QStringLiteral("secret");
        SaveOptions(state, QSettingsShellFactory(), true);
        EXPECT_EQ(Mode(), 0600);
        EXPECT_EQ(Read(SettingsNames::PreviewThumb).value_or(QVariant()).toInt(), 0);
    }
}

TEST_F(SettingsShellTest, TextsComeBackExactly)
{
    RunState edited;
    edited.Passwords = QStringLiteral(u"パスワード \"q\" & <b> \\ ; # = , %");
    const QString texts[] = {
        QString(),
        BuildOptionsDocument(edited),
        QStringLiteral("C:\\in\\a.pdf"),
        QStringLiteral("  blanks around  "),
        QStringLiteral("a, b, c"),
        QStringLiteral("@Variant(\\0\\0\\0\\x7f)"),
        QStringLiteral("@@at"),
        QStringLiteral("\"quoted\""),
        QStringLiteral("tab\there\rcr\nlf"),
        QStringLiteral("[RTF]\nPreviewThumb=5"),
        QStringLiteral("true"),
        QStringLiteral("12"),
        QString(40000, u'p'),
        QStringLiteral(u"ü é ß 中文 🙂"),
    };
    for (const QString& text : texts) {
        SCOPED_TRACE(text.left(60).toStdString());
        ASSERT_TRUE(QSettingsShellFactory()()->RegWrite(StoreNames::OptionsDocument, text));
        const std::optional<QVariant> read = Read(StoreNames::OptionsDocument);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->toString(), text);
    }
}

TEST_F(SettingsShellTest, NumbersComeBackAsSixteenBitSwitches)
{
    for (const qint32 value : {0, 1, 2, -1, 32767, -32768}) {
        SCOPED_TRACE(value);
        ASSERT_TRUE(QSettingsShellFactory()()->RegWriteDword(SettingsNames::LaunchWord, value));
        RunState state;
        LoadSettings(state, QSettingsShellFactory());
        EXPECT_EQ(state.LaunchWord, value);
    }
}

struct HandEditedRow
{
    const char* name;
    QByteArray text;
    qint16 previewThumb;
    qint16 documentFormat;
    qint16 launchWord;
    qint16 jpegQuality;
    QString passwords;
};

TEST_F(SettingsShellTest, AHandEditedStoreNeverStopsARun)
{
    const QByteArray longPassword(40000, 'p');
    const HandEditedRow rows[] = {
        {"numbers kept as text", "[RTF]\nPreviewThumb=0\nDocumentFormat=2\nLaunchWord=0\n", 0, 2, 0,
         85, ""},
        {"text where a number belongs", "[RTF]\nPreviewThumb=abc\nDocumentFormat=2\nLaunchWord=x\n",
         1, 2, 1, 85, ""},
        {"numbers past 16 bits", "[RTF]\nPreviewThumb=70000\nDocumentFormat=-40000\nLaunchWord=0\n",
         1, 1, 0, 85, ""},
        {"a list where a number belongs", "[RTF]\nPreviewThumb=1, 2\nDocumentFormat=2\n", 1, 2, 1,
         85, ""},
        {"values that hold nothing", "[RTF]\nPreviewThumb=@Invalid()\nLaunchWord=@Variant(junk)\n",
         1, 1, 1, 85, ""},
        {"missing values", "[General]\n", 1, 1, 1, 85, ""},
        {"document with a password past 32,767 characters",
         "[General]\nVOREK%20-%20RTF=\"<o><numeric name = \\\"JpegQuality\\\" value = \\\"40\\\" "
         "/><string name = \\\"Passwords\\\" value = \\\"" +
             longPassword +
             "\\\" /><bool name = \\\"WordArt\\\" value = \\\"1\\\" /></o>\"\n[RTF]\n"
             "PreviewThumb=0\n",
         0, 1, 1, 40, ""},
        {"password with a quote",
         "[General]\nVOREK%20-%20RTF=\"<o><string name = \\\"Passwords\\\" value = "
         "\\\"ab\\\"cd\\\" "
         "/><numeric name = \\\"JpegQuality\\\" value = \\\"55\\\" /></o>\"\n",
         1, 1, 1, 55, "ab"},
        {"document in bare text", "[General]\nVOREK%20-%20RTF=no document here\n", 1, 1, 1, 85, ""},
        {"garbage", QByteArray("\x00\xff\xfe[[[\n=\n\\\n@Variant(\x01\x02\n[RTF\nPreviewThumb", 40),
         1, 1, 1, 85, ""},
        {"empty file", "", 1, 1, 1, 85, ""},
    };
    for (const HandEditedRow& row : rows) {
        SCOPED_TRACE(row.name);
        WriteRawStore(row.text);
        RunState state;
        LoadSettings(state, QSettingsShellFactory());
        EXPECT_EQ(state.PreviewThumb, row.previewThumb);
        EXPECT_EQ(state.DocumentFormat, row.documentFormat);
        EXPECT_EQ(state.LaunchWord, row.launchWord);
        EXPECT_EQ(state.JpegQuality, row.jpegQuality);
        EXPECT_EQ(state.Passwords, row.passwords);

        // What was missing, unreadable or no 16-bit number now holds 1: the store agrees with
        // the fields.
        const std::pair<QString, qint16> switches[] = {
            {SettingsNames::PreviewThumb, row.previewThumb},
            {SettingsNames::DocumentFormat, row.documentFormat},
            {SettingsNames::LaunchWord, row.launchWord}};
        for (const auto& [name, value] : switches)
            EXPECT_EQ(Read(name).value_or(QVariant()).toString(), QString::number(value))
                << name.toStdString();

        SaveOptions(state, QSettingsShellFactory(), false);
        EXPECT_EQ(Mode(), 0600);
    }
}

TEST_F(SettingsShellTest, HandWrittenValuesReadAsTheTextTheyHold)
{
    const std::pair<QByteArray, std::optional<QString>> rows[] = {
        {"plain text", QStringLiteral("plain text")},
        {"\"quoted, with a comma\"", QStringLiteral("quoted, with a comma")},
        {"a, b,c", QStringLiteral("a, b, c")},
        {"12", QStringLiteral("12")},
        {"", QString()},
        {"@Invalid()", std::nullopt},
    };
    for (const auto& [raw, expected] : rows) {
        SCOPED_TRACE(raw.toStdString());
        WriteRawStore("[General]\nVOREK%20-%20RTF=" + raw + "\n");
        const std::optional<QVariant> read = Read(StoreNames::OptionsDocument);
        EXPECT_EQ(read ? std::optional<QString>(read->toString()) : std::nullopt, expected);
    }
}

TEST_F(SettingsShellTest, AStoreThatCantBeOpenedGivesTheDefaults)
{
    // A folder where the file belongs can't be read or replaced, whoever runs the test.
    ASSERT_TRUE(QDir().mkpath(m_path));
    RunState state;
    state.PreviewThumb = 0;
    LoadSettings(state, QSettingsShellFactory());
    EXPECT_EQ(state.PreviewThumb, 1);
    EXPECT_EQ(state.DocumentFormat, 1);
    EXPECT_EQ(state.LaunchWord, 1);
    EXPECT_EQ(state.ConversionMethod, 2);

    state.JpegQuality = 20;
    SaveOptions(state, QSettingsShellFactory(), false);
    EXPECT_TRUE(state.OptionsDocument.contains(QStringLiteral("\"JpegQuality\" value = \"20\"")));
    EXPECT_TRUE(QFileInfo(m_path).isDir());
    EXPECT_FALSE(QSettingsShellFactory()()->RegWrite(StoreNames::OptionsDocument, "x"));
    EXPECT_FALSE(Read(StoreNames::OptionsDocument).has_value());
}

}  // namespace
