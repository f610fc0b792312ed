#pragma once

// The engine's command line: source, target and switches.
//   -C  convert: required, so that a stray start does nothing
//   -P  preview: the pages become pictures (<stem>_<n>.bmp) and no document is written
//   -H  hidden: no progress lines on standard output; failures still give their one line

#include <optional>
#include <string>
#include <vector>

struct EngineCommandLine final
{
    std::string source;
    std::string target;
    bool convert = false;
    bool pictures = false;
    bool quiet = false;
};

// Empty with `error` set when the arguments don't make a run.
std::optional<EngineCommandLine> ParseEngineCommandLine(const std::vector<std::string>& args,
                                                        std::string& error);
