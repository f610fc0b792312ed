// The program's temporary files, in a temporary folder of the test's own (TMPDIR names the
// user's temporary folder here).

#include "core/TempFiles.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace {

class TempFilesTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(folder));
        qputenv("TMPDIR", QFile::encodeName(folder));
    }
    void TearDown() override { qputenv("TMPDIR", previous); }
    void Make(const QString& name) { QFile(folder + u'/' + name).open(QIODevice::WriteOnly); }

    QByteArray previous = qgetenv("TMPDIR");
    QTemporaryDir dir;
    QString folder = dir.filePath(QStringLiteral("tmp"));
};

TEST_F(TempFilesTest, FilesAndFoldersAreNewPrivateAndNamedWithThePrefix)
{
    const QFileInfo first(MakeTempFile(0)), second(MakeTempFile(0));
    EXPECT_NE(first.fileName(), second.fileName());
    EXPECT_TRUE(first.absolutePath() == folder && first.size() == 0 &&
                first.fileName().contains(QRegularExpression("^~SV[0-9A-F]{1,4}\\.tmp$")))
        << first.filePath().toStdString();
    EXPECT_EQ(first.permissions() & 0x7077, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    // A given number makes the name from its low 16 bits, without creating a file.
    EXPECT_EQ(MakeTempFile(0x12345), folder + QStringLiteral("/~SV2345.tmp"));
    EXPECT_FALSE(QFileInfo::exists(folder + QStringLiteral("/~SV2345.tmp")));
    QString path;
    {
        const TempFolder work;
        path = work.Path();
        EXPECT_TRUE(path.startsWith(folder + QStringLiteral("/~SV")));
        EXPECT_EQ(QFile::permissions(path) & 0x0077, QFileDevice::Permissions{});
        ASSERT_TRUE(QDir().mkpath(path + QStringLiteral("/a/b")));
        Make(QFileInfo(path).fileName() + QStringLiteral("/a/b/c"));
    }
    EXPECT_FALSE(QFileInfo::exists(path)) << "the folder goes with all it holds";
    qputenv("TMPDIR", QFile::encodeName(dir.filePath(QStringLiteral("gone"))));
    EXPECT_TRUE(MakeTempFile(0).isEmpty() && !TempFolder().IsValid());
}

TEST_F(TempFilesTest, SweepTakesOurFilesAndLeftoverFoldersAndNothingElse)
{
    for (const char* name : {"~SVBEEF.tmp.rtf", "~SV", "keep.txt", "x~SV.tmp", "~sv lower.tmp"})
        Make(QString::fromLatin1(name));
    // A killed run's folder goes with all it holds; links in it go, what they point to stays.
    const QString outside = dir.filePath(QStringLiteral("outside"));
    ASSERT_TRUE(QDir().mkpath(outside));
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/~SVleft.dir/profile/user")));
    Make(QStringLiteral("~SVleft.dir/profile/user/registry.xcu"));
    ASSERT_TRUE(QFile::link(outside, folder + QStringLiteral("/~SVleft.dir/profile/out")));
    ASSERT_TRUE(QFile::link(outside, folder + QStringLiteral("/~SVlink")));
    QFile(outside + QStringLiteral("/precious")).open(QIODevice::WriteOnly);
    // Files in other folders are not ours to take.
    ASSERT_TRUE(QDir().mkpath(folder + QStringLiteral("/sub")));
    Make(QStringLiteral("sub/~SVdeep.tmp"));
    // The folder of a run that is still at work stays.
    const TempFolder inUse;
    Make(QFileInfo(inUse.Path()).fileName() + QStringLiteral("/working"));
    // Another user's file could never be deleted and must not stop the sweep.
    Make(QStringLiteral("~SV0theirs.tmp"));
    const QByteArray theirs = QFile::encodeName(folder + QStringLiteral("/~SV0theirs.tmp"));
    const bool foreign = ::chown(theirs.constData(), ::getuid() + 4242, gid_t(-1)) == 0;

    SweepTempFiles();

    QStringList expected = {QStringLiteral("keep.txt"), QStringLiteral("sub"),
                            QStringLiteral("x~SV.tmp"), QFileInfo(inUse.Path()).fileName(),
                            QStringLiteral("~sv lower.tmp")};
    if (foreign)
        expected.append(QStringLiteral("~SV0theirs.tmp"));
    expected.sort();
    QStringList left =
        QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    left.sort();
    EXPECT_EQ(left, expected);
    EXPECT_TRUE(QFileInfo::exists(outside + QStringLiteral("/precious")));
    EXPECT_TRUE(QFileInfo::exists(folder + QStringLiteral("/sub/~SVdeep.tmp")));
    EXPECT_TRUE(QFileInfo::exists(inUse.Path() + QStringLiteral("/working")));
}

}  // namespace
