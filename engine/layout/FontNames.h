#pragma once

// Turns the font names a PDF carries ("ABCDEF+TimesNewRomanPS-BoldItalicMT", "Arial,Bold")
// into the family, weight and slant a word processor knows.

#include "model/PageModel.h"

#include <string>

namespace velmora {

// The kind of face a word processor falls back to when it lacks the family itself.
enum class FontKind { Roman, Swiss, Modern, Tech };

struct FontStyle final
{
    std::string family;
    bool bold = false;
    bool italic = false;
    FontKind kind = FontKind::Swiss;
    // Another family of the same kind and width, for a word processor without `family`.
    std::string alternative = {};

    bool operator==(const FontStyle&) const = default;
};

// `adjust` off keeps the PDF's name as it stands and takes weight and slant from the font's
// own flags only; the kind and the alternative are found either way. Families a word
// processor seldom has (TeX's Computer Modern and Latin Modern, the URW and Nimbus clones,
// TeX Gyre, Liberation) become the family they stand in for, or its metric twin.
FontStyle ResolveFontStyle(const FontFace& face, bool adjust);

}  // namespace velmora
