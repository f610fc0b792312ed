#pragma once

// The application directory: where the program, its engine, the libraries it loads and its
// help live. No trailing separator.

#include <QString>

QString ApplicationPath();

// Sets the working directory to `dir` for the lifetime of the guard and restores it after.
class WorkingDirectoryGuard final
{
public:
    explicit WorkingDirectoryGuard(const QString& dir);
    ~WorkingDirectoryGuard();
    WorkingDirectoryGuard(const WorkingDirectoryGuard&) = delete;
    WorkingDirectoryGuard& operator=(const WorkingDirectoryGuard&) = delete;

private:
    QString m_previous;
};
