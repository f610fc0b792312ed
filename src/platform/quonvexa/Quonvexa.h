#pragma once

// The exported functions of libquonvexa.so: finding processes and their top-level windows,
// ending processes, and reading a program's version. Strings are NUL-terminated and in the
// locale's narrow encoding. A result of 0 always means "not found" or "failed".

#include <stdint.h>

#if defined(__GNUC__)
#define QUONVEXA_EXPORT __attribute__((visibility("default")))
#else
#define QUONVEXA_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

// The id of the process that started `pid`.
QUONVEXA_EXPORT int32_t GetParentProcessID(int32_t pid);

// The main top-level window of `pid` on the X display named by DISPLAY: a shown window that
// isn't a transient (a dialog) if there is one, else any of its top-level windows. 0 without
// a display or without such a window.
QUONVEXA_EXPORT intptr_t GetProcessHwnd(int32_t pid);

// The id of the running process at place `index` (from 0, in the order of process ids) among
// those whose program file name is `programName`, case ignored. The name is compared with the
// kernel's command name and with the file name of the process's executable.
QUONVEXA_EXPORT int32_t GetProcessID(char* programName, int32_t index);

// A top-level window of `pid` whose title contains `hint` (case ignored), or its main window
// when `hint` is NULL or empty. Buffer contract: `hint` is the caller's writable buffer, and its
// size is taken to be strlen(hint) + 1 at the call. When the chosen window's title fits into
// that size it is copied over the hint, so the caller learns the window's exact title; a longer
// title is never written and the hint stays as it was.
QUONVEXA_EXPORT intptr_t GetProcessHwndEx(int32_t pid, char* hint);

// The frame rectangle on the screen of a window found above, in pixels: left, top, right,
// bottom. Non-zero on success.
QUONVEXA_EXPORT int32_t GetWindowRect(intptr_t window, int32_t rect[4]);

// How many running processes have `programName` as their program file name (as in
// GetProcessID).
QUONVEXA_EXPORT int32_t GetProcessCount(char* programName);

// Asks the process to end (SIGTERM) and waits up to a second for it. Non-zero when it has
// ended within that time; 0 when it is still running, can't be signalled or doesn't exist.
QUONVEXA_EXPORT int32_t QuitProcess(int32_t pid);

// Ends the process by force (SIGKILL). Non-zero when the signal was sent.
QUONVEXA_EXPORT int32_t KillProcess(int32_t pid);

// The version of the program file at `path` as major << 16 | minor, read from the version file
// (versionrc or version.ini) that an office suite installs beside its programs. Symbolic links
// are followed first. 0 when the file or its version can't be found.
QUONVEXA_EXPORT int32_t GetFileVersion(char* path);

#ifdef __cplusplus
}
#endif
