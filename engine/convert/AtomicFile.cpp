#include "convert/AtomicFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velmora {

AtomicFile::AtomicFile(std::string target, bool durable)
    : m_target(std::move(target)), m_durable(durable)
{
}

AtomicFile::~AtomicFile()
{
    discard();
}

void AtomicFile::discard()
{
    if (m_file) {
        std::fclose(m_file);
        m_file = nullptr;
    }
    if (!m_temporary.empty()) {
        ::unlink(m_temporary.c_str());
        m_temporary.clear();
    }
}

bool AtomicFile::open()
{
    // A short hidden name in the target's folder: the target's own name may already be as long
    // as a name can be, and the rename must not cross file systems.
    const std::size_t slash = m_target.find_last_of('/');
    std::string pattern =
        (slash == std::string::npos ? std::string() : m_target.substr(0, slash + 1)) + ".~vcXXXXXX";
    const int fd = ::mkstemp(pattern.data());
    if (fd < 0) {
        m_error = std::string("cannot write beside ") + m_target + ": " + std::strerror(errno);
        return false;
    }
    // mkstemp makes the file for its owner only; a document is as readable as any other.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd, 0666 & ~mask);
    m_temporary = pattern;
    m_file = ::fdopen(fd, "wb");
    if (!m_file) {
        ::close(fd);
        m_error = std::string("cannot write ") + m_target + ": " + std::strerror(errno);
        discard();
        return false;
    }
    return true;
}

bool AtomicFile::write(const void* data, std::size_t size)
{
    if (!m_file || m_failed)
        return false;
    if (size && std::fwrite(data, 1, size, m_file) != size) {
        m_failed = true;
        m_error = std::string("cannot write ") + m_target + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool AtomicFile::commit()
{
    if (!m_file || m_failed) {
        if (m_error.empty())
            m_error = "cannot write " + m_target;
        discard();
        return false;
    }
    const bool flushed = std::fflush(m_file) == 0 && (!m_durable || ::fsync(::fileno(m_file)) == 0);
    const bool closed = std::fclose(m_file) == 0;
    m_file = nullptr;
    if (!flushed || !closed || ::rename(m_temporary.c_str(), m_target.c_str()) != 0) {
        m_error = std::string("cannot write ") + m_target + ": " + std::strerror(errno);
        discard();
        return false;
    }
    m_temporary.clear();
    if (!m_durable)
        return true;
    // The rename itself is only durable once the folder is synced.
    const std::size_t slash = m_target.find_last_of('/');
    const std::string folder =
        slash == std::string::npos ? "." : (slash == 0 ? "/" : m_target.substr(0, slash));
    const int dir = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return true;
}

}  // namespace velmora
