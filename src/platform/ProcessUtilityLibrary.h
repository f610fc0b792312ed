#pragma once

// The process utility library: finding processes and their windows, and (for the word
// processor) counting, quitting and killing processes. The real one is our shared library
// libquonvexa.so in the application directory, loaded by its relative name with the working
// directory set to the application directory around each use. Every result of 0 means
// "not found", and a library that can't be loaded finds nothing.

#include <QString>
#include <QtGlobal>

#include <memory>

// A window's screen rectangle in pixels.
struct ScreenRect final
{
    qint32 left = 0;
    qint32 top = 0;
    qint32 right = 0;
    qint32 bottom = 0;
};

class ProcessUtilityLibrary
{
public:
    virtual ~ProcessUtilityLibrary() = default;

    virtual qint32 GetParentProcessID(qint32 processId) = 0;
    // The handle of the process's main (top-level) window, 0 when it has none or the
    // windowing system can't tell.
    virtual qint64 GetProcessHwnd(qint32 processId) = 0;
    // The id of a running process whose program file has this name (case ignored): the one at
    // place `index` among them, counted from 0.
    virtual qint32 GetProcessID(const QString& programName, qint32 index) = 0;
    // A window of the process that fits the hint; the library may rewrite the hint.
    virtual qint64 GetProcessHwndEx(qint32 processId, QString& hint) = 0;
    // The screen rectangle of a window found above; false when it can't be had.
    virtual bool GetWindowRect(qint64 window, ScreenRect& rect) = 0;

    virtual qint32 GetProcessCount(const QString& programName) = 0;
    virtual qint32 QuitProcess(qint32 processId) = 0;
    virtual qint32 KillProcess(qint32 processId) = 0;
    // The version of a program file as major << 16 | minor, 0 when unknown.
    virtual qint32 GetFileVersion(const QString& path) = 0;
};

// The real library, looked up in `applicationDir`.
std::unique_ptr<ProcessUtilityLibrary> LoadProcessUtilityLibrary(const QString& applicationDir);
