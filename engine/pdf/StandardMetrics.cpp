#include "pdf/StandardMetrics.h"

extern "C" {
#include <mupdf/fitz.h>
}

#include <array>
#include <mutex>
#include <vector>

namespace velmora {

namespace {

// Latin, Latin-1 and the extended Latin letters; everything else is looked up as it comes.
constexpr char32_t Tabled = 0x250;

fz_font* loadFont(fz_context* context, const char* name)
{
    fz_font* font = nullptr;
    fz_var(font);
    fz_try(context)
    {
        font = fz_new_base14_font(context, name);
    }
    fz_catch(context)
    {
        font = nullptr;
    }
    return font;
}

float measureGlyph(fz_context* context, fz_font* font, char32_t c)
{
    float advance = -1;
    fz_var(advance);
    fz_try(context)
    {
        const int glyph = fz_encode_character(context, font, static_cast<int>(c));
        if (glyph > 0 || c == ' ')
            advance = fz_advance_glyph(context, font, glyph, 0);
    }
    fz_catch(context)
    {
        advance = -1;
    }
    return advance;
}

struct Face
{
    fz_font* font = nullptr;
    std::vector<float> advances;  // by code point below Tabled
};

struct Metrics
{
    fz_context* context = nullptr;
    std::array<Face, 12> faces;
    std::mutex lookup;  // guards the context for characters beyond the table

    Metrics()
    {
        static constexpr const char* Names[12] = {
            "Times-Roman", "Times-Italic",      "Times-Bold",     "Times-BoldItalic",
            "Helvetica",   "Helvetica-Oblique", "Helvetica-Bold", "Helvetica-BoldOblique",
            "Courier",     "Courier-Oblique",   "Courier-Bold",   "Courier-BoldOblique"};
        context = fz_new_context(nullptr, nullptr, FZ_STORE_UNLIMITED);
        if (!context)
            return;
        for (std::size_t i = 0; i < faces.size(); ++i) {
            Face& face = faces[i];
            face.font = loadFont(context, Names[i]);
            face.advances.assign(Tabled, -1);
            for (char32_t c = 0x20; c < Tabled && face.font; ++c)
                face.advances[c] = measureGlyph(context, face.font, c);
        }
    }

    ~Metrics()
    {
        for (Face& face : faces)
            fz_drop_font(context, face.font);
        fz_drop_context(context);
    }
};

Metrics& metrics()
{
    static Metrics instance;
    return instance;
}

}  // namespace

float StandardAdvance(StandardFamily family, bool bold, bool italic, char32_t c)
{
    Metrics& all = metrics();
    const std::size_t index =
        static_cast<std::size_t>(family) * 4 + (bold ? 2 : 0) + (italic ? 1 : 0);
    Face& face = all.faces[index];
    if (!face.font)
        return -1;
    if (c < Tabled)
        return face.advances[c];
    const std::lock_guard<std::mutex> guard(all.lookup);
    return measureGlyph(all.context, face.font, c);
}

}  // namespace velmora
