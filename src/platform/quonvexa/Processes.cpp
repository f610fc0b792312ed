#include "Quonvexa.h"

#include "Guarded.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <dirent.h>
#include <signal.h>
#include <unistd.h>

namespace {

// The kernel keeps at most this many characters of a command name.
constexpr std::size_t CommandNameLimit = 15;

struct ProcessStatus
{
    char state = '?';
    int32_t parent = 0;
};

std::string ProcPath(int32_t pid, const char* entry)
{
    return "/proc/" + std::to_string(pid) + "/" + entry;
}

// Reads the state and parent id from /proc/<pid>/stat. The command name in parentheses may
// itself hold spaces and parentheses, so the fields are read after the last ')'.
bool ReadStatus(int32_t pid, ProcessStatus& status)
{
    std::ifstream file(ProcPath(pid, "stat"));
    std::string line;
    if (!file || !std::getline(file, line))
        return false;
    const std::size_t close = line.rfind(')');
    if (close == std::string::npos)
        return false;
    char state = 0;
    int parent = 0;
    if (std::sscanf(line.c_str() + close + 1, " %c %d", &state, &parent) != 2)
        return false;
    status.state = state;
    status.parent = parent;
    return true;
}

// A zombie has ended even though its entry is still there until its parent reaps it.
bool IsRunning(int32_t pid)
{
    ProcessStatus status;
    return ReadStatus(pid, status) && status.state != 'Z' && status.state != 'X';
}

bool EqualNoCase(const std::string& a, const std::string& b)
{
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

std::string ExecutableName(int32_t pid)
{
    std::vector<char> buffer(4096);
    const ssize_t length = ::readlink(ProcPath(pid, "exe").c_str(), buffer.data(), buffer.size());
    if (length <= 0 || static_cast<std::size_t>(length) >= buffer.size())
        return {};
    std::string target(buffer.data(), static_cast<std::size_t>(length));
    // A program file replaced while it runs is shown with this mark.
    const std::string deleted = " (deleted)";
    if (target.size() > deleted.size() &&
        target.compare(target.size() - deleted.size(), deleted.size(), deleted) == 0)
        target.resize(target.size() - deleted.size());
    const std::size_t slash = target.rfind('/');
    return slash == std::string::npos ? target : target.substr(slash + 1);
}

std::string CommandName(int32_t pid)
{
    std::ifstream file(ProcPath(pid, "comm"));
    std::string name;
    std::getline(file, name);
    return name;
}

// The executable's link can only be read for our own processes; the command name is readable
// for all, but the kernel cuts it short, so a cut name only counts when the link can't be read.
bool RunsProgram(int32_t pid, const std::string& programName)
{
    const std::string executable = ExecutableName(pid);
    if (EqualNoCase(executable, programName))
        return true;
    const std::string command = CommandName(pid);
    if (command.empty())
        return false;
    if (EqualNoCase(command, programName))
        return true;
    return executable.empty() && command.size() == CommandNameLimit &&
           programName.size() > CommandNameLimit &&
           EqualNoCase(command, programName.substr(0, CommandNameLimit));
}

std::vector<int32_t> ProcessIds()
{
    std::vector<int32_t> ids;
    DIR* dir = ::opendir("/proc");
    if (!dir)
        return ids;
    while (const dirent* entry = ::readdir(dir)) {
        const char* name = entry->d_name;
        if (*name == '\0' || std::strspn(name, "0123456789") != std::strlen(name))
            continue;
        ids.push_back(static_cast<int32_t>(std::strtol(name, nullptr, 10)));
    }
    ::closedir(dir);
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::vector<int32_t> ProcessesRunning(const char* programName)
{
    std::vector<int32_t> found;
    if (!programName || *programName == '\0')
        return found;
    const std::string name(programName);
    for (const int32_t pid : ProcessIds()) {
        if (RunsProgram(pid, name) && IsRunning(pid))
            found.push_back(pid);
    }
    return found;
}

}  // namespace

extern "C" {

int32_t GetParentProcessID(int32_t pid)
{
    return Guarded([pid]() -> int32_t {
        ProcessStatus status;
        if (pid <= 0 || !ReadStatus(pid, status))
            return 0;
        return status.parent;
    });
}

int32_t GetProcessID(char* programName, int32_t index)
{
    return Guarded([programName, index]() -> int32_t {
        const std::vector<int32_t> found = ProcessesRunning(programName);
        if (index < 0 || static_cast<std::size_t>(index) >= found.size())
            return 0;
        return found[static_cast<std::size_t>(index)];
    });
}

int32_t GetProcessCount(char* programName)
{
    return Guarded([programName]() -> int32_t {
        return static_cast<int32_t>(ProcessesRunning(programName).size());
    });
}

int32_t QuitProcess(int32_t pid)
{
    return Guarded([pid]() -> int32_t {
        // 0 and negative ids would signal whole process groups.
        if (pid <= 0 || !IsRunning(pid) || ::kill(pid, SIGTERM) != 0)
            return 0;
        using namespace std::chrono;
        const auto deadline = steady_clock::now() + milliseconds(1000);
        while (IsRunning(pid)) {
            if (steady_clock::now() >= deadline)
                return 0;
            std::this_thread::sleep_for(milliseconds(10));
        }
        return 1;
    });
}

int32_t KillProcess(int32_t pid)
{
    return Guarded([pid]() -> int32_t {
        if (pid <= 0)
            return 0;
        return ::kill(pid, SIGKILL) == 0 ? 1 : 0;
    });
}

}  // extern "C"
