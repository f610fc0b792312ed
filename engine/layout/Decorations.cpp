#include "layout/Decorations.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

bool isBlank(char32_t c)
{
    return c == ' ' || c == '\t' || c == 0xa0;
}

// A horizontal rule: a straight line or a bar no higher than a heavy underline.
bool horizontalRule(const Drawing& drawing, float& y)
{
    const Rect& box = drawing.box;
    if (drawing.kind == Drawing::Kind::Line && box.height() < 1 && box.width() > 2) {
        y = box.centreY();
        return true;
    }
    if (drawing.kind == Drawing::Kind::Rectangle && drawing.filled && !drawing.stroked &&
        box.height() <= 2.5f && box.width() > box.height() * 4) {
        y = box.centreY();
        return true;
    }
    return false;
}

}  // namespace

void DecorateRuns(std::vector<Fragment>& fragments, const std::vector<Drawing>& drawings,
                  std::vector<bool>& used)
{
    for (std::size_t d = 0; d < drawings.size(); ++d) {
        if (used[d])
            continue;
        const Drawing& drawing = drawings[d];
        const Rect& box = drawing.box;
        float y = 0;
        const bool rule = horizontalRule(drawing, y);
        const bool fill = !rule && drawing.kind == Drawing::Kind::Rectangle && drawing.filled &&
                          !drawing.stroked && box.height() > 2.5f;
        if (!rule && !fill)
            continue;
        // The glyphs the drawing runs under, through or behind, all on one baseline.
        std::vector<Glyph*> under;
        std::vector<Glyph*> through;
        std::vector<Glyph*> behind;
        float covered = 0;
        float baseline = -1;
        bool oneLine = true;
        for (Fragment& fragment : fragments) {
            if (fragment.box.x1 < box.x0 - 1 || fragment.box.x0 > box.x1 + 1 ||
                fragment.box.y1 < box.y0 - 20 || fragment.box.y0 > box.y1 + 20)
                continue;
            for (Glyph& glyph : fragment.glyphs) {
                const float x = glyph.box.centreX();
                if (isBlank(glyph.c) || x < box.x0 - 0.5f || x > box.x1 + 0.5f)
                    continue;
                const float size = std::max(glyph.size, 1.0f);
                if (rule) {
                    const float below = y - glyph.baseline;
                    if (below >= -0.05f * size && below <= 0.35f * size)
                        under.push_back(&glyph);
                    else if (below <= -0.15f * size && below >= -0.45f * size)
                        through.push_back(&glyph);
                    else
                        continue;
                } else {
                    if (glyph.box.centreY() < box.y0 || glyph.box.centreY() > box.y1)
                        continue;
                    behind.push_back(&glyph);
                }
                if (baseline >= 0 && std::fabs(glyph.baseline - baseline) > size * 0.5f)
                    oneLine = false;
                baseline = glyph.baseline;
                covered += glyph.box.width();
            }
        }
        // The drawing must belong to the run: as long as its glyphs, not a rule or a panel
        // that merely passes them.
        if (!oneLine || covered < box.width() * 0.6f)
            continue;
        if (rule && (under.size() + through.size() == 0 || (!under.empty() && !through.empty())))
            continue;
        if (fill && (behind.empty() || box.height() > behind.front()->size * 2.2f))
            continue;
        for (Glyph* glyph : under)
            glyph->underline = true;
        for (Glyph* glyph : through)
            glyph->strike = true;
        for (Glyph* glyph : behind) {
            glyph->highlighted = true;
            glyph->highlight = drawing.fill;
        }
        used[d] = true;
    }
    // The blanks inside a decorated run are decorated too.
    for (Fragment& fragment : fragments) {
        std::vector<Glyph>& glyphs = fragment.glyphs;
        for (std::size_t i = 1; i + 1 < glyphs.size(); ++i) {
            if (!isBlank(glyphs[i].c))
                continue;
            std::size_t next = i + 1;
            while (next + 1 < glyphs.size() && isBlank(glyphs[next].c))
                ++next;
            const Glyph& before = glyphs[i - 1];
            const Glyph& after = glyphs[next];
            glyphs[i].underline = before.underline && after.underline;
            glyphs[i].strike = before.strike && after.strike;
            glyphs[i].highlighted =
                before.highlighted && after.highlighted && before.highlight == after.highlight;
            glyphs[i].highlight = before.highlight;
        }
    }
}

void BoxParagraphs(std::vector<Block>& blocks, const std::vector<Drawing>& drawings,
                   std::vector<bool>& used)
{
    for (std::size_t d = 0; d < drawings.size(); ++d) {
        const Drawing& drawing = drawings[d];
        const Rect& box = drawing.box;
        if (used[d] || drawing.kind != Drawing::Kind::Rectangle ||
            (!drawing.stroked && !drawing.filled) || box.height() < 6 || box.width() < 12)
            continue;
        std::vector<Block*> inside;
        bool alone = true;
        for (Block& block : blocks) {
            const Rect& b = block.box;
            const bool within = b.x0 >= box.x0 - 1 && b.x1 <= box.x1 + 1 && b.y0 >= box.y0 - 1 &&
                                b.y1 <= box.y1 + 1;
            const bool touches = b.x0 < box.x1 && b.x1 > box.x0 && b.y0 < box.y1 && b.y1 > box.y0;
            if (within && (block.kind == BlockKind::Paragraph ||
                           block.kind == BlockKind::Heading1 || block.kind == BlockKind::Heading2))
                inside.push_back(&block);
            else if (touches)
                alone = false;
        }
        if (!alone || inside.empty())
            continue;
        // The box hugs its text: no wider a margin than a few letters.
        Rect text;
        float size = 0;
        for (const Block* block : inside) {
            text.unite(block->box);
            size = std::max(size, block->size);
        }
        const float padding =
            std::min({text.x0 - box.x0, box.x1 - text.x1, text.y0 - box.y0, box.y1 - text.y1});
        if (std::max(text.x0 - box.x0, text.y0 - box.y0) > size * 3 + 6)
            continue;
        for (Block* block : inside) {
            if (drawing.stroked)
                block->border = CellBorder{drawing.lineWidth, drawing.stroke};
            block->padding = std::max(0.0f, padding);
            if (drawing.filled) {
                block->shaded = true;
                block->shading = drawing.fill;
            }
        }
        used[d] = true;
    }
}

}  // namespace velmora
