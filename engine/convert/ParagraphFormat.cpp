#include "convert/PageWriting.h"

#include "pdf/StandardMetrics.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

// The length of text along its own baseline, from typical glyph widths: rotated glyphs' boxes
// don't tell their advances.
float nominalWidth(const std::vector<Glyph>& glyphs)
{
    float width = 0;
    for (const Glyph& glyph : glyphs) {
        const int charset = CharsetFor(glyph.c);
        width += glyph.size * (charset == 128 || charset == 129 ? 1.0f
                               : glyph.c == ' '                 ? 0.28f
                                                                : 0.55f);
    }
    return width;
}

}  // namespace

void WriteAlignment(std::string& out, const Block& block)
{
    WriteAlignment(out, block.alignment, block.rightToLeft);
}

void WriteAlignment(std::string& out, Alignment alignment, bool rightToLeft)
{
    if (rightToLeft)
        out += "\\rtlpar";
    switch (alignment) {
    case Alignment::Centre:
        out += "\\qc";
        break;
    case Alignment::Right:
        out += "\\qr";
        break;
    case Alignment::Justify:
        out += "\\qj";
        break;
    case Alignment::Left:
        break;
    }
}

void WriteTabStops(std::string& out, const Block& block, float origin)
{
    for (float stop : block.tabStops) {
        const long at = Twips(stop - origin);
        if (at > 0)
            out += "\\tx" + std::to_string(at);
    }
    if (block.leaderStop > 0 && Twips(block.leaderStop - origin) > 0)
        out += "\\tqr\\tldot\\tx" + std::to_string(Twips(block.leaderStop - origin));
}

float WriteParagraphBox(std::string& out, const Block& block, RtfWriter& writer)
{
    if (block.border.width <= 0 && !block.shaded)
        return 0;
    // A fill without an outline gets an outline of its own colour, so that the room around
    // the text is shaded too.
    const float width = block.border.width > 0 ? block.border.width : 0.5f;
    const uint32_t colour = block.border.width > 0 ? block.border.colour : block.shading;
    out += "\\box\\brdrs\\brdrw" + std::to_string(std::clamp(Twips(width), 2L, 75L)) + "\\brsp" +
           std::to_string(Twips(block.padding));
    if (colour != 0)
        out += "\\brdrcf" + std::to_string(writer.colour(colour));
    if (block.shaded)
        out += "\\cbpat" + std::to_string(writer.colour(block.shading));
    return block.padding + width;
}

void WriteRotatedShape(RtfWriter& writer, const Block& block, bool onPage)
{
    std::string& out = writer.out();
    const float length = std::max(nominalWidth(block.text), block.size);
    const float thickness = block.size * 1.6f;
    const float cx = block.box.centreX();
    const float cy = block.box.centreY();
    const long left = onPage ? Twips(cx - length / 2) : 0;
    const long top = onPage ? Twips(cy - thickness / 2) : 0;
    out += "{\\shp{\\*\\shpinst\\shpleft" + std::to_string(left) + "\\shptop" +
           std::to_string(top) + "\\shpright" + std::to_string(left + Twips(length)) +
           "\\shpbottom" + std::to_string(top + Twips(thickness)) + "\\shpfhdr0";
    out += onPage ? "\\shpbxpage\\shpbxignore\\shpbypage\\shpbyignore"
                  : "\\shpbxcolumn\\shpbxignore\\shpbypara\\shpbyignore";
    out += "\\shpwr3\\shpwrk0\\shpfblwtxt0\\shpz0";
    out += "{\\sp{\\sn shapeType}{\\sv 202}}{\\sp{\\sn rotation}{\\sv " +
           std::to_string(std::lround(-block.angle * 65536)) + "}}";
    out += "{\\sp{\\sn fLine}{\\sv 0}}{\\sp{\\sn fFilled}{\\sv 0}}{\\sp{\\sn dxTextLeft}{\\sv 0}}"
           "{\\sp{\\sn dxTextRight}{\\sv 0}}{\\sp{\\sn dyTextTop}{\\sv 0}}{\\sp{\\sn "
           "dyTextBottom}{\\sv 0}}";
    out += "{\\shptxt \\pard\\plain\\qc ";
    writer.text(block.text, nullptr);
    out += "\\par}}}";
}

float LargestSize(const std::vector<Glyph>& glyphs)
{
    float size = 0;
    for (const Glyph& glyph : glyphs) {
        if (glyph.c != ' ' && glyph.c != '\t')
            size = std::max(size, glyph.size);
    }
    return size;
}

float EstimatedWidth(const std::vector<Glyph>& glyphs, float scale)
{
    constexpr float SubstituteMargin = 1.04f;
    float width = 0;
    for (const Glyph& glyph : glyphs) {
        if (glyph.c == '\t')
            continue;
        // Blanks the layout added have no width of their own and count as a word space.
        float advance = glyph.box.width();
        if (glyph.monospaced)
            advance = std::max(advance, glyph.size * 0.6f / SubstituteMargin);
        width += advance > 0 ? advance : glyph.size * 0.25f;
    }
    return width * scale * SubstituteMargin;
}

TextWidths::TextWidths(const std::vector<FontFace>& faces, bool adjustFontNames)
{
    for (const FontFace& face : faces) {
        const FontStyle style = ResolveFontStyle(face, adjustFontNames);
        Face known;
        if (style.family == "Times New Roman")
            known.family = static_cast<int>(StandardFamily::Serif);
        else if (style.family == "Arial")
            known.family = static_cast<int>(StandardFamily::Sans);
        else if (style.family == "Courier New")
            known.family = static_cast<int>(StandardFamily::Mono);
        known.bold = style.bold;
        known.italic = style.italic;
        m_faces.push_back(known);
    }
}

float TextWidths::advance(const Glyph& glyph, float scale) const
{
    const float size = static_cast<float>(std::max(2L, std::lround(glyph.size * scale * 2))) / 2;
    const char32_t c = glyph.c == '\t' || glyph.c == 0xa0 ? ' ' : glyph.c;
    if (glyph.font >= 0 && static_cast<std::size_t>(glyph.font) < m_faces.size()) {
        const Face& face = m_faces[static_cast<std::size_t>(glyph.font)];
        if (face.family >= 0) {
            const float em = StandardAdvance(static_cast<StandardFamily>(face.family), face.bold,
                                             face.italic, c);
            if (em >= 0)
                return em * size + glyph.spacing;
        }
    }
    if (c == ' ')
        return size * 0.25f;
    float advance = glyph.box.width() > 0 ? glyph.box.width() * scale : size * 0.5f;
    if (glyph.monospaced)
        advance = std::max(advance, size * 0.6f);
    return advance;
}

int WrappedLines(const std::vector<Glyph>& glyphs, float width, float scale,
                 const TextWidths* widths, float firstIndent)
{
    if (width <= 0)
        return 1;
    int lines = 1;
    float line = firstIndent;
    float word = 0;
    float blank = 0;
    bool started = false;
    const auto place = [&]() {
        if (word <= 0)
            return;
        if (started && line + blank + word > width) {
            ++lines;
            line = 0;
            blank = 0;
        }
        // A word longer than the line is broken where the line ends.
        while (word > width) {
            ++lines;
            word -= width;
        }
        line += blank + word;
        started = true;
        word = 0;
        blank = 0;
    };
    for (const Glyph& glyph : glyphs) {
        if (glyph.c == ' ' || glyph.c == '\t' || glyph.c == 0x3000) {
            place();
            blank = widths && glyph.c == ' ' ? widths->advance(glyph, scale)
                                             : glyph.size * scale * 0.25f;
            continue;
        }
        float advance = glyph.box.width() > 0 ? glyph.box.width() : glyph.size * 0.5f;
        if (glyph.monospaced)
            advance = std::max(advance, glyph.size * 0.6f);
        word += widths ? widths->advance(glyph, scale) : advance * scale;
        // East Asian text breaks between any two characters.
        const int charset = CharsetFor(glyph.c);
        if (charset == 128 || charset == 129)
            place();
    }
    place();
    return lines;
}

float ShrinkTabbed(const Block& block, float rightEdge)
{
    float scale = 1;
    std::size_t stop = 0;
    std::vector<Glyph> part;
    const auto fit = [&](float limit) {
        if (part.empty())
            return;
        const float start = part.front().box.x0;
        const float room = limit - start - part.front().size * 0.3f;
        const float needed = EstimatedWidth(part, 1);
        if (needed > room && room > 0)
            scale = std::min(scale, room / needed);
        part.clear();
    };
    for (const Glyph& glyph : block.text) {
        if (glyph.c != '\t') {
            part.push_back(glyph);
            continue;
        }
        fit(stop < block.tabStops.size() ? block.tabStops[stop] : block.leaderStop);
        ++stop;
    }
    fit(rightEdge);
    return std::max(scale, 0.6f);
}

float ShrinkToFit(const Block& block, float boxWidth, float boxHeight)
{
    if (boxWidth <= 0 || block.size <= 0)
        return 1;
    float scale = 1;
    const float lineCount = static_cast<float>(std::max<std::size_t>(1, block.lines.size()));
    for (int step = 0; step < 8; ++step) {
        // The estimate is rough: within 10 % of the box counts as fitting.
        const float width = EstimatedWidth(block.text, scale);
        const float lines = std::ceil(width / (boxWidth * 1.1f));
        const float height = lines * block.size * scale * 1.1f;
        if (lines <= lineCount || height <= boxHeight * 1.1f + 2)
            break;
        scale *= 0.95f;
        if (scale < 0.6f) {
            scale = 0.6f;
            break;
        }
    }
    return scale;
}

}  // namespace velmora
