#include "pdf/PageDrawings.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmora {

namespace {

// More shapes than this on one page are a plot or a map: they become one picture, which keeps
// the document's size and a word processor's speed bounded.
constexpr std::size_t MaxShapes = 400;
// The artwork picture's resolution and size.
constexpr float ArtworkDpi = 150;
constexpr float MaxArtworkPixels = 6e6f;

struct Outline
{
    std::vector<std::vector<fz_point>> subpaths;
    bool curved = false;
    bool closed = false;
};

void walkMove(fz_context*, void* arg, float x, float y)
{
    static_cast<Outline*>(arg)->subpaths.push_back({fz_make_point(x, y)});
}

void walkLine(fz_context*, void* arg, float x, float y)
{
    auto* outline = static_cast<Outline*>(arg);
    if (outline->subpaths.empty())
        outline->subpaths.emplace_back();
    outline->subpaths.back().push_back(fz_make_point(x, y));
}

void walkCurve(fz_context*, void* arg, float, float, float, float, float, float)
{
    static_cast<Outline*>(arg)->curved = true;
}

void walkClose(fz_context*, void* arg)
{
    static_cast<Outline*>(arg)->closed = true;
}

void walkRect(fz_context*, void* arg, float x0, float y0, float x1, float y1)
{
    static_cast<Outline*>(arg)->subpaths.push_back({fz_make_point(x0, y0), fz_make_point(x1, y0),
                                                    fz_make_point(x1, y1), fz_make_point(x0, y1)});
    static_cast<Outline*>(arg)->closed = true;
}

constexpr fz_path_walker Walker{walkMove, walkLine, walkCurve, walkClose,
                                nullptr,  nullptr,  nullptr,   walkRect};

// The pieces of a path that are axis-aligned rectangles or straight lines, in device space;
// false when any piece is something else.
bool simplePieces(fz_context* ctx, const fz_path* path, fz_matrix ctm, bool stroked,
                  std::vector<Drawing>& pieces)
{
    Outline outline;
    fz_walk_path(ctx, path, &Walker, &outline);
    if (outline.curved || outline.subpaths.empty())
        return false;
    for (std::vector<fz_point>& points : outline.subpaths) {
        for (fz_point& point : points)
            point = fz_transform_point(point, ctm);
        // A closing point that repeats the first adds nothing.
        if (points.size() == 5 && std::fabs(points[4].x - points[0].x) < 0.01f &&
            std::fabs(points[4].y - points[0].y) < 0.01f)
            points.pop_back();
        Drawing piece;
        if (points.size() == 2 && stroked) {
            piece.kind = Drawing::Kind::Line;
            piece.box =
                Rect{std::min(points[0].x, points[1].x), std::min(points[0].y, points[1].y),
                     std::max(points[0].x, points[1].x), std::max(points[0].y, points[1].y)};
            // Going down-right or up-left is the box's diagonal; otherwise it rises.
            piece.rising = (points[1].x - points[0].x) * (points[1].y - points[0].y) < 0;
        } else if (points.size() == 4) {
            Rect box{points[0].x, points[0].y, points[0].x, points[0].y};
            for (const fz_point& point : points)
                box.unite(Rect{point.x, point.y, point.x + 0.0001f, point.y + 0.0001f});
            for (const fz_point& point : points) {
                const bool onX =
                    std::fabs(point.x - box.x0) < 0.05f || std::fabs(point.x - box.x1) < 0.05f;
                const bool onY =
                    std::fabs(point.y - box.y0) < 0.05f || std::fabs(point.y - box.y1) < 0.05f;
                if (!onX || !onY)
                    return false;
            }
            piece.box = box;
        } else {
            return false;
        }
        pieces.push_back(piece);
    }
    return true;
}

uint32_t toRgb(fz_context* ctx, fz_colorspace* colorspace, const float* colour,
               fz_color_params params)
{
    float rgb[3] = {0, 0, 0};
    if (colorspace && colour)
        fz_convert_color(ctx, colorspace, colour, fz_device_rgb(ctx), rgb, nullptr, params);
    const auto channel = [](float v) {
        return static_cast<uint32_t>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255));
    };
    return channel(rgb[0]) << 16 | channel(rgb[1]) << 8 | channel(rgb[2]);
}

struct Collector
{
    fz_device super;
    std::vector<fz_rect> clips;
    std::vector<fz_rect> text;
    std::vector<fz_rect> hidden;
    std::vector<Drawing> drawings;
    fz_rect artwork;
    fz_rect page;

    fz_rect clip() const { return clips.empty() ? fz_infinite_rect : clips.back(); }
    void pushClip(fz_rect box) { clips.push_back(fz_intersect_rect(clip(), box)); }

    void addArtwork(fz_rect box)
    {
        box = fz_intersect_rect(fz_intersect_rect(box, clip()), page);
        if (!fz_is_empty_rect(box))
            artwork = fz_union_rect(artwork, box);
    }

    void add(Drawing piece)
    {
        const fz_rect shown = fz_intersect_rect(
            fz_intersect_rect(fz_make_rect(piece.box.x0, piece.box.y0, piece.box.x1, piece.box.y1),
                              clip()),
            page);
        if (fz_is_empty_rect(shown) && piece.kind == Drawing::Kind::Rectangle)
            return;
        if (piece.kind == Drawing::Kind::Rectangle)
            piece.box = Rect{shown.x0, shown.y0, shown.x1, shown.y1};
        const float pageArea = (page.x1 - page.x0) * (page.y1 - page.y0);
        // A white sheet under the whole page is the paper itself.
        if (piece.filled && !piece.stroked && piece.fill == 0xffffff &&
            piece.box.width() * piece.box.height() > pageArea * 0.5f)
            return;
        for (const fz_rect& run : text) {
            if (!fz_is_empty_rect(fz_intersect_rect(
                    run, fz_make_rect(piece.box.x0, piece.box.y0, piece.box.x1, piece.box.y1))))
                piece.inFront = true;
        }
        drawings.push_back(piece);
    }
};

Collector* collector(fz_device* device)
{
    return reinterpret_cast<Collector*>(device);
}

void collectFill(fz_context* ctx, fz_device* device, const fz_path* path, int, fz_matrix ctm,
                 fz_colorspace* colorspace, const float* colour, float alpha,
                 fz_color_params params)
{
    if (alpha < 0.05f)
        return;
    Collector* self = collector(device);
    std::vector<Drawing> pieces;
    if (!simplePieces(ctx, path, ctm, false, pieces)) {
        self->addArtwork(fz_bound_path(ctx, path, nullptr, ctm));
        return;
    }
    const uint32_t rgb = toRgb(ctx, colorspace, colour, params);
    for (Drawing& piece : pieces) {
        piece.filled = true;
        piece.fill = rgb;
        self->add(piece);
    }
}

void collectStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                   const fz_stroke_state* stroke, fz_matrix ctm, fz_colorspace* colorspace,
                   const float* colour, float alpha, fz_color_params params)
{
    if (alpha < 0.05f)
        return;
    Collector* self = collector(device);
    std::vector<Drawing> pieces;
    if ((stroke && stroke->dash_len > 0) || !simplePieces(ctx, path, ctm, true, pieces)) {
        self->addArtwork(fz_bound_path(ctx, path, stroke, ctm));
        return;
    }
    const uint32_t rgb = toRgb(ctx, colorspace, colour, params);
    const float width =
        std::max(0.25f, (stroke ? stroke->linewidth : 1) * fz_matrix_expansion(ctm));
    for (Drawing& piece : pieces) {
        piece.stroked = true;
        piece.stroke = rgb;
        piece.lineWidth = width;
        self->add(piece);
    }
}

void collectText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm,
                 fz_colorspace*, const float*, float, fz_color_params)
{
    collector(device)->text.push_back(fz_bound_text(ctx, text, nullptr, ctm));
}

void collectStrokeText(fz_context* ctx, fz_device* device, const fz_text* text,
                       const fz_stroke_state* stroke, fz_matrix ctm, fz_colorspace*, const float*,
                       float, fz_color_params)
{
    collector(device)->text.push_back(fz_bound_text(ctx, text, stroke, ctm));
}

void collectHiddenText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm)
{
    collector(device)->hidden.push_back(fz_bound_text(ctx, text, nullptr, ctm));
}

void collectClipPath(fz_context* ctx, fz_device* device, const fz_path* path, int, fz_matrix ctm,
                     fz_rect)
{
    collector(device)->pushClip(fz_bound_path(ctx, path, nullptr, ctm));
}

void collectClipStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                       const fz_stroke_state* stroke, fz_matrix ctm, fz_rect)
{
    collector(device)->pushClip(fz_bound_path(ctx, path, stroke, ctm));
}

void collectClipText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm,
                     fz_rect)
{
    collector(device)->pushClip(fz_bound_text(ctx, text, nullptr, ctm));
}

void collectClipStrokeText(fz_context* ctx, fz_device* device, const fz_text* text,
                           const fz_stroke_state* stroke, fz_matrix ctm, fz_rect)
{
    collector(device)->pushClip(fz_bound_text(ctx, text, stroke, ctm));
}

void collectClipMask(fz_context*, fz_device* device, fz_image*, fz_matrix ctm, fz_rect)
{
    collector(device)->pushClip(fz_transform_rect(fz_unit_rect, ctm));
}

void collectEndMask(fz_context*, fz_device* device)
{
    collector(device)->pushClip(fz_infinite_rect);
}

void collectPopClip(fz_context*, fz_device* device)
{
    Collector* self = collector(device);
    if (!self->clips.empty())
        self->clips.pop_back();
}

void collectShade(fz_context* ctx, fz_device* device, fz_shade* shade, fz_matrix ctm, float,
                  fz_color_params)
{
    collector(device)->addArtwork(fz_bound_shade(ctx, shade, ctm));
}

// Passes the page's vector graphics to a draw device and drops its text and pictures; with
// `everything` off, only the paths the collector could not keep as shapes are drawn.
struct ArtworkFilter
{
    fz_device super;
    fz_device* target;
    bool everything;
};

ArtworkFilter* filter(fz_device* device)
{
    return reinterpret_cast<ArtworkFilter*>(device);
}

void artFill(fz_context* ctx, fz_device* device, const fz_path* path, int evenOdd, fz_matrix ctm,
             fz_colorspace* colorspace, const float* colour, float alpha, fz_color_params params)
{
    std::vector<Drawing> pieces;
    if (filter(device)->everything || !simplePieces(ctx, path, ctm, false, pieces))
        fz_fill_path(ctx, filter(device)->target, path, evenOdd, ctm, colorspace, colour, alpha,
                     params);
}

void artStroke(fz_context* ctx, fz_device* device, const fz_path* path,
               const fz_stroke_state* stroke, fz_matrix ctm, fz_colorspace* colorspace,
               const float* colour, float alpha, fz_color_params params)
{
    std::vector<Drawing> pieces;
    if (filter(device)->everything || (stroke && stroke->dash_len > 0) ||
        !simplePieces(ctx, path, ctm, true, pieces))
        fz_stroke_path(ctx, filter(device)->target, path, stroke, ctm, colorspace, colour, alpha,
                       params);
}

void artClipPath(fz_context* ctx, fz_device* device, const fz_path* path, int evenOdd,
                 fz_matrix ctm, fz_rect scissor)
{
    fz_clip_path(ctx, filter(device)->target, path, evenOdd, ctm, scissor);
}

void artClipStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                   const fz_stroke_state* stroke, fz_matrix ctm, fz_rect scissor)
{
    fz_clip_stroke_path(ctx, filter(device)->target, path, stroke, ctm, scissor);
}

void artClipText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm,
                 fz_rect scissor)
{
    fz_clip_text(ctx, filter(device)->target, text, ctm, scissor);
}

void artClipStrokeText(fz_context* ctx, fz_device* device, const fz_text* text,
                       const fz_stroke_state* stroke, fz_matrix ctm, fz_rect scissor)
{
    fz_clip_stroke_text(ctx, filter(device)->target, text, stroke, ctm, scissor);
}

void artClipMask(fz_context* ctx, fz_device* device, fz_image* image, fz_matrix ctm,
                 fz_rect scissor)
{
    fz_clip_image_mask(ctx, filter(device)->target, image, ctm, scissor);
}

void artPopClip(fz_context* ctx, fz_device* device)
{
    fz_pop_clip(ctx, filter(device)->target);
}

void artShade(fz_context* ctx, fz_device* device, fz_shade* shade, fz_matrix ctm, float alpha,
              fz_color_params params)
{
    fz_fill_shade(ctx, filter(device)->target, shade, ctm, alpha, params);
}

void artBeginMask(fz_context* ctx, fz_device* device, fz_rect area, int luminosity,
                  fz_colorspace* colorspace, const float* colour, fz_color_params params)
{
    fz_begin_mask(ctx, filter(device)->target, area, luminosity, colorspace, colour, params);
}

void artEndMask(fz_context* ctx, fz_device* device)
{
    fz_end_mask(ctx, filter(device)->target);
}

void artBeginGroup(fz_context* ctx, fz_device* device, fz_rect area, fz_colorspace* colorspace,
                   int isolated, int knockout, int blendmode, float alpha)
{
    fz_begin_group(ctx, filter(device)->target, area, colorspace, isolated, knockout, blendmode,
                   alpha);
}

void artEndGroup(fz_context* ctx, fz_device* device)
{
    fz_end_group(ctx, filter(device)->target);
}

int artBeginTile(fz_context* ctx, fz_device* device, fz_rect area, fz_rect view, float xstep,
                 float ystep, fz_matrix ctm, int id)
{
    return fz_begin_tile_id(ctx, filter(device)->target, area, view, xstep, ystep, ctm, id);
}

void artEndTile(fz_context* ctx, fz_device* device)
{
    fz_end_tile(ctx, filter(device)->target);
}

Picture paintArtwork(fz_context* ctx, fz_display_list* list, fz_rect region, bool everything,
                     fz_cookie* cookie)
{
    const float area = (region.x1 - region.x0) * (region.y1 - region.y0);
    float zoom = ArtworkDpi / 72;
    zoom = std::min(zoom, std::sqrt(MaxArtworkPixels / std::max(area, 1.0f)));
    const fz_matrix ctm = fz_scale(zoom, zoom);
    const fz_irect pixels = fz_round_rect(fz_transform_rect(region, ctm));
    Picture picture;
    fz_pixmap* pixmap = nullptr;
    fz_device* draw = nullptr;
    fz_device* device = nullptr;
    fz_buffer* png = nullptr;
    fz_var(pixmap);
    fz_var(draw);
    fz_var(device);
    fz_var(png);
    fz_try(ctx)
    {
        pixmap = fz_new_pixmap_with_bbox(ctx, fz_device_rgb(ctx), pixels, nullptr, 1);
        fz_clear_pixmap(ctx, pixmap);
        draw = fz_new_draw_device(ctx, fz_identity, pixmap);
        auto* art = fz_new_derived_device(ctx, ArtworkFilter);
        device = &art->super;
        art->target = draw;
        art->everything = everything;
        device->fill_path = artFill;
        device->stroke_path = artStroke;
        device->clip_path = artClipPath;
        device->clip_stroke_path = artClipStroke;
        device->clip_text = artClipText;
        device->clip_stroke_text = artClipStrokeText;
        device->clip_image_mask = artClipMask;
        device->pop_clip = artPopClip;
        device->fill_shade = artShade;
        device->begin_mask = artBeginMask;
        device->end_mask = artEndMask;
        device->begin_group = artBeginGroup;
        device->end_group = artEndGroup;
        device->begin_tile = artBeginTile;
        device->end_tile = artEndTile;
        fz_run_display_list(ctx, list, device, ctm, fz_transform_rect(region, ctm), cookie);
        fz_close_device(ctx, device);
        fz_close_device(ctx, draw);
        png = fz_new_buffer_from_pixmap_as_png(ctx, pixmap, fz_default_color_params);
        unsigned char* data = nullptr;
        const std::size_t size = fz_buffer_storage(ctx, png, &data);
        picture.kind = PictureKind::Png;
        picture.data.assign(data, data + size);
        picture.pixelWidth = pixmap->w;
        picture.pixelHeight = pixmap->h;
        picture.box = Rect{region.x0, region.y0, region.x1, region.y1};
    }
    fz_always(ctx)
    {
        fz_drop_buffer(ctx, png);
        fz_drop_device(ctx, device);
        fz_drop_device(ctx, draw);
        fz_drop_pixmap(ctx, pixmap);
    }
    fz_catch(ctx)
    {
        fz_rethrow(ctx);
    }
    return picture;
}

}  // namespace

void CollectDrawings(fz_context* ctx, fz_display_list* list, const fz_rect& bounds, float dx,
                     float dy, PageContent& page, fz_cookie* cookie)
{
    auto* self = fz_new_derived_device(ctx, Collector);
    // The device's own memory is MuPDF's; the vectors in it are constructed here and destroyed
    // before MuPDF frees it.
    new (&self->clips) std::vector<fz_rect>();
    new (&self->text) std::vector<fz_rect>();
    new (&self->hidden) std::vector<fz_rect>();
    new (&self->drawings) std::vector<Drawing>();
    self->artwork = fz_empty_rect;
    self->page = bounds;
    fz_device* device = &self->super;
    device->fill_path = collectFill;
    device->stroke_path = collectStroke;
    device->fill_text = collectText;
    device->stroke_text = collectStrokeText;
    device->ignore_text = collectHiddenText;
    device->clip_path = collectClipPath;
    device->clip_stroke_path = collectClipStroke;
    device->clip_text = collectClipText;
    device->clip_stroke_text = collectClipStrokeText;
    device->clip_image_mask = collectClipMask;
    device->end_mask = collectEndMask;
    device->pop_clip = collectPopClip;
    device->fill_shade = collectShade;
    std::vector<Drawing> drawings;
    std::vector<fz_rect> hidden;
    fz_rect artwork = fz_empty_rect;
    fz_try(ctx)
    {
        fz_run_display_list(ctx, list, device, fz_identity, fz_infinite_rect, cookie);
        fz_close_device(ctx, device);
        // Swapped rather than moved: the device's vectors are still destroyed by hand below.
        drawings.swap(self->drawings);
        hidden.swap(self->hidden);
        artwork = self->artwork;
    }
    fz_always(ctx)
    {
        self->clips.~vector();
        self->text.~vector();
        self->hidden.~vector();
        self->drawings.~vector();
        fz_drop_device(ctx, device);
    }
    fz_catch(ctx)
    {
        fz_rethrow(ctx);
    }
    for (const fz_rect& box : hidden)
        page.hiddenText.push_back(Rect{box.x0 + dx, box.y0 + dy, box.x1 + dx, box.y1 + dy});
    const bool dense = drawings.size() > MaxShapes;
    if (dense) {
        for (const Drawing& drawing : drawings)
            artwork = fz_union_rect(artwork, fz_make_rect(drawing.box.x0, drawing.box.y0,
                                                          drawing.box.x1, drawing.box.y1));
        drawings.clear();
    }
    for (Drawing& drawing : drawings) {
        drawing.box = Rect{drawing.box.x0 + dx, drawing.box.y0 + dy, drawing.box.x1 + dx,
                           drawing.box.y1 + dy};
        page.drawings.push_back(drawing);
    }
    artwork = fz_intersect_rect(artwork, bounds);
    if (!fz_is_empty_rect(artwork) && artwork.x1 - artwork.x0 > 1 && artwork.y1 - artwork.y0 > 1) {
        Picture picture = paintArtwork(ctx, list, artwork, dense, cookie);
        picture.box = Rect{picture.box.x0 + dx, picture.box.y0 + dy, picture.box.x1 + dx,
                           picture.box.y1 + dy};
        page.artwork.push_back(std::move(picture));
    }
}

}  // namespace velmora
