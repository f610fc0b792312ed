#pragma once

// The argument recorder: a small program of the tests that writes down where it ran and what
// arguments it got.

#include "TestPaths.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QStringList>
#include <QThread>

#include <optional>

inline QString RecorderProgram()
{
    return QStringLiteral(VELMORA_TEST_BINARY_DIR "/services_argv_recorder");
}

struct Recorded final
{
    QString workingDirectory;
    QStringList arguments;
};

// The record at `file`, waiting up to `timeoutMs` for it to appear.
inline std::optional<Recorded> ReadRecord(const QString& file, int timeoutMs = 0)
{
    QElapsedTimer clock;
    clock.start();
    while (!QFile::exists(file)) {
        if (clock.elapsed() >= timeoutMs)
            return std::nullopt;
        QThread::msleep(10);
    }
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        return std::nullopt;
    QList<QByteArray> parts = in.readAll().split('\0');
    parts.removeLast();  // every field ends in a NUL
    Recorded record;
    if (parts.isEmpty())
        return record;
    record.workingDirectory = QString::fromUtf8(parts.takeFirst());
    for (const QByteArray& part : parts)
        record.arguments.append(QString::fromUtf8(part));
    return record;
}
