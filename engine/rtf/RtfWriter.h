#pragma once

// Writing Rich Text Format: the font and colour tables, gathered while the body is written,
// and the pieces of a body (styled text with links, pictures) the converter puts together.

#include "layout/FontNames.h"
#include "model/PageModel.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// The RTF character set a character asks of its font (0 Western, 128 Japanese, ...).
int CharsetFor(char32_t c);

// Points as whole twips.
long Twips(float points);

// Appends one character, escaped as RTF needs it: \uN? for anything outside ASCII.
void AppendEscaped(std::string& out, char32_t c);
void AppendEscaped(std::string& out, const std::string& utf8Text);

// Where a shape is placed from: the page's corner, or the left margin and the top of the
// paragraph that holds it (at `left`, `top` in page points), so it moves with its text.
struct ShapeAnchor final
{
    bool paragraph = false;
    float left = 0;
    float top = 0;
};

class RtfTables final
{
public:
    int font(const FontStyle& style, int charset);
    // 1-based; 0 is the automatic colour.
    int colour(uint32_t rgb);
    std::string fontTable() const;
    std::string colourTable() const;

private:
    struct FontEntry
    {
        std::string family;
        int charset = 0;
        FontKind kind = FontKind::Roman;
        std::string alternative;
    };
    std::vector<FontEntry> m_fonts;
    std::vector<uint32_t> m_colours;
};

class RtfWriter final
{
public:
    RtfWriter(RtfTables& tables, const std::vector<FontFace>& faces, bool adjustFontNames);

    std::string& out() { return m_out; }
    // The colour table's index of `rgb`.
    int colour(uint32_t rgb) { return m_tables.colour(rgb); }
    // A writer of the same document with nothing written yet, for pieces put in place later.
    RtfWriter fresh() const { return {m_tables, m_faces, m_adjust}; }
    const std::vector<FontFace>& faces() const { return m_faces; }
    bool adjustsFontNames() const { return m_adjust; }

    // Styled text: runs of one font, size and colour; glyphs of a web link inside a
    // HYPERLINK field. `sizeScale` shrinks every size by that factor.
    void text(const std::vector<Glyph>& glyphs, const std::vector<Link>* links,
              float sizeScale = 1);
    // A picture shown at widthPt x heightPt points.
    void picture(const Picture& picture, float widthPt, float heightPt);
    // A drawing as a shape at its place, behind the text or in front of it.
    void shape(const Drawing& drawing, const ShapeAnchor& anchor = {});
    // A picture as a shape at its box, behind the text or in front of it.
    void pictureShape(const Picture& picture, bool behind = true, const ShapeAnchor& anchor = {});

private:
    RtfTables& m_tables;
    const std::vector<FontFace>& m_faces;
    bool m_adjust;
    std::string m_out;
};

}  // namespace velmora
