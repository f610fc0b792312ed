#include "platform/ApplicationPath.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

QString ApplicationPath()
{
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    // Before the application object exists the kernel still knows where the program lies.
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath();
}

WorkingDirectoryGuard::WorkingDirectoryGuard(const QString& dir) : m_previous(QDir::currentPath())
{
    QDir::setCurrent(dir);
}

WorkingDirectoryGuard::~WorkingDirectoryGuard()
{
    QDir::setCurrent(m_previous);
}
