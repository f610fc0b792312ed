// Writes each argument, ended by a NUL byte, to the file named by VELMORA_RECORD_FILE. With
// VELMORA_RECORD_HOLD it first waits (half a minute at most) until the file that variable names
// exists, so that a test can tell whether its caller waited for it.

#include <cstdio>
#include <cstdlib>
#include <string>

#include <unistd.h>

int main(int argc, char** argv)
{
    const char* hold = std::getenv("VELMORA_RECORD_HOLD");
    for (int waited = 0; hold && waited < 30000 && ::access(hold, F_OK) != 0; waited += 10)
        ::usleep(10000);
    const char* target = std::getenv("VELMORA_RECORD_FILE");
    if (!target)
        return 0;
    // Readers only ever see a complete record.
    const std::string partial = std::string(target) + ".partial";
    std::FILE* out = std::fopen(partial.c_str(), "wb");
    if (!out)
        return 1;
    for (int i = 1; i < argc; ++i)
        std::fwrite(argv[i], 1, std::char_traits<char>::length(argv[i]) + 1, out);
    std::fclose(out);
    return std::rename(partial.c_str(), target);
}
