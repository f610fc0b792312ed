#include "core/TempFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Each test gets a temporary folder of its own through TMPDIR, the variable that names the
// user's temporary folder here.
class TempFilesTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_previous = qgetenv("TMPDIR");
        ASSERT_TRUE(m_dir.isValid());
        m_folder = m_dir.path() + QStringLiteral("/tmp");
        ASSERT_TRUE(QDir().mkpath(m_folder));
        qputenv("TMPDIR", QFile::encodeName(m_folder));
    }
    void TearDown() override { qputenv("TMPDIR", m_previous); }

    void make(const QString& name)
    {
        QFile file(m_folder + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    }

    QStringList left() const
    {
        QStringList names = QDir(m_folder).entryList(QDir::AllEntries | QDir::Hidden |
                                                     QDir::System | QDir::NoDotAndDotDot);
        names.sort();
        return names;
    }

    QTemporaryDir m_dir;
    QString m_folder;
    QByteArray m_previous;
};

TEST_F(TempFilesTest, MakesAnEmptyPrivateFileWithThePrefixInTheTemporaryFolder)
{
    const QRegularExpression pattern(QStringLiteral("^~SV[0-9A-F]{1,4}\\.tmp$"));
    QSet<QString> made;
    for (int i = 0; i < 20; ++i) {
        const QString path = MakeTempFile(0);
        const QFileInfo info(path);
        EXPECT_EQ(info.absolutePath(), m_folder);
        EXPECT_TRUE(pattern.match(info.fileName()).hasMatch()) << path.toStdString();
        EXPECT_TRUE(info.isFile());
        EXPECT_EQ(info.size(), 0);
        struct stat status;
        ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600u) << "the preview may show a private document";
        made.insert(path);
    }
    EXPECT_EQ(made.size(), 20) << "a name was given twice";
}

TEST_F(TempFilesTest, AGivenNumberMakesTheNameWithoutCreatingAFile)
{
    struct Row
    {
        quint32 unique;
        const char* name;
    };
    const Row rows[] = {{0x1A2B, "~SV1A2B.tmp"}, {0x12345, "~SV2345.tmp"}, {7, "~SV7.tmp"}};
    for (const Row& row : rows) {
        const QString path = MakeTempFile(row.unique);
        EXPECT_EQ(path, m_folder + u'/' + QString::fromLatin1(row.name));
        EXPECT_FALSE(QFileInfo::exists(path));
    }
}

TEST_F(TempFilesTest, AMissingTemporaryFolderGivesNoNameAndNothingToSweep)
{
    const QString missing = m_dir.path() + QStringLiteral("/no such folder");
    qputenv("TMPDIR", QFile::encodeName(missing));
    EXPECT_EQ(MakeTempFile(0), QString());
    SweepTempFiles();
    EXPECT_FALSE(QFileInfo::exists(missing));
}

TEST_F(TempFilesTest, SweepTakesEveryFileAndLeftoverFolderWithThePrefixAndNothingElse)
{
    const QString made = QFileInfo(MakeTempFile(0)).fileName();
    for (const char* name : {"~SVBEEF.tmp.rtf", "~SVBEEF.tmp_1.bmp", "~SVno-dot", "~SV",
                             "~SVreadonly.tmp", "keep.txt", "x~SV.tmp", "~sv lower.tmp", "SV.tmp"})
        make(QString::fromLatin1(name));
    QFile::setPermissions(m_folder + QStringLiteral("/~SVreadonly.tmp"), QFile::ReadOwner);
    // A killed run's folder goes with all it holds; links in it go, what they point to stays.
    const QString outside = m_dir.path() + QStringLiteral("/outside");
    ASSERT_TRUE(QDir().mkpath(outside));
    QFile(outside + QStringLiteral("/precious")).open(QIODevice::WriteOnly);
    ASSERT_TRUE(QDir().mkpath(m_folder + QStringLiteral("/~SVleft.dir/profile/user")));
    make(QStringLiteral("~SVleft.dir/profile/user/registry.xcu"));
    ASSERT_TRUE(QFile::link(outside, m_folder + QStringLiteral("/~SVleft.dir/profile/out")));
    ASSERT_TRUE(QFile::link(outside, m_folder + QStringLiteral("/~SVlink")));
    // Files in other folders are not ours to take.
    ASSERT_TRUE(QDir().mkpath(m_folder + QStringLiteral("/sub")));
    QFile(m_folder + QStringLiteral("/sub/~SVdeep.tmp")).open(QIODevice::WriteOnly);
    // The folder of a run that is still at work stays.
    const TempFolder inUse;
    ASSERT_TRUE(inUse.IsValid());
    make(QFileInfo(inUse.Path()).fileName() + QStringLiteral("/working"));

    SweepTempFiles();

    EXPECT_EQ(left(),
              (QStringList{QStringLiteral("SV.tmp"), QStringLiteral("keep.txt"),
                           QStringLiteral("sub"), QStringLiteral("x~SV.tmp"),
                           QFileInfo(inUse.Path()).fileName(), QStringLiteral("~sv lower.tmp")}))
        << made.toStdString();
    EXPECT_TRUE(QFileInfo::exists(outside + QStringLiteral("/precious")));
    EXPECT_TRUE(QFileInfo::exists(m_folder + QStringLiteral("/sub/~SVdeep.tmp")));
    EXPECT_TRUE(QFileInfo::exists(inUse.Path() + QStringLiteral("/working")));
}

TEST_F(TempFilesTest, TempFolderIsPrivateAndGoesWithAllItHolds)
{
    QString path;
    {
        const TempFolder folder;
        ASSERT_TRUE(folder.IsValid());
        path = folder.Path();
        EXPECT_TRUE(QFileInfo(path).fileName().startsWith(QStringLiteral("~SV")));
        EXPECT_EQ(QFileInfo(path).absolutePath(), m_folder);
        EXPECT_EQ(QFile::permissions(path) & 0x0077, QFileDevice::Permissions{}) << "group, others";
        ASSERT_TRUE(QDir().mkpath(path + QStringLiteral("/a/b")));
        make(QFileInfo(path).fileName() + QStringLiteral("/a/b/c"));
    }
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST_F(TempFilesTest, SweepLeavesOtherUsersFilesAndGoesOnPastThem)
{
    make(QStringLiteral("~SV1.tmp"));
    make(QStringLiteral("~SV2.tmp"));
    make(QStringLiteral("~SV3.tmp"));
    const QByteArray theirs = QFile::encodeName(m_folder + QStringLiteral("/~SV2.tmp"));
    if (::chown(theirs.constData(), ::getuid() + 4242, static_cast<gid_t>(-1)) != 0)
        GTEST_SKIP() << "only a privileged user can give a file to another user";
    SweepTempFiles();
    EXPECT_EQ(left(), QStringList{QStringLiteral("~SV2.tmp")});
}

}  // namespace
