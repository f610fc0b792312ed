#include "platform/FileClock.h"

#include <QFileInfo>
#include <QTemporaryFile>

namespace {

class FileSystemClock final : public FileClock
{
public:
    QDateTime Now(const QString& directory) override
    {
        QTemporaryFile probe(directory + QStringLiteral("/.~SVclock-XXXXXX"));
        if (!probe.open() || probe.write("t", 1) != 1 || !probe.flush())
            return QDateTime::currentDateTime();
        const QDateTime stamped = QFileInfo(probe.fileName()).lastModified();
        return stamped.isValid() ? stamped : QDateTime::currentDateTime();
    }

    QDateTime WrittenAt(const QString& path) override
    {
        const QFileInfo file(path);
        return file.exists() ? file.lastModified() : QDateTime();
    }
};

}  // namespace

std::unique_ptr<FileClock> CreateFileClock()
{
    return std::make_unique<FileSystemClock>();
}
