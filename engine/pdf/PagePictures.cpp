#include "pdf/PagePictures.h"

#include "pdf/ImageCodec.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace velmora {

namespace {

// More pictures than this on one page are not worth a drawing each: the rest are left out.
constexpr int MaxPictures = 500;
constexpr float MaxDrawnPixels = 16e6f;

struct Found
{
    fz_rect box;     // where it shows, within its clip, in device space
    float zoom = 1;  // pixels per point it is worth drawing at
    // Which drawing call it is: the page's display list lives as long as the pointer is used.
    const fz_image* image = nullptr;
    fz_matrix ctm;
};

// Meets the page's pictures in the order they are drawn, with the clip each is drawn in.
// Pictures inside a mask's definition only shape the mask.
struct Finder
{
    fz_device super;
    std::vector<fz_rect> clips;
    std::vector<Found> found;
    int maskDepth = 0;

    fz_rect clip() const { return clips.empty() ? fz_infinite_rect : clips.back(); }
    void pushClip(fz_rect box) { clips.push_back(fz_intersect_rect(clip(), box)); }

    void picture(fz_image* image, fz_matrix ctm)
    {
        if (maskDepth > 0)
            return;
        const fz_rect shown = fz_intersect_rect(fz_transform_rect(fz_unit_rect, ctm), clip());
        // The picture's own resolution along its sides, in pixels per point.
        const float across = std::hypot(ctm.a, ctm.b);
        const float down = std::hypot(ctm.c, ctm.d);
        const float detail = std::max(across > 0 ? static_cast<float>(image->w) / across : 1.0f,
                                      down > 0 ? static_cast<float>(image->h) / down : 1.0f);
        found.push_back(Found{shown, detail, image, ctm});
    }
};

Finder* finder(fz_device* device)
{
    return reinterpret_cast<Finder*>(device);
}

void findImage(fz_context*, fz_device* device, fz_image* image, fz_matrix ctm, float,
               fz_color_params)
{
    finder(device)->picture(image, ctm);
}

void findImageMask(fz_context*, fz_device* device, fz_image* image, fz_matrix ctm, fz_colorspace*,
                   const float*, float, fz_color_params)
{
    finder(device)->picture(image, ctm);
}

void findClipPath(fz_context* ctx, fz_device* device, const fz_path* path, int, fz_matrix ctm,
                  fz_rect)
{
    finder(device)->pushClip(fz_bound_path(ctx, path, nullptr, ctm));
}

void findClipStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                    const fz_stroke_state* stroke, fz_matrix ctm, fz_rect)
{
    finder(device)->pushClip(fz_bound_path(ctx, path, stroke, ctm));
}

void findClipText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm, fz_rect)
{
    finder(device)->pushClip(fz_bound_text(ctx, text, nullptr, ctm));
}

void findClipStrokeText(fz_context* ctx, fz_device* device, const fz_text* text,
                        const fz_stroke_state* stroke, fz_matrix ctm, fz_rect)
{
    finder(device)->pushClip(fz_bound_text(ctx, text, stroke, ctm));
}

void findClipMask(fz_context*, fz_device* device, fz_image*, fz_matrix ctm, fz_rect)
{
    finder(device)->pushClip(fz_transform_rect(fz_unit_rect, ctm));
}

void findBeginMask(fz_context*, fz_device* device, fz_rect, int, fz_colorspace*, const float*,
                   fz_color_params)
{
    ++finder(device)->maskDepth;
}

void findEndMask(fz_context*, fz_device* device)
{
    Finder* self = finder(device);
    --self->maskDepth;
    self->pushClip(fz_infinite_rect);
}

void findPopClip(fz_context*, fz_device* device)
{
    Finder* self = finder(device);
    if (!self->clips.empty())
        self->clips.pop_back();
}

// Passes one picture to a draw device with everything that shapes it: the clips and masks it
// is drawn in. Text, paths and other pictures stay out, except inside a mask's definition.
// MuPDF allocates it zeroed and the device functions fill it in, so it stays a trivial type
// without initialisers of its own.
struct Filter  // NOLINT(cppcoreguidelines-pro-type-member-init)
{
    fz_device super;
    fz_device* target;
    const fz_image* image;
    fz_matrix ctm;
    int maskDepth;
};

Filter* filter(fz_device* device)
{
    return reinterpret_cast<Filter*>(device);
}

bool passes(Filter* self, const fz_image* image, const fz_matrix& ctm)
{
    if (self->maskDepth > 0)
        return true;
    const fz_matrix& w = self->ctm;
    const auto near = [](float a, float b) { return std::fabs(a - b) < 0.01f; };
    return image == self->image && near(ctm.a, w.a) && near(ctm.b, w.b) && near(ctm.c, w.c) &&
           near(ctm.d, w.d) && near(ctm.e, w.e) && near(ctm.f, w.f);
}

void passImage(fz_context* ctx, fz_device* device, fz_image* image, fz_matrix ctm, float alpha,
               fz_color_params params)
{
    if (passes(filter(device), image, ctm))
        fz_fill_image(ctx, filter(device)->target, image, ctm, alpha, params);
}

void passImageMask(fz_context* ctx, fz_device* device, fz_image* image, fz_matrix ctm,
                   fz_colorspace* colorspace, const float* colour, float alpha,
                   fz_color_params params)
{
    if (passes(filter(device), image, ctm))
        fz_fill_image_mask(ctx, filter(device)->target, image, ctm, colorspace, colour, alpha,
                           params);
}

void passFill(fz_context* ctx, fz_device* device, const fz_path* path, int evenOdd, fz_matrix ctm,
              fz_colorspace* colorspace, const float* colour, float alpha, fz_color_params params)
{
    if (filter(device)->maskDepth > 0)
        fz_fill_path(ctx, filter(device)->target, path, evenOdd, ctm, colorspace, colour, alpha,
                     params);
}

void passStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                const fz_stroke_state* stroke, fz_matrix ctm, fz_colorspace* colorspace,
                const float* colour, float alpha, fz_color_params params)
{
    if (filter(device)->maskDepth > 0)
        fz_stroke_path(ctx, filter(device)->target, path, stroke, ctm, colorspace, colour, alpha,
                       params);
}

void passShade(fz_context* ctx, fz_device* device, fz_shade* shade, fz_matrix ctm, float alpha,
               fz_color_params params)
{
    if (filter(device)->maskDepth > 0)
        fz_fill_shade(ctx, filter(device)->target, shade, ctm, alpha, params);
}

void passClipPath(fz_context* ctx, fz_device* device, const fz_path* path, int evenOdd,
                  fz_matrix ctm, fz_rect scissor)
{
    fz_clip_path(ctx, filter(device)->target, path, evenOdd, ctm, scissor);
}

void passClipStroke(fz_context* ctx, fz_device* device, const fz_path* path,
                    const fz_stroke_state* stroke, fz_matrix ctm, fz_rect scissor)
{
    fz_clip_stroke_path(ctx, filter(device)->target, path, stroke, ctm, scissor);
}

void passClipText(fz_context* ctx, fz_device* device, const fz_text* text, fz_matrix ctm,
                  fz_rect scissor)
{
    fz_clip_text(ctx, filter(device)->target, text, ctm, scissor);
}

void passClipStrokeText(fz_context* ctx, fz_device* device, const fz_text* text,
                        const fz_stroke_state* stroke, fz_matrix ctm, fz_rect scissor)
{
    fz_clip_stroke_text(ctx, filter(device)->target, text, stroke, ctm, scissor);
}

void passClipMask(fz_context* ctx, fz_device* device, fz_image* image, fz_matrix ctm,
                  fz_rect scissor)
{
    fz_clip_image_mask(ctx, filter(device)->target, image, ctm, scissor);
}

void passPopClip(fz_context* ctx, fz_device* device)
{
    fz_pop_clip(ctx, filter(device)->target);
}

void passBeginMask(fz_context* ctx, fz_device* device, fz_rect area, int luminosity,
                   fz_colorspace* colorspace, const float* colour, fz_color_params params)
{
    ++filter(device)->maskDepth;
    fz_begin_mask(ctx, filter(device)->target, area, luminosity, colorspace, colour, params);
}

void passEndMask(fz_context* ctx, fz_device* device)
{
    --filter(device)->maskDepth;
    fz_end_mask(ctx, filter(device)->target);
}

void passBeginGroup(fz_context* ctx, fz_device* device, fz_rect area, fz_colorspace* colorspace,
                    int isolated, int knockout, int blendmode, float alpha)
{
    fz_begin_group(ctx, filter(device)->target, area, colorspace, isolated, knockout, blendmode,
                   alpha);
}

void passEndGroup(fz_context* ctx, fz_device* device)
{
    fz_end_group(ctx, filter(device)->target);
}

int passBeginTile(fz_context* ctx, fz_device* device, fz_rect area, fz_rect view, float xstep,
                  float ystep, fz_matrix ctm, int id)
{
    return fz_begin_tile_id(ctx, filter(device)->target, area, view, xstep, ystep, ctm, id);
}

void passEndTile(fz_context* ctx, fz_device* device)
{
    fz_end_tile(ctx, filter(device)->target);
}

std::vector<Found> findPictures(fz_context* ctx, fz_display_list* list, fz_cookie* cookie)
{
    auto* self = fz_new_derived_device(ctx, Finder);
    // The device's own memory is MuPDF's; the vectors in it are constructed here and destroyed
    // before MuPDF frees it.
    new (&self->clips) std::vector<fz_rect>();
    new (&self->found) std::vector<Found>();
    fz_device* device = &self->super;
    device->fill_image = findImage;
    device->fill_image_mask = findImageMask;
    device->clip_path = findClipPath;
    device->clip_stroke_path = findClipStroke;
    device->clip_text = findClipText;
    device->clip_stroke_text = findClipStrokeText;
    device->clip_image_mask = findClipMask;
    device->begin_mask = findBeginMask;
    device->end_mask = findEndMask;
    device->pop_clip = findPopClip;
    std::vector<Found> found;
    fz_try(ctx)
    {
        fz_run_display_list(ctx, list, device, fz_identity, fz_infinite_rect, cookie);
        fz_close_device(ctx, device);
        // Swapped rather than moved: the device's vector is still destroyed by hand below.
        found.swap(self->found);
    }
    fz_always(ctx)
    {
        self->clips.~vector();
        self->found.~vector();
        fz_drop_device(ctx, device);
    }
    fz_catch(ctx)
    {
        fz_rethrow(ctx);
    }
    return found;
}

// The picture drawn alone into a transparent pixmap of the region it shows in.
fz_pixmap* drawPicture(fz_context* ctx, fz_display_list* list, const Found& wanted, fz_rect region,
                       float zoom, fz_cookie* cookie)
{
    const fz_matrix ctm = fz_scale(zoom, zoom);
    const fz_irect pixels = fz_round_rect(fz_transform_rect(region, ctm));
    fz_pixmap* pixmap = nullptr;
    fz_device* draw = nullptr;
    fz_device* device = nullptr;
    fz_var(pixmap);
    fz_var(draw);
    fz_var(device);
    fz_try(ctx)
    {
        pixmap = fz_new_pixmap_with_bbox(ctx, fz_device_rgb(ctx), pixels, nullptr, 1);
        fz_clear_pixmap(ctx, pixmap);
        draw = fz_new_draw_device(ctx, fz_identity, pixmap);
        auto* pass = fz_new_derived_device(ctx, Filter);
        device = &pass->super;
        pass->target = draw;
        pass->image = wanted.image;
        pass->ctm = fz_concat(wanted.ctm, ctm);
        device->fill_image = passImage;
        device->fill_image_mask = passImageMask;
        device->fill_path = passFill;
        device->stroke_path = passStroke;
        device->fill_shade = passShade;
        device->clip_path = passClipPath;
        device->clip_stroke_path = passClipStroke;
        device->clip_text = passClipText;
        device->clip_stroke_text = passClipStrokeText;
        device->clip_image_mask = passClipMask;
        device->pop_clip = passPopClip;
        device->begin_mask = passBeginMask;
        device->end_mask = passEndMask;
        device->begin_group = passBeginGroup;
        device->end_group = passEndGroup;
        device->begin_tile = passBeginTile;
        device->end_tile = passEndTile;
        fz_run_display_list(ctx, list, device, ctm, fz_transform_rect(region, ctm), cookie);
        fz_close_device(ctx, device);
        fz_close_device(ctx, draw);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, device);
        fz_drop_device(ctx, draw);
    }
    fz_catch(ctx)
    {
        fz_drop_pixmap(ctx, pixmap);
        fz_rethrow(ctx);
    }
    return pixmap;
}

// An opaque picture as the document's format asks; one that lets the page show through as
// PNG with its transparency.
bool encode(fz_context* ctx, fz_pixmap* pixmap, const PictureOptions& options, Picture& out)
{
    const int width = pixmap->w;
    const int height = pixmap->h;
    bool opaque = true;
    bool empty = true;
    for (int y = 0; y < height; ++y) {
        const unsigned char* row =
            pixmap->samples + static_cast<std::ptrdiff_t>(y) * pixmap->stride;
        for (int x = 0; x < width; ++x) {
            opaque = opaque && row[4 * x + 3] == 255;
            empty = empty && row[4 * x + 3] == 0;
        }
    }
    if (empty)
        return false;
    out.pixelWidth = width;
    out.pixelHeight = height;
    if (!opaque) {
        fz_buffer* png = fz_new_buffer_from_pixmap_as_png(ctx, pixmap, fz_default_color_params);
        unsigned char* data = nullptr;
        const std::size_t size = fz_buffer_storage(ctx, png, &data);
        out.kind = PictureKind::Png;
        out.data.assign(data, data + size);
        fz_drop_buffer(ctx, png);
        return true;
    }
    std::vector<uint8_t> rgb(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                             3);
    for (int y = 0; y < height; ++y) {
        const unsigned char* row =
            pixmap->samples + static_cast<std::ptrdiff_t>(y) * pixmap->stride;
        uint8_t* target =
            rgb.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 3;
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
            target[3 * x] = row[4 * x];
            target[3 * x + 1] = row[4 * x + 1];
            target[3 * x + 2] = row[4 * x + 2];
        }
    }
    if (!options.jpeg) {
        out.kind = PictureKind::Dib;
        out.data = EncodeDib(rgb.data(), width, height, width * 3);
        return true;
    }
    auto jpeg = EncodeJpeg(rgb.data(), width, height, width * 3, options.jpegQuality);
    if (!jpeg)
        return false;
    out.kind = PictureKind::Jpeg;
    out.data = std::move(*jpeg);
    return true;
}

// MuPDF's failures as a reason; the ceiling on memory ends the run, anything else leaves the
// picture out.
struct Failure
{
    bool failed = false;
    bool memory = false;
    std::string message;
};

fz_pixmap* drawOrFail(fz_context* ctx, fz_display_list* list, const Found& wanted,
                      const fz_rect& region, float zoom, fz_cookie* cookie, Failure& failure)
{
    fz_pixmap* pixmap = nullptr;
    fz_var(pixmap);
    fz_try(ctx)
    {
        pixmap = drawPicture(ctx, list, wanted, region, zoom, cookie);
    }
    fz_catch(ctx)
    {
        failure = Failure{true, fz_caught(ctx) == FZ_ERROR_MEMORY, fz_caught_message(ctx)};
    }
    return pixmap;
}

bool encodeOrFail(fz_context* ctx, fz_pixmap* pixmap, const PictureOptions& options,
                  Picture& picture, Failure& failure)
{
    int kept = 0;
    fz_var(kept);
    fz_try(ctx)
    {
        kept = encode(ctx, pixmap, options, picture) ? 1 : 0;
    }
    fz_always(ctx)
    {
        fz_drop_pixmap(ctx, pixmap);
    }
    fz_catch(ctx)
    {
        failure = Failure{true, fz_caught(ctx) == FZ_ERROR_MEMORY, fz_caught_message(ctx)};
    }
    return kept != 0;
}

}  // namespace

void CollectPictures(fz_context* ctx, fz_display_list* list, const fz_rect& bounds, float dx,
                     float dy, const PictureOptions& options, PageContent& page, fz_cookie* cookie)
{
    const std::vector<Found> found = findPictures(ctx, list, cookie);
    const std::size_t count = std::min(found.size(), static_cast<std::size_t>(MaxPictures));
    if (options.placesOnly) {
        const std::size_t before = page.pictures.size();
        for (std::size_t i = 0; i < count; ++i) {
            const fz_rect region = fz_intersect_rect(found[i].box, bounds);
            if (fz_is_empty_rect(region))
                continue;
            Picture picture;
            picture.box = Rect{region.x0 + dx, region.y0 + dy, region.x1 + dx, region.y1 + dy};
            page.pictures.push_back(std::move(picture));
        }
        if (options.placesOnly(page)) {
            page.picturePlacesOnly = true;
            return;
        }
        page.pictures.resize(before);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const fz_rect region = fz_intersect_rect(found[i].box, bounds);
        const float width = region.x1 - region.x0;
        const float height = region.y1 - region.y0;
        if (fz_is_empty_rect(region) || !(width > 0.5f) || !(height > 0.5f))
            continue;
        // No finer than the picture itself nor than the document needs, and within bounds.
        float zoom =
            std::min(static_cast<float>(options.maxDpi) / 72.0f, std::max(found[i].zoom, 1.0f));
        zoom = std::min(zoom, std::sqrt(MaxDrawnPixels / (width * height)));
        Failure failure;
        fz_pixmap* pixmap = drawOrFail(ctx, list, found[i], region, zoom, cookie, failure);
        Picture picture;
        const bool kept = pixmap && encodeOrFail(ctx, pixmap, options, picture, failure);
        if (failure.memory)
            throw PdfError("picture too large: " + failure.message);
        if (!kept)
            continue;
        picture.box = Rect{region.x0 + dx, region.y0 + dy, region.x1 + dx, region.y1 + dy};
        page.pictures.push_back(std::move(picture));
    }
}

}  // namespace velmora
