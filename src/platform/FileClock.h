#pragma once

// Time as the file system keeps it. The kernel stamps files from its own clock, which may be
// coarser or finer than the one applications read, so "written after the start" is only
// decided reliably against a time that the same file system has stamped.

#include <QDateTime>
#include <QString>

#include <memory>

class FileClock
{
public:
    virtual ~FileClock() = default;
    // The time a file written now in `directory` gets; the process clock when no file can be
    // written there.
    virtual QDateTime Now(const QString& directory) = 0;
    // When the file was last written; invalid when it can't be read.
    virtual QDateTime WrittenAt(const QString& path) = 0;
};

std::unique_ptr<FileClock> CreateFileClock();
