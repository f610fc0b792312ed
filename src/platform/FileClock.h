#pragma once

// The current time as the file system stamps files. The kernel takes file times from its own
// clock, which may be coarser or finer than the one applications read, so "written after the
// start" is only decided reliably against a time the same file system has stamped.

#include <QDateTime>
#include <QString>

// The time a file written now in `directory` gets; the process clock when no file can be
// written there.
QDateTime CurrentFileSystemTime(const QString& directory);
