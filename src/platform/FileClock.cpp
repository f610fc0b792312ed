#include "platform/FileClock.h"

#include <QFileInfo>
#include <QTemporaryFile>

QDateTime CurrentFileSystemTime(const QString& directory)
{
    QTemporaryFile probe(directory + QStringLiteral("/.~SVclock-XXXXXX"));
    if (!probe.open() || probe.write("t", 1) != 1 || !probe.flush())
        return QDateTime::currentDateTime();
    const QDateTime stamped = QFileInfo(probe.fileName()).lastModified();
    return stamped.isValid() ? stamped : QDateTime::currentDateTime();
}
