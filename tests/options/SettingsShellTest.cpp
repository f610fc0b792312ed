// The real store, a QSettings file in the test's private configuration home: private to its
// owner, and never in the way of a run, whatever a hand has made of it.

#include "options/SettingsStore.h"
#include "run/RunState.h"

#include <QDateTime>
#include <QDir>

#include <gtest/gtest.h>

namespace {

TEST(SettingsShell, TheStoreStaysPrivateAndAHandEditedOrUnopenableOneNeverStopsARun)
{
    const QString folder = qEnvironmentVariable("XDG_CONFIG_HOME") + "/Velmora Technologies";
    const QString path = folder + QStringLiteral("/Velmora Sandpiper Converter.conf");
    const std::tuple<QByteArray, qint16, QString> rows[] = {
        // the store's text, the PreviewThumb and the password read from it
        {"[RTF]\nPreviewThumb=0\nLaunchWord=1, 2\n", 0, ""},
        {"[RTF]\nPreviewThumb=@Invalid()\nLaunchWord=@Variant(junk)\n", 1, ""},
        {"[General]\nVOREK%20-%20RTF=\"<s name = \\\"Passwords\\\" value = \\\"ab\\\"cd\\\" />\"\n",
         1, "ab"},
        {"[General]\nVOREK%20-%20RTF=no document, here\n", 1, ""},
        {QByteArray("\x00\xff\xfe[[[\n=\n\\\n@Variant(\x01\x02\n[RTF\nPreviewThumb", 40), 1, ""},
    };
    int age = 3600;
    for (const auto& [text, previewThumb, passwords] : rows) {
        SCOPED_TRACE(text.toStdString());
        QDir().mkpath(folder);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(text) >= 0);
        // Readable by others, and with a time of its own so that no cached copy is taken for it.
        file.setPermissions(QFileDevice::Permissions::fromInt(0x6644));
        file.setFileTime(QDateTime::currentDateTime().addSecs(--age),
                         QFileDevice::FileModificationTime);
        file.close();
        RunState state;
        LoadSettings(state, QSettingsShellFactory());
        EXPECT_EQ(state.PreviewThumb, previewThumb);
        EXPECT_EQ(state.LaunchWord, 1) << "a switch that is no 16-bit number is made anew";
        EXPECT_EQ(state.Passwords, passwords);
        EXPECT_EQ(QSettingsShellFactory()()->RegRead(SettingsNames::LaunchWord)->toInt(), 1);
        EXPECT_EQ(QFile::permissions(path) & 0x7077,
                  QFileDevice::ReadOwner | QFileDevice::WriteOwner)
            << "the password may be stored";
    }

    // A folder where the file belongs can't be read or replaced, whoever runs the test.
    QDir(folder).removeRecursively();
    ASSERT_TRUE(QDir().mkpath(path));
    RunState state;
    state.PreviewThumb = 0;
    LoadSettings(state, QSettingsShellFactory());
    EXPECT_EQ(state.PreviewThumb, 1);
    SaveOptions(state, QSettingsShellFactory(), false);
    EXPECT_EQ(state.OptionsDocument, BuildOptionsDocument(state));
    EXPECT_FALSE(QSettingsShellFactory()()->RegRead(StoreNames::OptionsDocument).has_value());
    QDir(folder).removeRecursively();
}

}  // namespace
