#pragma once

// The office suite that turns the engine's Rich Text Format into a real Word 97-2003 document.
// On this platform it is LibreOffice, run headless on one document at a time with a private
// user profile, so that a LibreOffice the user has open is never handed the job.

#include <QString>
#include <QtGlobal>

#include <functional>
#include <memory>

// The name under which the suite's worker processes appear in the process table.
inline const QString OfficeProcessName = QStringLiteral("soffice.bin");

// One conversion: all paths absolute, both directories private to the caller.
struct OfficeJob final
{
    // The document to convert: Rich Text Format, whatever its extension.
    QString source;
    // Where the converted copy is written, under the source's file name.
    QString outputDirectory;
    // The private user profile. The suite fills it on first use.
    QString profileDirectory;
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
};

class OfficeSuite
{
public:
    virtual ~OfficeSuite() = default;

    // The full path of the suite's program, empty when none is installed or it can't be run.
    virtual QString FindProgram() = 0;
    // Starts `program` headless on `job`. A profile that is new is made ready first, which can
    // take a moment: `whileWaiting` runs between the short slices of that wait (it may be
    // empty). Null when the program can't be started.
    virtual std::unique_ptr<OfficeProcess>
    StartConversion(const QString& program, const OfficeJob& job,
                    const std::function<void()>& whileWaiting) = 0;
};

// The suite installed on this system.
OfficeSuite& InstalledOfficeSuite();
