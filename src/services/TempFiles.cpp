#include "services/TempFiles.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <cerrno>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// QDir::tempPath follows TMPDIR, as the user's temporary folder should.
QString temporaryFolder()
{
    return QDir::tempPath();
}

QString nameFor(quint32 number)
{
    return TempFilePrefix + QString::number(number, 16).toUpper() + QStringLiteral(".tmp");
}

}  // namespace

QString MakeTempFile(quint32 unique)
{
    const QString folder = temporaryFolder();
    if (folder.isEmpty())
        return QString();
    if (unique != 0)
        return folder + u'/' + nameFor(unique & 0xFFFFu);

    // Sixteen bits of name, as the names have always had: start anywhere and walk on past the
    // names that are taken.
    const quint32 start = QRandomGenerator::global()->bounded(1u, 0x10000u);
    for (quint32 step = 0; step < 0xFFFFu; ++step) {
        const quint32 number = (start - 1 + step) % 0xFFFFu + 1;
        const QString path = folder + u'/' + nameFor(number);
        const int fd = ::open(QFile::encodeName(path).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd >= 0) {
            ::close(fd);
            return path;
        }
        if (errno != EEXIST)
            return QString();
    }
    return QString();
}

void SweepTempFiles()
{
    const QByteArray folder = QFile::encodeName(temporaryFolder());
    DIR* directory = ::opendir(folder.constData());
    if (!directory)
        return;
    const QByteArray prefix = QFile::encodeName(TempFilePrefix);
    QList<QByteArray> names;
    while (const dirent* entry = ::readdir(directory)) {
        const QByteArray name(entry->d_name);
        if (name.startsWith(prefix))
            names.append(name);
    }
    std::sort(names.begin(), names.end());

    const int folderFd = ::dirfd(directory);
    const uid_t user = ::getuid();
    for (const QByteArray& name : names) {
        struct stat status;
        if (::fstatat(folderFd, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            break;
        // Only files: a folder of that name is not one of ours. Another user's file in a
        // shared folder could never be deleted and would stop every sweep.
        if (S_ISDIR(status.st_mode) || status.st_uid != user)
            continue;
        if (::unlinkat(folderFd, name.constData(), 0) != 0)
            break;
    }
    ::closedir(directory);
}
