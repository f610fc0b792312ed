#include "ocr/TextReader.h"

#include <climits>

#include <dlfcn.h>
#include <unistd.h>

namespace velmora {

namespace {

// The folder of the running program, found from its real path so that a link to it or a
// wrapper on the PATH makes no difference.
std::string ProgramFolder()
{
    std::string path(PATH_MAX, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0)
        return {};
    path.resize(static_cast<std::size_t>(length));
    return path.substr(0, path.rfind('/'));
}

}  // namespace

TextReaderFactory::TextReaderFactory(std::string folder) : m_folder(std::move(folder))
{
}

TextReaderFactory::~TextReaderFactory() = default;

bool TextReaderFactory::load(std::string& error)
{
    if (m_create)
        return true;
    if (m_folder.empty())
        m_folder = ProgramFolder();
    const std::string path = m_folder + "/" + TextReaderModule;
    void* module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        const char* reason = dlerror();
        error = reason ? reason : path + ": cannot be loaded";
        return false;
    }
    m_create = reinterpret_cast<CreateTextReaderFunction>(dlsym(module, TextReaderEntryPoint));
    if (!m_create) {
        error = path + ": not a text recognition module of this program";
        dlclose(module);
        return false;
    }
    return true;
}

std::unique_ptr<TextReader> TextReaderFactory::create(const LanguageChoice& languages,
                                                      const std::atomic<bool>* stop) const
{
    if (!m_create)
        return nullptr;
    return std::unique_ptr<TextReader>(m_create(TextReaderInterfaceVersion, languages, stop));
}

}  // namespace velmora
