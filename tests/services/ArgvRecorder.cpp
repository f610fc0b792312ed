// Writes its working directory and then each argument, every one ended by a NUL byte, to the
// file named by VELMORA_RECORD_FILE. VELMORA_RECORD_DELAY_MS delays the record (and the exit);
// VELMORA_RECORD_EXIT gives the exit code.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

#include <unistd.h>

int main(int argc, char** argv)
{
    if (const char* delay = std::getenv("VELMORA_RECORD_DELAY_MS"))
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(delay)));
    const char* target = std::getenv("VELMORA_RECORD_FILE");
    if (target) {
        const std::string partial = std::string(target) + ".partial";
        if (std::FILE* out = std::fopen(partial.c_str(), "wb")) {
            char cwd[4096] = {};
            if (!::getcwd(cwd, sizeof cwd))
                cwd[0] = '\0';
            std::fwrite(cwd, 1, std::char_traits<char>::length(cwd) + 1, out);
            for (int i = 1; i < argc; ++i)
                std::fwrite(argv[i], 1, std::char_traits<char>::length(argv[i]) + 1, out);
            std::fclose(out);
            // Readers only ever see a complete record.
            std::rename(partial.c_str(), target);
        }
    }
    const char* exitCode = std::getenv("VELMORA_RECORD_EXIT");
    return exitCode ? std::atoi(exitCode) : 0;
}
