#include "app/EngineCommandLine.h"

std::optional<EngineCommandLine> ParseEngineCommandLine(const std::vector<std::string>& args,
                                                        std::string& error)
{
    EngineCommandLine line;
    std::vector<std::string> paths;
    for (const std::string& arg : args) {
        if (arg.size() == 2 && arg[0] == '-') {
            switch (arg[1]) {
            case 'C':
            case 'c':
                line.convert = true;
                continue;
            case 'P':
            case 'p':
                line.pictures = true;
                continue;
            case 'H':
            case 'h':
                line.quiet = true;
                continue;
            default:
                error = "unknown switch " + arg;
                return std::nullopt;
            }
        }
        paths.push_back(arg);
    }
    if (paths.size() != 2) {
        error = "usage: VelmoraConverter <source.pdf> <target> -C [-P] [-H]";
        return std::nullopt;
    }
    if (!line.convert) {
        error = "nothing to do without -C";
        return std::nullopt;
    }
    line.source = paths[0];
    line.target = paths[1];
    if (line.source.empty() || line.target.empty()) {
        error = "the source and the target must be named";
        return std::nullopt;
    }
    return line;
}
