#include "platform/ProcessUtilityLibrary.h"

#include "platform/ApplicationPath.h"

#include <QByteArray>

#include <cstdint>

#include <dlfcn.h>
#include <unistd.h>

namespace {

// The library is found the way the program's other closed libraries are: by its relative name,
// with the working directory set to the application directory.
constexpr const char* LibraryName = "./libquonvexa.so";

// Every call opens the library, resolves one symbol, calls it and closes it again, so a library
// that appears or disappears between calls is noticed. It stays mapped once loaded
// (RTLD_NODELETE): unloading it would also unload the X client library it brings along.
class LoadedLibrary final
{
public:
    explicit LoadedLibrary(const QString& applicationDir) : m_guard(applicationDir)
    {
        // The dynamic loader matches an already loaded "./libquonvexa.so" by its name alone,
        // whatever the working directory; so look for the file itself first.
        if (::access(LibraryName, R_OK) == 0)
            m_handle = ::dlopen(LibraryName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    }
    ~LoadedLibrary()
    {
        if (m_handle)
            ::dlclose(m_handle);
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    template <class Function> Function* Resolve(const char* name) const
    {
        if (!m_handle)
            return nullptr;
        // POSIX guarantees that a data pointer from dlsym converts to a function pointer.
        return reinterpret_cast<Function*>(::dlsym(m_handle, name));
    }

private:
    WorkingDirectoryGuard m_guard;
    void* m_handle = nullptr;
};

using GetParentProcessIDFn = std::int32_t(std::int32_t);
using GetProcessHwndFn = std::intptr_t(std::int32_t);
using GetProcessIDFn = std::int32_t(char*, std::int32_t);
using GetProcessHwndExFn = std::intptr_t(std::int32_t, char*);
using GetWindowRectFn = std::int32_t(std::intptr_t, std::int32_t*);
using GetProcessCountFn = std::int32_t(char*);
using ProcessFn = std::int32_t(std::int32_t);
using GetFileVersionFn = std::int32_t(char*);

class SharedProcessUtility final : public ProcessUtilityLibrary
{
public:
    explicit SharedProcessUtility(QString applicationDir)
        : m_applicationDir(std::move(applicationDir))
    {
    }

    qint32 GetParentProcessID(qint32 processId) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetParentProcessIDFn>("GetParentProcessID");
        return function ? function(processId) : 0;
    }

    qint64 GetProcessHwnd(qint32 processId) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetProcessHwndFn>("GetProcessHwnd");
        return function ? function(processId) : 0;
    }

    qint32 GetProcessID(const QString& programName, qint32 index) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetProcessIDFn>("GetProcessID");
        QByteArray name = programName.toLocal8Bit();
        return function ? function(name.data(), index) : 0;
    }

    qint64 GetProcessHwndEx(qint32 processId, QString& hint) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetProcessHwndExFn>("GetProcessHwndEx");
        if (!function)
            return 0;
        // The library may write a text of at most the hint's own length back into the buffer.
        QByteArray buffer = hint.toLocal8Bit();
        const qint64 window = function(processId, buffer.data());
        hint = QString::fromLocal8Bit(buffer.constData());
        return window;
    }

    bool GetWindowRect(qint64 window, ScreenRect& rect) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetWindowRectFn>("GetWindowRect");
        std::int32_t values[4] = {0, 0, 0, 0};
        if (!function || function(static_cast<std::intptr_t>(window), values) == 0)
            return false;
        rect = {values[0], values[1], values[2], values[3]};
        return true;
    }

    qint32 GetProcessCount(const QString& programName) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetProcessCountFn>("GetProcessCount");
        QByteArray name = programName.toLocal8Bit();
        return function ? function(name.data()) : 0;
    }

    qint32 QuitProcess(qint32 processId) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<ProcessFn>("QuitProcess");
        return function ? function(processId) : 0;
    }

    qint32 KillProcess(qint32 processId) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<ProcessFn>("KillProcess");
        return function ? function(processId) : 0;
    }

    qint32 GetFileVersion(const QString& path) override
    {
        const LoadedLibrary library(m_applicationDir);
        auto* function = library.Resolve<GetFileVersionFn>("GetFileVersion");
        QByteArray file = path.toLocal8Bit();
        return function ? function(file.data()) : 0;
    }

private:
    QString m_applicationDir;
};

}  // namespace

std::unique_ptr<ProcessUtilityLibrary> LoadProcessUtilityLibrary(const QString& applicationDir)
{
    return std::make_unique<SharedProcessUtility>(applicationDir);
}
