#pragma once

// Turns the font names a PDF carries ("ABCDEF+TimesNewRomanPS-BoldItalicMT", "Arial,Bold")
// into the family, weight and slant a word processor knows.

#include "model/PageModel.h"

#include <string>

namespace velmora {

struct FontStyle final
{
    std::string family;
    bool bold = false;
    bool italic = false;

    bool operator==(const FontStyle&) const = default;
};

// `adjust` off keeps the PDF's name as it stands and takes weight and slant from the font's
// own flags only.
FontStyle ResolveFontStyle(const FontFace& face, bool adjust);

}  // namespace velmora
