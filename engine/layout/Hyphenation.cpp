#include "layout/Hyphenation.h"

#include <hunspell.h>

#include <memory>

namespace velmora {

namespace {

struct Dictionary
{
    Hunhandle* handle = nullptr;
    Dictionary()
    {
        // Debian's English dictionary; the engine works the same without it, only less well.
        const char* aff = "/usr/share/hunspell/en_US.aff";
        const char* dic = "/usr/share/hunspell/en_US.dic";
        if (FILE* probe = std::fopen(dic, "rb")) {
            std::fclose(probe);
            handle = Hunspell_create(aff, dic);
        }
    }
    ~Dictionary()
    {
        if (handle)
            Hunspell_destroy(handle);
    }
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;

    bool knows(const std::string& word) const
    {
        return handle && !word.empty() && Hunspell_spell(handle, word.c_str()) != 0;
    }
};

const Dictionary& dictionary()
{
    static const Dictionary loaded;
    return loaded;
}

}  // namespace

bool KeepsLineEndHyphen(const std::string& first, const std::string& second)
{
    const Dictionary& words = dictionary();
    if (!words.handle)
        return false;
    return !words.knows(first + second) && words.knows(first) && words.knows(second);
}

}  // namespace velmora
