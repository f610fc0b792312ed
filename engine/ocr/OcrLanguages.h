#pragma once

// Which of Tesseract's language data a run recognises with: English and the interface
// language, from the folder the distribution's packages install them to, and the language a
// page's script asks for when it is installed.

#include <functional>
#include <string>
#include <vector>

namespace velmora {

// Reads an environment variable; null when it is not set.
using EnvironmentReader = std::function<const char*(const char*)>;

struct LanguageChoice final
{
    std::string dataPath;                // the folder holding <language>.traineddata
    std::vector<std::string> languages;  // in the order Tesseract should try them
    std::vector<std::string> missing;    // wanted but not installed
    bool scriptDetection = false;        // osd.traineddata is there
};

// True when the messages of the user's locale are Japanese (LC_ALL, LC_MESSAGES, LANG).
bool InterfaceIsJapanese(const EnvironmentReader& environment);

// The language data folder: TESSDATA_PREFIX when it holds language data (itself or its
// "tessdata" folder), else the first of the distribution's folders that does; empty if none.
std::string LanguageDataFolder(const EnvironmentReader& environment);

LanguageChoice ChooseLanguages(const EnvironmentReader& environment);

// The installed language (or script model, "script/<Name>") that reads the script
// Tesseract's script detection named; empty when none is installed.
std::string LanguageForScript(const std::string& script, const std::string& dataPath);

// The line said on standard error when wanted languages are missing; empty when none is.
std::string MissingLanguagesNotice(const LanguageChoice& choice);

}  // namespace velmora
