#include "Quonvexa.h"

#include "Guarded.h"

#include <cctype>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include <sys/stat.h>

namespace {

// Where an office suite states its version, beside its programs: the installer's version
// file ("7.4.7.2") and, where a distribution leaves that out, the product key of the bootstrap
// file ("LibreOffice 7.4"). Unix-like layouts name them ...rc, Windows layouts ....ini.
struct VersionSource
{
    const char* file;
    const char* key;
};
constexpr VersionSource VersionSources[] = {
    {"versionrc", "MsiProductVersion"},
    {"version.ini", "MsiProductVersion"},
    {"bootstraprc", "ProductKey"},
    {"bootstrap.ini", "ProductKey"},
};

std::string Trimmed(const std::string& text)
{
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

bool SameKey(const std::string& a, const char* b)
{
    std::size_t i = 0;
    for (; i < a.size() && b[i] != '\0'; ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return i == a.size() && b[i] == '\0';
}

// Reads one number of at most 16 bits from the start of `text`; false when there is none.
bool ReadPart(const char*& text, int32_t& value)
{
    if (!std::isdigit(static_cast<unsigned char>(*text)))
        return false;
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (number > 0xFFFF)
        return false;
    value = static_cast<int32_t>(number);
    text = end;
    return true;
}

// The first word of `text` that starts with a digit, read as a version: "7.4.7.2" gives
// 0x00070004, "LibreOffice 7.4" gives 0x00070004 and a lone "7" gives 0x00070000.
int32_t ParseVersion(const std::string& text)
{
    std::istringstream words(text);
    std::string word;
    while (words >> word) {
        if (!std::isdigit(static_cast<unsigned char>(word.front())))
            continue;
        const char* p = word.c_str();
        int32_t major = 0;
        int32_t minor = 0;
        if (!ReadPart(p, major))
            return 0;
        if (*p == '.') {
            ++p;
            if (!ReadPart(p, minor))
                minor = 0;
        }
        return (major << 16) | minor;
    }
    return 0;
}

int32_t VersionFromFile(const std::string& file, const char* key)
{
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        const auto equals = line.find('=');
        if (equals == std::string::npos || !SameKey(Trimmed(line.substr(0, equals)), key))
            continue;
        if (const int32_t version = ParseVersion(Trimmed(line.substr(equals + 1))))
            return version;
    }
    return 0;
}

}  // namespace

extern "C" {

int32_t GetFileVersion(char* path)
{
    return Guarded([path]() -> int32_t {
        if (!path || *path == '\0')
            return 0;
        // A launcher link such as /usr/bin/soffice leads to the installation's directory.
        char resolved[PATH_MAX];
        struct stat info = {};
        if (!::realpath(path, resolved) || ::stat(resolved, &info) != 0 || !S_ISREG(info.st_mode))
            return 0;
        std::string directory(resolved);
        directory.resize(directory.rfind('/') + 1);
        for (const VersionSource& source : VersionSources) {
            if (const int32_t version = VersionFromFile(directory + source.file, source.key))
                return version;
        }
        return 0;
    });
}

}  // extern "C"
