// Plays the conversion engine in the flow's tests. Copied into a test's application directory
// as VelmoraConverter, it records its arguments beside itself and does what the file
// "standin.mode" there says: "write" (the default) writes the target, or for a preview run
// (-P) a small picture of page 1; "nothing" writes nothing; "crash" aborts; "sleep" waits two
// seconds first and then writes; "hold" waits until a file "standin.release" appears beside it
// (a minute at most; it gives up when its folder goes) and then writes.

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string DirectoryOf(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

void Put16(std::ofstream& out, std::uint16_t v)
{
    out.put(static_cast<char>(v & 0xFF));
    out.put(static_cast<char>(v >> 8));
}

void Put32(std::ofstream& out, std::uint32_t v)
{
    Put16(out, static_cast<std::uint16_t>(v & 0xFFFF));
    Put16(out, static_cast<std::uint16_t>(v >> 16));
}

// A 24-bit bottom-up Windows bitmap of a grey page with a dark line, `width` by `height`.
void WriteBitmap(const std::string& path, int width, int height)
{
    std::ofstream out(path, std::ios::binary);
    const int rowBytes = (width * 3 + 3) / 4 * 4;
    const std::uint32_t dataSize = static_cast<std::uint32_t>(rowBytes * height);
    out.put('B');
    out.put('M');
    Put32(out, 54 + dataSize);
    Put32(out, 0);
    Put32(out, 54);
    Put32(out, 40);
    Put32(out, static_cast<std::uint32_t>(width));
    Put32(out, static_cast<std::uint32_t>(height));
    Put16(out, 1);
    Put16(out, 24);
    Put32(out, 0);
    Put32(out, dataSize);
    Put32(out, 2835);
    Put32(out, 2835);
    Put32(out, 0);
    Put32(out, 0);
    for (int y = 0; y < height; ++y) {
        std::vector<char> row(static_cast<size_t>(rowBytes), static_cast<char>(0xF0));
        if (y == height / 2)
            for (int x = 0; x < width * 3; ++x)
                row[static_cast<size_t>(x)] = 0x20;
        out.write(row.data(), static_cast<std::streamsize>(row.size()));
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string dir = DirectoryOf(argv[0]);
    {
        std::ofstream record(dir + "/standin.args", std::ios::app);
        for (int i = 1; i < argc; ++i)
            record << argv[i] << '\n';
        record << "--\n";
    }
    std::string mode = "write";
    int width = 60;
    int height = 80;
    {
        std::ifstream modeFile(dir + "/standin.mode");
        if (modeFile)
            modeFile >> mode >> width >> height;
        if (width <= 0 || height <= 0) {
            width = 60;
            height = 80;
        }
    }
    if (mode == "crash")
        std::abort();
    if (mode == "nothing")
        return 0;
    if (argc < 3)
        return 2;
    if (mode == "sleep")
        std::this_thread::sleep_for(std::chrono::seconds(2));
    if (mode == "hold") {
        for (int waited = 0; waited < 60000 && !std::ifstream(dir + "/standin.release");
             waited += 20) {
            if (!std::ifstream(dir + "/standin.mode"))
                return 1;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

    bool preview = false;
    for (int i = 3; i < argc; ++i)
        preview = preview || std::string(argv[i]) == "-P";
    const std::string target = argv[2];
    if (preview) {
        const std::string stem = target.size() > 4 ? target.substr(0, target.size() - 4) : target;
        WriteBitmap(stem + "_1.bmp", width, height);
        return 0;
    }
    // A real engine takes longer than one tick of the clock that stamps files.
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    std::ofstream out(target, std::ios::binary | std::ios::trunc);
    out << "{\\rtf1\\ansi stand-in}";
    return out ? 0 : 1;
}
