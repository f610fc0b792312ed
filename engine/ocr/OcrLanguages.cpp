#include "ocr/OcrLanguages.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

namespace fs = std::filesystem;

// Where Debian's tesseract-ocr-* packages put their data, newest layout first.
constexpr const char* DistributionFolders[] = {"/usr/share/tesseract-ocr/5/tessdata",
                                               "/usr/share/tesseract-ocr/4.00/tessdata",
                                               "/usr/share/tessdata"};

bool installed(const std::string& folder, const std::string& language)
{
    std::error_code error;
    return !folder.empty() &&
           fs::is_regular_file(fs::path(folder) / (language + ".traineddata"), error);
}

bool holdsLanguageData(const fs::path& folder)
{
    std::error_code error;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (it->path().extension() == ".traineddata")
            return true;
    }
    return false;
}

std::string packageOf(std::string language)
{
    std::replace(language.begin(), language.end(), '_', '-');
    return "tesseract-ocr-" + language;
}

}  // namespace

bool InterfaceIsJapanese(const EnvironmentReader& environment)
{
    // The first of these that is set decides, as for the C library's message catalogues.
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = environment(name);
        if (value && *value)
            return std::string(value).rfind("ja", 0) == 0;
    }
    return false;
}

std::string LanguageDataFolder(const EnvironmentReader& environment)
{
    if (const char* prefix = environment("TESSDATA_PREFIX"); prefix && *prefix) {
        for (const fs::path& folder : {fs::path(prefix), fs::path(prefix) / "tessdata"}) {
            if (holdsLanguageData(folder))
                return folder.string();
        }
    }
    for (const char* folder : DistributionFolders) {
        if (holdsLanguageData(folder))
            return folder;
    }
    return {};
}

LanguageChoice ChooseLanguages(const EnvironmentReader& environment)
{
    LanguageChoice choice;
    choice.dataPath = LanguageDataFolder(environment);
    // The interface language goes first: Tesseract retries a word with the later languages
    // only when the first reads it badly.
    std::vector<std::string> wanted{"eng"};
    if (InterfaceIsJapanese(environment))
        wanted.insert(wanted.begin(), "jpn");
    for (const std::string& language : wanted)
        (installed(choice.dataPath, language) ? choice.languages : choice.missing)
            .push_back(language);
    choice.scriptDetection = installed(choice.dataPath, "osd");
    return choice;
}

std::string LanguageForScript(const std::string& script, const std::string& dataPath)
{
    struct Entry
    {
        const char* script;
        std::vector<const char*> languages;
    };
    static const std::vector<Entry> Table{
        {"Latin", {"eng"}},
        {"Japanese", {"jpn"}},
        {"Katakana", {"jpn"}},
        {"Hiragana", {"jpn"}},
        {"Han", {"jpn", "chi_sim", "chi_tra"}},
        {"Hangul", {"kor"}},
        {"Korean", {"kor"}},
        {"Cyrillic", {"rus", "ukr", "bul", "srp", "bel", "mkd"}},
        {"Greek", {"ell", "grc"}},
        {"Arabic", {"ara", "fas", "urd"}},
        {"Hebrew", {"heb", "yid"}},
        {"Devanagari", {"hin", "mar", "nep", "san"}},
        {"Thai", {"tha"}},
        {"Bengali", {"ben", "asm"}},
        {"Tamil", {"tam"}},
        {"Telugu", {"tel"}},
        {"Kannada", {"kan"}},
        {"Malayalam", {"mal"}},
        {"Gujarati", {"guj"}},
        {"Gurmukhi", {"pan"}},
        {"Georgian", {"kat"}},
        {"Armenian", {"hye"}},
        {"Ethiopic", {"amh"}},
        {"Khmer", {"khm"}},
        {"Lao", {"lao"}},
        {"Myanmar", {"mya"}},
        {"Sinhala", {"sin"}},
        {"Tibetan", {"bod"}},
        {"Fraktur", {"frk"}},
    };
    for (const Entry& entry : Table) {
        if (script != entry.script)
            continue;
        for (const char* language : entry.languages) {
            if (installed(dataPath, language))
                return language;
        }
    }
    // The distribution's script models (tesseract-ocr-script-*) read a whole script.
    const std::string model = "script/" + script;
    return installed(dataPath, model) ? model : std::string();
}

std::string MissingLanguagesNotice(const LanguageChoice& choice)
{
    if (choice.missing.empty())
        return {};
    std::string packages;
    for (const std::string& language : choice.missing)
        packages += (packages.empty() ? "" : ", ") + packageOf(language);
    if (choice.languages.empty())
        return "scanned pages stay pictures: no text recognition data is installed (" + packages +
               ")";
    return "scanned pages are read without " + packages + ", which is not installed";
}

}  // namespace velmora
