// Writes the scanned corpus of text recognition into a folder: <name>.pdf, a picture-only
// PDF, and <name>.txt, its words in reading order; with a page count, also scan-long.pdf, a
// scanned text document of that many pages, for timing and memory.
//   velmora_make_scans <folder> [pages]

#include "ScanFixtures.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>

int main(int argc, char** argv)
{
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: velmora_make_scans <folder> [pages]\n");
        return 2;
    }
    const std::string folder = argv[1];
    try {
        std::vector<velmora::fixtures::Fixture> scans = velmora::fixtures::ScanFixtures();
        if (argc == 3)
            scans.push_back(velmora::fixtures::Scanned(
                velmora::fixtures::LongTextDocument(std::atoi(argv[2]))));
        for (const auto& scan : scans) {
            velmora::fixtures::WritePdf(folder + "/" + scan.name + ".pdf", scan.pages);
            std::ofstream(folder + "/" + scan.name + ".txt") << scan.bodyText << "\n";
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
