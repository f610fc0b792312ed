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

struct Family
{
    std::string_view stem;  // lower case, without separators; matched as a prefix when `prefix`
    std::string_view family;
    FontKind kind;
    bool prefix = false;
    bool bold = false;
    bool italic = false;
};

constexpr FontKind R = FontKind::Roman;
constexpr FontKind S = FontKind::Swiss;
constexpr FontKind M = FontKind::Modern;
constexpr FontKind T = FontKind::Tech;

// PostScript and TeX family stems and the family a word processor offers for them. Prefix
// stems carry the face in the name ("cmbx10" is bold); longer stems come first.
constexpr std::array<Family, 88> KnownFamilies{{
    {"helvetica", "Arial", S},
    {"arial", "Arial", S},
    {"arialnarrow", "Arial Narrow", S},
    {"arialblack", "Arial Black", S},
    {"times", "Times New Roman", R},
    {"timesroman", "Times New Roman", R},
    {"timesnewroman", "Times New Roman", R},
    {"courier", "Courier New", M},
    {"couriernew", "Courier New", M},
    {"symbol", "Symbol", T},
    {"zapfdingbats", "Wingdings", T},
    {"wingdings", "Wingdings", T},
    {"bookantiqua", "Book Antiqua", R},
    {"centurygothic", "Century Gothic", S},
    {"trebuchetms", "Trebuchet MS", S},
    {"comicsansms", "Comic Sans MS", S},
    {"palatinolinotype", "Palatino Linotype", R},
    {"palatino", "Palatino Linotype", R},
    {"lucidaconsole", "Lucida Console", M},
    {"segoeui", "Segoe UI", S},
    {"verdana", "Verdana", S},
    {"tahoma", "Tahoma", S},
    {"georgia", "Georgia", R},
    {"calibri", "Calibri", S},
    {"cambria", "Cambria", R},
    {"garamond", "Garamond", R},
    {"consolas", "Consolas", M},
    {"msmincho", "MS Mincho", M},
    {"msgothic", "MS Gothic", M},
    {"mspgothic", "MS PGothic", S},
    {"ipagothic", "IPAGothic", M},
    {"ipamincho", "IPAMincho", M},
    {"dejavusansmono", "DejaVu Sans Mono", M, true},
    {"dejavusans", "DejaVu Sans", S, true},
    {"dejavuserif", "DejaVu Serif", R, true},
    {"liberationsansnarrow", "Arial Narrow", S, true},
    {"liberationsans", "Arial", S, true},
    {"liberationserif", "Times New Roman", R, true},
    {"liberationmono", "Courier New", M, true},
    {"notosansmono", "Noto Sans Mono", M, true},
    {"notosans", "Noto Sans", S, true},
    {"notoserif", "Noto Serif", R, true},
    {"nimbussansnarrow", "Arial Narrow", S, true},
    {"nimbussans", "Arial", S, true},
    {"nimbussanl", "Arial", S, true},
    {"nimbusroman", "Times New Roman", R, true},
    {"nimbusrom", "Times New Roman", R, true},
    {"nimbusmono", "Courier New", M, true},
    {"nimbusmon", "Courier New", M, true},
    {"texgyretermes", "Times New Roman", R, true},
    {"texgyreheros", "Arial", S, true},
    {"texgyrecursor", "Courier New", M, true},
    {"texgyrepagella", "Palatino Linotype", R, true},
    {"texgyrebonum", "Bookman Old Style", R, true},
    {"texgyreschola", "Century Schoolbook", R, true},
    {"urwpalladio", "Palatino Linotype", R, true},
    {"urwbookman", "Bookman Old Style", R, true},
    {"urwgothic", "Century Gothic", S, true},
    {"centuryschl", "Century Schoolbook", R, true},
    {"p052", "Palatino Linotype", R, true},
    {"c059", "Century Schoolbook", R, true},
    {"lmromandunh", "Times New Roman", R, true},
    {"lmromancaps", "Times New Roman", R, true},
    {"lmromanslant", "Times New Roman", R, true, false, true},
    {"lmroman", "Times New Roman", R, true},
    {"lmsans", "Arial", S, true},
    {"lmmono", "Courier New", M, true},
    {"lmmathitalic", "Times New Roman", R, true, false, true},
    {"cmbxti", "Times New Roman", R, true, true, true},
    {"cmbxsl", "Times New Roman", R, true, true, true},
    {"cmbx", "Times New Roman", R, true, true},
    {"cmb", "Times New Roman", R, true, true},
    {"cmti", "Times New Roman", R, true, false, true},
    {"cmsltt", "Courier New", M, true, false, true},
    {"cmsl", "Times New Roman", R, true, false, true},
    {"cmmi", "Times New Roman", R, true, false, true},
    {"cmcsc", "Times New Roman", R, true},
    {"cmssbx", "Arial", S, true, true},
    {"cmssi", "Arial", S, true, false, true},
    {"cmss", "Arial", S, true},
    {"cmitt", "Courier New", M, true, false, true},
    {"cmtt", "Courier New", M, true},
    {"cmr", "Times New Roman", R, true},
    {"sfbx", "Times New Roman", R, true, true},
    {"sfti", "Times New Roman", R, true, false, true},
    {"sfrm", "Times New Roman", R, true},
    {"sftt", "Courier New", M, true},
    {"sfss", "Arial", S, true},
}};

// The family of each kind that every word processor has.
std::string_view commonFamily(FontKind kind)
{
    switch (kind) {
    case FontKind::Roman:
        return "Times New Roman";
    case FontKind::Modern:
        return "Courier New";
    case FontKind::Tech:
        return "Symbol";
    case FontKind::Swiss:
        break;
    }
    return "Arial";
}

const Family* knownFamily(const std::string& compact)
{
    for (const Family& known : KnownFamilies) {
        if (known.prefix ? compact.starts_with(known.stem) : compact == known.stem)
            return &known;
    }
    return nullptr;
}

bool endsWith(std::string_view text, std::string_view tail)
{
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

}  // namespace

FontStyle ResolveFontStyle(const FontFace& face, bool adjust)
{
    FontStyle style{face.name, face.bold, face.italic};
    style.kind = face.monospaced ? FontKind::Modern
                 : face.serif    ? FontKind::Roman
                                 : FontKind::Swiss;

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
            styleLower.insert(0, glued);
            baseLower.resize(baseLower.size() - glued.size());
            base = base.substr(0, baseLower.size());
            break;
        }
    }
    std::string compact;
    for (char c : baseLower) {
        if (c != ' ' && c != '_')
            compact.push_back(c);
    }
    const Family* known = knownFamily(compact);
    if (known)
        style.kind = known->kind;
    const std::string twin(known ? known->family : commonFamily(style.kind));
    if (!adjust) {
        style.alternative = twin;
        return style;
    }

    for (std::string_view word : {"bold", "black", "heavy", "semibold", "demi", "extrabold"}) {
        if (styleLower.find(word) != std::string::npos)
            style.bold = true;
    }
    for (std::string_view word : {"ital", "oblique", "slanted", "inclined"}) {
        if (styleLower.find(word) != std::string::npos)
            style.italic = true;
    }
    // Short forms of some foundries: "Bd", "It", "BdIt".
    if (endsWith(styleLower, "it"))
        style.italic = true;
    if (styleLower.starts_with("bd"))
        style.bold = true;

    style.family = std::string(base);
    if (known) {
        style.family = std::string(known->family);
        style.bold = style.bold || known->bold;
        style.italic = style.italic || known->italic;
    }
    if (style.family.empty())
        style.family = face.name;
    style.alternative = style.family == twin ? std::string(commonFamily(style.kind)) : twin;
    if (style.alternative == style.family)
        style.alternative.clear();
    return style;
}

}  // namespace velmora
