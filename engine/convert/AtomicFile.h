#pragma once

// A file that appears whole or not at all: written under a short temporary name (".~vcXXXXXX")
// in the target's folder, flushed to disk, then renamed over the target. Dropped without commit(),
// it leaves the older file under the target's name untouched.

#include <cstddef>
#include <cstdio>
#include <string>

namespace velmora {

class AtomicFile final
{
public:
    // `durable` also syncs the file and its folder to disk before and after the rename; a
    // preview picture that only lives for the run doesn't need it.
    explicit AtomicFile(std::string target, bool durable = true);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    // False with error() set when the temporary file can't be made.
    bool open();
    bool write(const void* data, std::size_t size);
    bool write(const std::string& text) { return write(text.data(), text.size()); }
    // Flushes, syncs and renames; false with error() set on any failure.
    bool commit();
    const std::string& error() const { return m_error; }

private:
    void discard();

    std::string m_target;
    std::string m_temporary;
    std::FILE* m_file = nullptr;
    bool m_durable = true;
    bool m_failed = false;
    std::string m_error;
};

}  // namespace velmora
