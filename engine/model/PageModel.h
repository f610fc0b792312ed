#pragma once

// What the engine knows of one PDF page once MuPDF has read it: glyphs with their boxes and
// styles, pictures already encoded for the document, and the page's web links. Everything
// after extraction works on these plain values, so layout and writing never touch MuPDF.

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

struct Rect final
{
    float x0 = 0;
    float y0 = 0;
    float x1 = 0;
    float y1 = 0;

    float width() const { return x1 - x0; }
    float height() const { return y1 - y0; }
    float centreX() const { return (x0 + x1) / 2; }
    float centreY() const { return (y0 + y1) / 2; }
    bool empty() const { return x1 <= x0 || y1 <= y0; }
    bool contains(float x, float y) const { return x >= x0 && x <= x1 && y >= y0 && y <= y1; }
    void unite(const Rect& other)
    {
        if (empty()) {
            *this = other;
            return;
        }
        if (other.empty())
            return;
        x0 = std::min(x0, other.x0);
        y0 = std::min(y0, other.y0);
        x1 = std::max(x1, other.x1);
        y1 = std::max(y1, other.y1);
    }
};

// A font as the PDF names it, with what its descriptor says about its face.
struct FontFace final
{
    std::string name;
    bool bold = false;
    bool italic = false;
    bool monospaced = false;
    bool serif = false;

    bool operator==(const FontFace&) const = default;
};

// One character with its place. `c` is a Unicode scalar; the layout adds synthetic ' ' and
// '\t' glyphs between words and columns.
struct Glyph final
{
    char32_t c = 0;
    Rect box;
    float baseline = 0;  // y of the pen on the baseline
    float size = 0;
    int font = 0;         // index into the document's font list
    uint32_t colour = 0;  // 0xRRGGBB
    int link = -1;        // index into the page's links, -1 when not part of a link
    // What drawings do to it: a line under or through it, a fill behind it.
    bool underline = false;
    bool strike = false;
    bool highlighted = false;
    uint32_t highlight = 0;   // 0xRRGGBB
    float rise = 0;           // points above its line's baseline: superscripts, subscripts below
    float spacing = 0;        // points of letter spacing after it
    bool hidden = false;      // drawn invisibly, as a scan's text layer is
    bool monospaced = false;  // of a fixed-width font, which word processors set 0.6 em wide
};

// A run of glyphs along one baseline, as MuPDF found it.
struct TextLine final
{
    std::vector<Glyph> glyphs;
    Rect box;
    float dirX = 1;  // baseline direction; (1, 0) for ordinary horizontal text
    float dirY = 0;
    bool vertical = false;
};

enum class PictureKind { Jpeg, Dib, Png };

// A picture ready for the document: JPEG bytes, a device-independent bitmap (info header
// followed by bottom-up rows), or PNG with transparency.
struct Picture final
{
    PictureKind kind = PictureKind::Jpeg;
    std::vector<uint8_t> data;
    int pixelWidth = 0;
    int pixelHeight = 0;
    Rect box;  // where it shows on the page, in points
};

// A stroked or filled rectangle or straight line of the page, in page coordinates; drawn in
// front of the text when it was painted over text the page had already shown.
struct Drawing final
{
    enum class Kind { Rectangle, Line };
    Kind kind = Kind::Rectangle;
    Rect box;
    bool filled = false;
    bool stroked = false;
    uint32_t fill = 0;    // 0xRRGGBB
    uint32_t stroke = 0;  // 0xRRGGBB
    float lineWidth = 0;  // points
    // A line runs from the box's top-left to its bottom-right corner, or from bottom-left to
    // top-right when `rising`.
    bool rising = false;
    bool inFront = false;
};

struct Link final
{
    Rect box;
    std::string uri;
};

struct PageContent final
{
    float width = 612;
    float height = 792;
    std::vector<TextLine> lines;
    std::vector<Picture> pictures;
    std::vector<Link> links;
    std::vector<Drawing> drawings;
    // The page's other vector graphics (curves, polygons, shadings, or a drawing too dense to
    // keep as shapes) as one transparent picture, laid behind the text.
    std::vector<Picture> artwork;
    // Where text is drawn invisibly: a scanned page's recognised text, laid over the scan.
    std::vector<Rect> hiddenText;
    // The pictures have their places but no pixels (see PictureOptions::placesOnly).
    bool picturePlacesOnly = false;
};

}  // namespace velmora
