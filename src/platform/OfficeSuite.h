#pragma once

// The office suite that turns the engine's Rich Text Format into a real Word 97-2003 document.
// On this platform it is LibreOffice, run headless on one document at a time with a user
// profile of the program's own, so that a LibreOffice the user has open is never handed the job.
// The profile is kept in the user's cache between runs: building one costs a good part of a
// conversion.

#include <QString>
#include <QtGlobal>

#include <memory>

// The name under which the suite's worker processes appear in the process table.
inline const QString OfficeProcessName = QStringLiteral("soffice.bin");

// One conversion: all paths absolute, both folders private to the caller.
struct OfficeJob final
{
    // The document to convert: Rich Text Format, whatever its extension.
    QString source;
    // Where the converted copy is written, under the source's file name.
    QString outputDirectory;
    // The suite's own temporary files go here, and a profile of its own when the kept one is
    // in use by another conversion.
    QString workDirectory;
};

// A started office process: the stand-in for the word processor's automation object.
// Releasing it collects the process; one that is still running is ended first, so none is left
// behind. Until it is released, the process id stays reserved for it even after it has ended.
class OfficeProcess
{
public:
    virtual ~OfficeProcess() = default;

    // Waits at most `timeoutMs` for the process to end; true once it has.
    virtual bool WaitForEnd(qint32 timeoutMs) = 0;
    // Whether it has ended by itself and reported success.
    virtual bool Succeeded() = 0;
    // Asks the process to end, and ends it by force if it doesn't.
    virtual void Quit() = 0;
    // The processor time it has used so far, in milliseconds, which tells a suite at work from
    // a hung one; -1 when it can't be told.
    virtual qint64 ProcessorTimeMs() = 0;
};

class OfficeSuite
{
public:
    virtual ~OfficeSuite() = default;

    // The full path of the suite's program, empty when none is installed or it can't be run.
    virtual QString FindProgram() = 0;
    // Starts `program` headless on `job`; null when the program can't be started.
    virtual std::unique_ptr<OfficeProcess> StartConversion(const QString& program,
                                                           const OfficeJob& job) = 0;
};

class ProcessLauncher;

// LibreOffice, started through `launcher`, with its profile kept in `profileHome`: made by the
// first conversion, and made anew after a conversion that failed with it.
std::unique_ptr<OfficeSuite> CreateLibreOffice(ProcessLauncher& launcher,
                                               const QString& profileHome);

// The user's place for that profile: the program's folder in the cache ($XDG_CACHE_HOME).
QString OfficeProfileHome();
