#include "layout/FontNames.h"

#include <array>
#include <cctype>
#include <string_view>
#include <utility>

namespace velmora {

namespace {

std::string lower(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

bool hasSubsetPrefix(std::string_view name)
{
    if (name.size() < 8 || name[6] != '+')
        return false;
    for (std::size_t i = 0; i < 6; ++i) {
        if (name[i] < 'A' || name[i] > 'Z')
            return false;
    }
    return true;
}

// PostScript family stems, lower case without separators, and the family a word processor
// offers for them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 30> KnownFamilies{{
    {"helvetica", "Arial"},
    {"arial", "Arial"},
    {"arialnarrow", "Arial Narrow"},
    {"arialblack", "Arial Black"},
    {"times", "Times New Roman"},
    {"timesroman", "Times New Roman"},
    {"timesnewroman", "Times New Roman"},
    {"courier", "Courier New"},
    {"couriernew", "Courier New"},
    {"symbol", "Symbol"},
    {"zapfdingbats", "Wingdings"},
    {"bookantiqua", "Book Antiqua"},
    {"centurygothic", "Century Gothic"},
    {"trebuchetms", "Trebuchet MS"},
    {"comicsansms", "Comic Sans MS"},
    {"palatinolinotype", "Palatino Linotype"},
    {"palatino", "Palatino Linotype"},
    {"lucidaconsole", "Lucida Console"},
    {"segoeui", "Segoe UI"},
    {"dejavusans", "DejaVu Sans"},
    {"dejavuserif", "DejaVu Serif"},
    {"dejavusansmono", "DejaVu Sans Mono"},
    {"liberationsans", "Liberation Sans"},
    {"liberationserif", "Liberation Serif"},
    {"liberationmono", "Liberation Mono"},
    {"msmincho", "MS Mincho"},
    {"msgothic", "MS Gothic"},
    {"mspgothic", "MS PGothic"},
    {"ipagothic", "IPAGothic"},
    {"ipamincho", "IPAMincho"},
}};

bool endsWith(std::string_view text, std::string_view tail)
{
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

}  // namespace

FontStyle ResolveFontStyle(const FontFace& face, bool adjust)
{
    FontStyle style{face.name, face.bold, face.italic};
    if (!adjust)
        return style;

    std::string_view name = face.name;
    if (hasSubsetPrefix(name))
        name.remove_prefix(7);

    // The family is what stands before the first ',' or '-'; the rest names the style.
    std::string_view base = name;
    std::string_view styleText;
    const std::size_t split = name.find_first_of(",-");
    if (split != std::string_view::npos) {
        base = name.substr(0, split);
        styleText = name.substr(split + 1);
    }
    std::string styleLower = lower(styleText);
    std::string baseLower = lower(base);
    for (std::string_view tail : {"psmt", "ps", "mt"}) {
        if (endsWith(baseLower, tail) && baseLower.size() > tail.size()) {
            baseLower.resize(baseLower.size() - tail.size());
            base = base.substr(0, baseLower.size());
            break;
        }
    }
    // Styles glued onto the family without a separator ("ArialBold", "Verdana-BoldItalic").
    for (std::string_view glued : {"bolditalic", "boldoblique", "bold", "italic", "oblique"}) {
        if (endsWith(baseLower, glued) && baseLower.size() > glued.size()) {
            styleLower = std::string(glued) + styleLower;
            baseLower.resize(baseLower.size() - glued.size());
            base = base.substr(0, baseLower.size());
            break;
        }
    }

    for (std::string_view word : {"bold", "black", "heavy", "semibold", "demi", "extrabold"}) {
        if (styleLower.find(word) != std::string::npos)
            style.bold = true;
    }
    for (std::string_view word : {"italic", "oblique", "slanted", "inclined"}) {
        if (styleLower.find(word) != std::string::npos)
            style.italic = true;
    }
    // Short forms of some foundries: "Bd", "It", "BdIt".
    if (endsWith(styleLower, "it"))
        style.italic = true;
    if (styleLower.starts_with("bd"))
        style.bold = true;

    std::string compact;
    for (char c : baseLower) {
        if (c != ' ' && c != '_')
            compact.push_back(c);
    }
    style.family = std::string(base);
    for (const auto& [stem, family] : KnownFamilies) {
        if (compact == stem) {
            style.family = std::string(family);
            break;
        }
    }
    if (style.family.empty())
        style.family = face.name;
    return style;
}

}  // namespace velmora
