#include "core/TempFiles.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>
#include <cerrno>

#include <cstring>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
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

// Removes everything inside the open folder `fd`, depth first. Links are removed as links;
// a folder is entered only through a descriptor opened without following links, so nothing
// outside can be reached. False when something stays.
bool emptyFolder(int fd)
{
    const int listFd = ::dup(fd);
    if (listFd < 0)
        return false;
    DIR* directory = ::fdopendir(listFd);
    if (!directory) {
        ::close(listFd);
        return false;
    }
    bool emptied = true;
    while (const dirent* entry = ::readdir(directory)) {
        const char* name = entry->d_name;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0)
            continue;
        struct stat status = {};
        if (::fstatat(fd, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            emptied = false;
            continue;
        }
        if (S_ISDIR(status.st_mode)) {
            const int child = ::openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
            const bool childEmptied = child >= 0 && emptyFolder(child);
            if (child >= 0)
                ::close(child);
            if (!childEmptied || ::unlinkat(fd, name, AT_REMOVEDIR) != 0)
                emptied = false;
        } else if (::unlinkat(fd, name, 0) != 0) {
            emptied = false;
        }
    }
    ::closedir(directory);
    return emptied;
}

// Removes the folder `name` in the open folder `parentFd` with all it holds, unless a live
// run holds its lock. False when it stays.
bool removeFolder(int parentFd, const char* name)
{
    const int fd = ::openat(parentFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0)
        return false;
    // A running copy of the program keeps the lock; its folder is not left over.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return true;
    }
    const bool emptied = emptyFolder(fd);
    ::close(fd);
    return emptied && ::unlinkat(parentFd, name, AT_REMOVEDIR) == 0;
}

}  // namespace

QString MakeTempFile(quint32 unique)
{
    const QString folder = temporaryFolder();
    if (folder.isEmpty())
        return {};
    if (unique != 0)
        return folder + u'/' + nameFor(unique & 0xFFFFu);

    // Sixteen bits of name, as the names have always had: start anywhere and walk on past the
    // names that are taken.
    const quint32 start = QRandomGenerator::global()->bounded(1u, 0x10000u);
    for (quint32 step = 0; step < 0xFFFFu; ++step) {
        const quint32 number = (start - 1 + step) % 0xFFFFu + 1;
        QString path = folder + u'/' + nameFor(number);
        const int fd = ::open(QFile::encodeName(path).constData(),
                              O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd >= 0) {
            ::close(fd);
            return path;
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
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
        struct stat status = {};
        if (::fstatat(folderFd, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            break;
        // Another user's file in a shared folder could never be deleted and would stop every
        // sweep.
        if (status.st_uid != user)
            continue;
        const bool removed = S_ISDIR(status.st_mode)
                                 ? removeFolder(folderFd, name.constData())
                                 : ::unlinkat(folderFd, name.constData(), 0) == 0;
        if (!removed)
            break;
    }
    ::closedir(directory);
}

TempFolder::TempFolder()
{
    const QString folder = temporaryFolder();
    if (folder.isEmpty())
        return;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QString path = folder + u'/' + TempFilePrefix +
                             QString::number(QRandomGenerator::global()->generate(), 16).toUpper() +
                             QStringLiteral(".dir");
        const QByteArray encoded = QFile::encodeName(path);
        if (::mkdir(encoded.constData(), 0700) != 0) {
            if (errno == EEXIST)
                continue;
            return;
        }
        m_lock = ::open(encoded.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (m_lock >= 0)
            ::flock(m_lock, LOCK_EX);
        m_path = path;
        return;
    }
}

TempFolder::~TempFolder()
{
    if (m_path.isEmpty())
        return;
    if (m_lock >= 0) {
        emptyFolder(m_lock);
        ::close(m_lock);
    }
    ::rmdir(QFile::encodeName(m_path).constData());
}
