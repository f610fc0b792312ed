#include "rtf/RtfWriter.h"

#include "layout/Bidi.h"

#include <cmath>
#include <cstdio>

namespace velmora {

int CharsetFor(char32_t c)
{
    if ((c >= 0x3040 && c <= 0x30ff) || (c >= 0x3400 && c <= 0x9fff) ||
        (c >= 0xff00 && c <= 0xffef) || (c >= 0x3000 && c <= 0x303f) ||
        (c >= 0xf900 && c <= 0xfaff) || (c >= 0x20000 && c <= 0x2ffff))
        return 128;
    if ((c >= 0xac00 && c <= 0xd7af) || (c >= 0x1100 && c <= 0x11ff))
        return 129;
    if (c >= 0x0400 && c <= 0x04ff)
        return 204;
    if (c >= 0x0370 && c <= 0x03ff)
        return 161;
    if (c >= 0x0590 && c <= 0x05ff)
        return 177;
    if (c >= 0x0600 && c <= 0x06ff)
        return 178;
    if (c >= 0x0e00 && c <= 0x0e7f)
        return 222;
    if (c >= 0x0100 && c <= 0x017f)
        return 238;
    return 0;
}

long Twips(float points)
{
    return std::lround(points * 20.0f);
}

namespace {

// What a reader without Unicode shows in place of `c`: its Windows-1252 byte, or '?'.
std::string ansiFallback(char32_t c)
{
    static constexpr std::pair<char32_t, unsigned> Specials[] = {
        {0x20ac, 0x80}, {0x201a, 0x82}, {0x0192, 0x83}, {0x201e, 0x84}, {0x2026, 0x85},
        {0x2020, 0x86}, {0x2021, 0x87}, {0x02c6, 0x88}, {0x2030, 0x89}, {0x0160, 0x8a},
        {0x2039, 0x8b}, {0x0152, 0x8c}, {0x017d, 0x8e}, {0x2018, 0x91}, {0x2019, 0x92},
        {0x201c, 0x93}, {0x201d, 0x94}, {0x2022, 0x95}, {0x2013, 0x96}, {0x2014, 0x97},
        {0x02dc, 0x98}, {0x2122, 0x99}, {0x0161, 0x9a}, {0x203a, 0x9b}, {0x0153, 0x9c},
        {0x017e, 0x9e}, {0x0178, 0x9f}};
    unsigned byte = 0;
    if (c >= 0xa0 && c <= 0xff)
        byte = static_cast<unsigned>(c);
    for (const auto& [code, value] : Specials) {
        if (code == c)
            byte = value;
    }
    if (byte == 0)
        return "?";
    static const char Hex[] = "0123456789abcdef";
    return std::string("\\'") + Hex[byte >> 4] + Hex[byte & 15];
}

}  // namespace

void AppendEscaped(std::string& out, char32_t c)
{
    if (c == '\\' || c == '{' || c == '}') {
        out.push_back('\\');
        out.push_back(static_cast<char>(c));
    } else if (c == '\t') {
        out += "\\tab ";
    } else if (c == 0xa0) {
        out += "\\~";
    } else if (c == 0xad) {
        out += "\\-";
    } else if (c < 0x20) {
        return;
    } else if (c < 0x80) {
        out.push_back(static_cast<char>(c));
    } else if (c > 0x10ffff || (c >= 0xd800 && c <= 0xdfff)) {
        out += "\\u-3?";  // U+FFFD
    } else if (c > 0xffff) {
        const char32_t v = c - 0x10000;
        for (const char32_t half : {0xd800 + (v >> 10), 0xdc00 + (v & 0x3ff)})
            out += "\\u" + std::to_string(static_cast<int16_t>(static_cast<uint16_t>(half))) + "?";
    } else {
        // \u takes a signed 16-bit number; readers without Unicode show the fallback.
        out += "\\u" + std::to_string(static_cast<int16_t>(static_cast<uint16_t>(c))) +
               ansiFallback(c);
    }
}

void AppendEscaped(std::string& out, const std::string& utf8Text)
{
    std::size_t i = 0;
    while (i < utf8Text.size()) {
        const auto byte = static_cast<unsigned char>(utf8Text[i]);
        char32_t c = byte;
        int extra = 0;
        if (byte >= 0xf0) {
            c = byte & 0x07;
            extra = 3;
        } else if (byte >= 0xe0) {
            c = byte & 0x0f;
            extra = 2;
        } else if (byte >= 0xc0) {
            c = byte & 0x1f;
            extra = 1;
        }
        ++i;
        for (int k = 0; k < extra && i < utf8Text.size(); ++k, ++i)
            c = (c << 6) | (static_cast<unsigned char>(utf8Text[i]) & 0x3f);
        AppendEscaped(out, c);
    }
}

int RtfTables::font(const FontStyle& style, int charset)
{
    for (std::size_t i = 0; i < m_fonts.size(); ++i) {
        if (m_fonts[i].family == style.family && m_fonts[i].charset == charset)
            return static_cast<int>(i);
    }
    m_fonts.push_back(FontEntry{style.family, charset, style.kind, style.alternative});
    return static_cast<int>(m_fonts.size() - 1);
}

int RtfTables::colour(uint32_t rgb)
{
    for (std::size_t i = 0; i < m_colours.size(); ++i) {
        if (m_colours[i] == rgb)
            return static_cast<int>(i + 1);
    }
    m_colours.push_back(rgb);
    return static_cast<int>(m_colours.size());
}

std::string RtfTables::fontTable() const
{
    std::string out = "{\\fonttbl";
    if (m_fonts.empty())
        out += "{\\f0\\froman\\fcharset0 Times New Roman;}";
    // A name ends at ';' in the table, so it may not hold one.
    const auto appendName = [&out](const std::string& family) {
        std::string name;
        for (char c : family)
            name.push_back(c == ';' ? ' ' : c);
        AppendEscaped(out, name);
    };
    for (std::size_t i = 0; i < m_fonts.size(); ++i) {
        const FontEntry& entry = m_fonts[i];
        static constexpr const char* Kinds[] = {"\\froman", "\\fswiss", "\\fmodern", "\\ftech"};
        out += "{\\f" + std::to_string(i) + Kinds[static_cast<int>(entry.kind)];
        if (entry.kind == FontKind::Modern)
            out += "\\fprq1";
        out += "\\fcharset" + std::to_string(entry.charset) + " ";
        appendName(entry.family);
        if (!entry.alternative.empty()) {
            out += "{\\*\\falt ";
            appendName(entry.alternative);
            out += "}";
        }
        out += ";}";
    }
    out += "}\n";
    return out;
}

std::string RtfTables::colourTable() const
{
    std::string out = "{\\colortbl;";
    for (uint32_t rgb : m_colours) {
        out += "\\red" + std::to_string((rgb >> 16) & 0xff) + "\\green" +
               std::to_string((rgb >> 8) & 0xff) + "\\blue" + std::to_string(rgb & 0xff) + ";";
    }
    out += "}\n";
    return out;
}

RtfWriter::RtfWriter(RtfTables& tables, const std::vector<FontFace>& faces, bool adjustFontNames)
    : m_tables(tables), m_faces(faces), m_adjust(adjustFontNames)
{
}

void RtfWriter::text(const std::vector<Glyph>& glyphs, const std::vector<Link>* links,
                     float sizeScale)
{
    int openLink = -1;
    std::size_t i = 0;
    while (i < glyphs.size()) {
        const Glyph& first = glyphs[i];
        // A run: same face, size and colour; a tab or blank carries on the run before it.
        std::size_t end = i + 1;
        int charset = CharsetFor(first.c);
        bool rightToLeft = IsRightToLeft(first.c);
        while (end < glyphs.size()) {
            const Glyph& g = glyphs[end];
            // Right-to-left words are runs of their own, marked as such.
            const bool latin = (g.c >= 'A' && g.c <= 'Z') || (g.c >= 'a' && g.c <= 'z');
            if ((IsRightToLeft(g.c) && !rightToLeft && end > i) || (latin && rightToLeft))
                break;
            rightToLeft = rightToLeft || IsRightToLeft(g.c);
            if (g.font != first.font || std::fabs(g.size - first.size) > 0.01f ||
                g.colour != first.colour || g.link != first.link ||
                g.underline != first.underline || g.strike != first.strike ||
                g.highlighted != first.highlighted || g.highlight != first.highlight ||
                std::fabs(g.rise - first.rise) > 0.01f ||
                std::fabs(g.spacing - first.spacing) > 0.01f)
                break;
            if (charset == 0)
                charset = CharsetFor(g.c);
            ++end;
        }
        const int link =
            links && first.link >= 0 && static_cast<std::size_t>(first.link) < links->size()
                ? first.link
                : -1;
        if (link != openLink) {
            if (openLink >= 0)
                m_out += "}}";
            if (link >= 0) {
                m_out += "{\\field{\\*\\fldinst HYPERLINK \"";
                for (char c : (*links)[static_cast<std::size_t>(link)].uri) {
                    if (c == '"' || c == '\\')
                        m_out.push_back('\\');
                    AppendEscaped(m_out, static_cast<char32_t>(static_cast<unsigned char>(c)));
                }
                m_out += "\"}{\\fldrslt ";
            }
            openLink = link;
        }
        FontStyle style;
        if (first.font >= 0 && static_cast<std::size_t>(first.font) < m_faces.size())
            style = ResolveFontStyle(m_faces[static_cast<std::size_t>(first.font)], m_adjust);
        else
            style = FontStyle{"Times New Roman", false, false, FontKind::Roman};
        const int fontIndex = m_tables.font(style, charset);
        const long halfPoints = std::max(2L, std::lround(first.size * sizeScale * 2));
        m_out += "{";
        if (rightToLeft)
            m_out +=
                "\\rtlch\\af" + std::to_string(fontIndex) + "\\afs" + std::to_string(halfPoints);
        m_out += "\\f" + std::to_string(fontIndex) + "\\fs" + std::to_string(halfPoints);
        if (style.bold)
            m_out += "\\b";
        if (style.italic)
            m_out += "\\i";
        if (link >= 0 || first.underline)
            m_out += "\\ul";
        if (first.strike)
            m_out += "\\strike";
        if (first.rise > 0)
            m_out += "\\up" + std::to_string(std::lround(first.rise * 2));
        else if (first.rise < 0)
            m_out += "\\dn" + std::to_string(std::lround(-first.rise * 2));
        if (first.spacing != 0)
            m_out += "\\expndtw" + std::to_string(Twips(first.spacing));
        if (first.highlighted)
            m_out += "\\chcbpat" + std::to_string(m_tables.colour(first.highlight));
        if (first.colour != 0)
            m_out += "\\cf" + std::to_string(m_tables.colour(first.colour));
        m_out.push_back(' ');
        for (std::size_t k = i; k < end; ++k)
            AppendEscaped(m_out, glyphs[k].c);
        m_out.push_back('}');
        i = end;
    }
    if (openLink >= 0)
        m_out += "}}";
}

void RtfWriter::picture(const Picture& picture, float widthPt, float heightPt)
{
    m_out += "{\\pict";
    switch (picture.kind) {
    case PictureKind::Jpeg:
        m_out += "\\jpegblip";
        break;
    case PictureKind::Png:
        m_out += "\\pngblip";
        break;
    case PictureKind::Dib:
        m_out += "\\dibitmap0";
        break;
    }
    m_out += "\\picw" + std::to_string(picture.pixelWidth) + "\\pich" +
             std::to_string(picture.pixelHeight);
    m_out += "\\picwgoal" + std::to_string(Twips(widthPt)) + "\\pichgoal" +
             std::to_string(Twips(heightPt));
    m_out.push_back('\n');
    static const char Hex[] = "0123456789abcdef";
    std::size_t column = 0;
    m_out.reserve(m_out.size() + picture.data.size() * 2 + picture.data.size() / 64 + 4);
    for (uint8_t byte : picture.data) {
        m_out.push_back(Hex[byte >> 4]);
        m_out.push_back(Hex[byte & 15]);
        if (++column == 64) {
            m_out.push_back('\n');
            column = 0;
        }
    }
    m_out += "}";
}

}  // namespace velmora

namespace velmora {

namespace {

// The opening of a shape at `box`; its properties follow. A word processor reads "behind
// the text" from the fBehindDocument property as well as from \shpfblwtxt.
std::string shapeStart(const Rect& box, bool behind, const ShapeAnchor& anchor)
{
    const float dx = anchor.paragraph ? anchor.left : 0;
    const float dy = anchor.paragraph ? anchor.top : 0;
    return "{\\shp{\\*\\shpinst\\shpleft" + std::to_string(Twips(box.x0 - dx)) + "\\shptop" +
           std::to_string(Twips(box.y0 - dy)) + "\\shpright" + std::to_string(Twips(box.x1 - dx)) +
           "\\shpbottom" + std::to_string(Twips(box.y1 - dy)) + "\\shpfhdr0" +
           (anchor.paragraph ? "\\shpbxmargin\\shpbxignore\\shpbypara\\shpbyignore"
                             : "\\shpbxpage\\shpbxignore\\shpbypage\\shpbyignore") +
           "\\shpwr3\\shpwrk0\\shpfblwtxt" + (behind ? "1" : "0") + "\\shpz0";
}

std::string property(const char* name, long value)
{
    return std::string("{\\sp{\\sn ") + name + "}{\\sv " + std::to_string(value) + "}}";
}

// Shapes take colours as Windows COLORREF values: red in the low byte.
long colourRef(uint32_t rgb)
{
    return static_cast<long>(((rgb >> 16) & 0xff) | (rgb & 0xff00) | ((rgb & 0xff) << 16));
}

}  // namespace

void RtfWriter::shape(const Drawing& drawing, const ShapeAnchor& anchor)
{
    const bool line = drawing.kind == Drawing::Kind::Line;
    m_out += shapeStart(drawing.box, !drawing.inFront, anchor);
    m_out += property("shapeType", line ? 20 : 1);
    if (!drawing.inFront)
        m_out += property("fBehindDocument", 1);
    if (line && drawing.rising)
        m_out += property("fFlipV", 1);
    m_out += property("fFilled", drawing.filled && !line ? 1 : 0);
    if (drawing.filled && !line)
        m_out += property("fillColor", colourRef(drawing.fill));
    const bool stroked = drawing.stroked || line;
    m_out += property("fLine", stroked ? 1 : 0);
    if (stroked) {
        m_out += property("lineColor", colourRef(drawing.stroked ? drawing.stroke : drawing.fill));
        m_out += property("lineWidth", std::lround(drawing.lineWidth * 12700));
    }
    m_out += "}}";
}

void RtfWriter::pictureShape(const Picture& picture, bool behind, const ShapeAnchor& anchor)
{
    m_out += shapeStart(picture.box, behind, anchor);
    m_out += property("shapeType", 75);
    if (behind)
        m_out += property("fBehindDocument", 1);
    m_out += property("fLine", 0);
    m_out += "{\\sp{\\sn pib}{\\sv ";
    this->picture(picture, picture.box.width(), picture.box.height());
    m_out += "}}}}";
}

}  // namespace velmora
