#include "pdf/PdfSession.h"

#include "pdf/ImageCodec.h"
#include "pdf/PageDrawings.h"
#include "pdf/PagePictures.h"

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace velmora {

namespace {

// Every MuPDF allocation carries its size in front, so the total can be held under a ceiling:
// a decompression bomb or an absurd image then fails as an ordinary MuPDF error.
struct MemoryBudget
{
    std::size_t limit = 0;
    std::size_t used = 0;
    std::size_t peak = 0;
};

constexpr std::size_t BlockHeader = 16;

void* budgetMalloc(void* opaque, std::size_t size)
{
    auto* budget = static_cast<MemoryBudget*>(opaque);
    if (size > budget->limit - budget->used)
        return nullptr;
    auto* block = static_cast<unsigned char*>(std::malloc(size + BlockHeader));
    if (!block)
        return nullptr;
    std::memcpy(block, &size, sizeof size);
    budget->used += size;
    budget->peak = std::max(budget->peak, budget->used);
    return block + BlockHeader;
}

void budgetFree(void* opaque, void* pointer)
{
    if (!pointer)
        return;
    auto* budget = static_cast<MemoryBudget*>(opaque);
    auto* block = static_cast<unsigned char*>(pointer) - BlockHeader;
    std::size_t size = 0;
    std::memcpy(&size, block, sizeof size);
    budget->used -= size;
    std::free(block);
}

void* budgetRealloc(void* opaque, void* pointer, std::size_t size)
{
    if (!pointer)
        return budgetMalloc(opaque, size);
    if (size == 0) {
        budgetFree(opaque, pointer);
        return nullptr;
    }
    auto* budget = static_cast<MemoryBudget*>(opaque);
    auto* block = static_cast<unsigned char*>(pointer) - BlockHeader;
    std::size_t oldSize = 0;
    std::memcpy(&oldSize, block, sizeof oldSize);
    if (size > oldSize && size - oldSize > budget->limit - budget->used)
        return nullptr;
    auto* grown = static_cast<unsigned char*>(std::realloc(block, size + BlockHeader));
    if (!grown)
        return nullptr;
    std::memcpy(grown, &size, sizeof size);
    budget->used = budget->used - oldSize + size;
    budget->peak = std::max(budget->peak, budget->used);
    return grown + BlockHeader;
}

// MuPDF prints warnings and errors to stderr by default; the engine reports one line itself.
void quietCallback(void*, const char*)
{
}

Rect toRect(const fz_rect& r)
{
    return Rect{r.x0, r.y0, r.x1, r.y1};
}

bool isWebLink(const char* uri)
{
    if (!uri)
        return false;
    static constexpr std::array<const char*, 4> Schemes{"http://", "https://", "mailto:", "ftp://"};
    return std::ranges::any_of(Schemes, [uri](const char* scheme) {
        return strncasecmp(uri, scheme, std::strlen(scheme)) == 0;
    });
}

}  // namespace

int FontTable::indexOf(const FontFace& face)
{
    for (std::size_t i = 0; i < m_faces.size(); ++i) {
        if (m_faces[i] == face)
            return static_cast<int>(i);
    }
    m_faces.push_back(face);
    return static_cast<int>(m_faces.size() - 1);
}

struct PdfSession::Impl
{
    MemoryBudget budget;
    fz_alloc_context alloc{};
    fz_context* ctx = nullptr;
    pdf_document* doc = nullptr;
    fz_cookie cookie{};

    // Takes over an opened document: passwords, then a repair when it shows no pages.
    OpenStatus adopt(pdf_document* opened, const std::vector<std::string>& passwords,
                     std::string& error)
    {
        pdf_drop_document(ctx, doc);
        doc = opened;
        bool unlocked = !pdf_needs_password(ctx, doc);
        for (std::size_t i = 0; !unlocked && i < passwords.size(); ++i)
            unlocked = pdf_authenticate_password(ctx, doc, passwords[i].c_str()) != 0;
        if (!unlocked) {
            error = "the PDF needs a password";
            return OpenStatus::NeedsPassword;
        }
        // A broken cross-reference chain (a /Prev that points back at itself, say) can hide every
        // object without failing the load; MuPDF's repair rebuilds the table from the objects.
        int count = 0;
        fz_try(ctx)
        {
            count = pdf_count_pages(ctx, doc);
        }
        fz_catch(ctx)
        {
            count = 0;
        }
        if (count <= 0 && !doc->repair_attempted) {
            fz_try(ctx)
            {
                pdf_repair_xref(ctx, doc);
                pdf_repair_obj_stms(ctx, doc);
            }
            fz_catch(ctx)
            {
                // Nothing more to try; counting the pages tells the caller.
            }
        }
        return OpenStatus::Opened;
    }

    ~Impl()
    {
        if (ctx) {
            pdf_drop_document(ctx, doc);
            fz_drop_context(ctx);
        }
    }
};

PdfSession::PdfSession(std::size_t memoryLimit) : m_impl(std::make_unique<Impl>())
{
    m_impl->budget.limit = memoryLimit;
    m_impl->alloc = fz_alloc_context{&m_impl->budget, budgetMalloc, budgetRealloc, budgetFree};
    // A small store keeps resident memory low on long documents; pages are read one at a time.
    m_impl->ctx = fz_new_context(&m_impl->alloc, nullptr, std::size_t{64} << 20);
    if (!m_impl->ctx)
        throw PdfError("cannot start the PDF reader");
    fz_set_warning_callback(m_impl->ctx, quietCallback, nullptr);
    fz_set_error_callback(m_impl->ctx, quietCallback, nullptr);
}

PdfSession::~PdfSession() = default;

std::size_t PdfSession::peakMemory() const
{
    return m_impl->budget.peak;
}

OpenStatus PdfSession::open(const std::string& path, const std::vector<std::string>& passwords)
{
    fz_context* ctx = m_impl->ctx;
    pdf_document* doc = nullptr;
    fz_var(doc);
    fz_try(ctx)
    {
        doc = pdf_open_document(ctx, path.c_str());
    }
    fz_catch(ctx)
    {
        m_lastError = fz_caught_message(ctx);
        return OpenStatus::Failed;
    }
    return m_impl->adopt(doc, passwords, m_lastError);
}

OpenStatus PdfSession::openMemory(const uint8_t* data, std::size_t size,
                                  const std::vector<std::string>& passwords)
{
    fz_context* ctx = m_impl->ctx;
    pdf_document* doc = nullptr;
    fz_stream* stream = nullptr;
    fz_var(doc);
    fz_var(stream);
    fz_try(ctx)
    {
        stream = fz_open_memory(ctx, data, size);
        doc = pdf_open_document_with_stream(ctx, stream);
    }
    fz_always(ctx)
    {
        fz_drop_stream(ctx, stream);
    }
    fz_catch(ctx)
    {
        m_lastError = fz_caught_message(ctx);
        return OpenStatus::Failed;
    }
    return m_impl->adopt(doc, passwords, m_lastError);
}

int PdfSession::pageCount()
{
    fz_context* ctx = m_impl->ctx;
    if (!m_impl->doc)
        throw PdfError("no document is open");
    int count = 0;
    bool failed = false;
    fz_try(ctx)
    {
        count = pdf_count_pages(ctx, m_impl->doc);
    }
    fz_catch(ctx)
    {
        failed = true;
    }
    if (failed)
        throw PdfError(fz_caught_message(ctx));
    return count;
}

namespace {

// Dropped on every way out, also when a picture throws halfway through the page.
struct PageResources
{
    fz_context* ctx = nullptr;
    fz_page* page = nullptr;
    fz_display_list* list = nullptr;
    fz_stext_page* text = nullptr;
    fz_link* links = nullptr;
    ~PageResources()
    {
        fz_drop_link(ctx, links);
        fz_drop_stext_page(ctx, text);
        fz_drop_display_list(ctx, list);
        fz_drop_page(ctx, page);
    }
};

void loadPage(fz_context* ctx, fz_document* doc, int index, PageResources& held, fz_rect& bounds,
              fz_cookie* cookie)
{
    fz_device* device = nullptr;
    fz_device* recorder = nullptr;
    fz_var(device);
    fz_var(recorder);
    fz_try(ctx)
    {
        held.page = fz_load_page(ctx, doc, index);
        bounds = fz_bound_page(ctx, held.page);
        // The page is interpreted once; its text and its drawings are read from the record.
        held.list = fz_new_display_list(ctx, bounds);
        recorder = fz_new_list_device(ctx, held.list);
        fz_run_page(ctx, held.page, recorder, fz_identity, cookie);
        fz_close_device(ctx, recorder);
        fz_stext_options options{};
        options.flags = FZ_STEXT_MEDIABOX_CLIP;
        held.text = fz_new_stext_page(ctx, bounds);
        device = fz_new_stext_device(ctx, held.text, &options);
        fz_run_display_list(ctx, held.list, device, fz_identity, fz_infinite_rect, cookie);
        fz_close_device(ctx, device);
        held.links = fz_load_links(ctx, held.page);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, device);
        fz_drop_device(ctx, recorder);
    }
    fz_catch(ctx)
    {
        throw PdfError(fz_caught_message(ctx));
    }
    if (cookie->abort)
        throw PdfError("stopped: the document takes too long to read");
}

}  // namespace

PageContent PdfSession::readPage(int index, const PictureOptions& pictures, FontTable& fonts)
{
    fz_context* ctx = m_impl->ctx;
    if (!m_impl->doc)
        throw PdfError("no document is open");
    PageResources held{ctx};
    fz_rect bounds = fz_empty_rect;
    loadPage(ctx, &m_impl->doc->super, index, held, bounds, &m_impl->cookie);
    fz_stext_page* text = held.text;
    fz_link* links = held.links;
    if (!text)
        throw PdfError("the page's text could not be read");

    PageContent content;
    content.width = bounds.x1 - bounds.x0;
    content.height = bounds.y1 - bounds.y0;
    // Positions are kept relative to the page's top-left corner.
    const float dx = -bounds.x0;
    const float dy = -bounds.y0;
    const auto shift = [dx, dy](Rect r) {
        return Rect{r.x0 + dx, r.y0 + dy, r.x1 + dx, r.y1 + dy};
    };

    if (pictures.drawings) {
        bool failed = false;
        fz_try(ctx)
        {
            CollectDrawings(ctx, held.list, bounds, dx, dy, content, &m_impl->cookie);
        }
        fz_catch(ctx)
        {
            failed = true;
        }
        if (failed && fz_caught(ctx) == FZ_ERROR_MEMORY)
            throw PdfError(std::string("drawing too large: ") + fz_caught_message(ctx));
        if (m_impl->cookie.abort)
            throw PdfError("stopped: the document takes too long to read");
    }

    for (fz_link* link = links; link; link = link->next) {
        if (isWebLink(link->uri))
            content.links.push_back(Link{shift(toRect(link->rect)), link->uri});
    }

    fz_font* lastFont = nullptr;
    int lastFontIndex = 0;
    bool lastMonospaced = false;
    for (fz_stext_block* block = text->first_block; block; block = block->next) {
        if (block->type != FZ_STEXT_BLOCK_TEXT)
            continue;
        for (fz_stext_line* line = block->u.t.first_line; line; line = line->next) {
            TextLine out;
            out.dirX = line->dir.x;
            out.dirY = line->dir.y;
            out.vertical = line->wmode != 0;
            out.box = shift(toRect(line->bbox));
            for (fz_stext_char* ch = line->first_char; ch; ch = ch->next) {
                Glyph glyph;
                glyph.c = static_cast<char32_t>(ch->c);
                glyph.box = shift(toRect(fz_rect_from_quad(ch->quad)));
                glyph.baseline = ch->origin.y + dy;
                glyph.size = ch->size;
                glyph.colour = static_cast<uint32_t>(ch->color) & 0xffffff;
                if (ch->font != lastFont) {
                    FontFace face;
                    face.name = fz_font_name(ctx, ch->font);
                    face.bold = fz_font_is_bold(ctx, ch->font) != 0;
                    face.italic = fz_font_is_italic(ctx, ch->font) != 0;
                    face.monospaced = fz_font_is_monospaced(ctx, ch->font) != 0;
                    face.serif = fz_font_is_serif(ctx, ch->font) != 0;
                    lastFont = ch->font;
                    lastFontIndex = fonts.indexOf(face);
                    lastMonospaced = face.monospaced;
                }
                glyph.font = lastFontIndex;
                glyph.monospaced = lastMonospaced;
                out.glyphs.push_back(glyph);
            }
            if (!out.glyphs.empty())
                content.lines.push_back(std::move(out));
        }
    }
    // Pictures after the text, which tells whether the page is a scan.
    if (pictures.extract)
        CollectPictures(ctx, held.list, bounds, dx, dy, pictures, content, &m_impl->cookie);
    if (m_impl->cookie.abort)
        throw PdfError("stopped: the document takes too long to read");
    for (TextLine& line : content.lines) {
        for (Glyph& glyph : line.glyphs) {
            glyph.hidden = std::any_of(
                content.hiddenText.begin(), content.hiddenText.end(), [&glyph](const Rect& box) {
                    return box.contains(glyph.box.centreX(), glyph.box.centreY());
                });
        }
    }
    // Each glyph learns the web link it lies in, so the writer can wrap it in a field.
    if (!content.links.empty()) {
        for (TextLine& line : content.lines) {
            for (Glyph& glyph : line.glyphs) {
                for (std::size_t i = 0; i < content.links.size(); ++i) {
                    if (content.links[i].box.contains(glyph.box.centreX(), glyph.box.centreY())) {
                        glyph.link = static_cast<int>(i);
                        break;
                    }
                }
            }
        }
    }
    return content;
}

bool PdfSession::wasRepaired() const
{
    return m_impl->doc && pdf_was_repaired(m_impl->ctx, m_impl->doc);
}

PictureSize PagePictureSize(float widthPt, float heightPt, int dpi)
{
    const double width = std::isfinite(widthPt) && widthPt > 0 ? widthPt : 1;
    const double height = std::isfinite(heightPt) && heightPt > 0 ? heightPt : 1;
    double zoom = std::max(dpi, 1) / 72.0;
    zoom = std::min(zoom, MaxPictureSide / std::max(width, height));
    zoom = std::min(zoom, std::sqrt(MaxPicturePixels / (width * height)));
    const auto pixels = [zoom](double points) {
        return static_cast<int>(std::clamp(std::floor(points * zoom + 0.5), 1.0, MaxPictureSide));
    };
    return {pixels(width), pixels(height), static_cast<float>(zoom)};
}

std::vector<uint8_t> PdfSession::renderBmp(int index, int dpi)
{
    fz_context* ctx = m_impl->ctx;
    if (!m_impl->doc)
        throw PdfError("no document is open");
    PageResources held{ctx};
    fz_pixmap* pixmap = nullptr;
    fz_device* device = nullptr;
    fz_var(pixmap);
    fz_var(device);
    fz_try(ctx)
    {
        held.page = fz_load_page(ctx, &m_impl->doc->super, index);
        const fz_rect bounds = fz_bound_page(ctx, held.page);
        const PictureSize size = PagePictureSize(bounds.x1 - bounds.x0, bounds.y1 - bounds.y0, dpi);
        const fz_matrix ctm =
            fz_concat(fz_translate(-bounds.x0, -bounds.y0), fz_scale(size.zoom, size.zoom));
        pixmap = fz_new_pixmap(ctx, fz_device_rgb(ctx), size.width, size.height, nullptr, 0);
        fz_clear_pixmap_with_value(ctx, pixmap, 255);
        device = fz_new_draw_device(ctx, fz_identity, pixmap);
        fz_run_page(ctx, held.page, device, ctm, &m_impl->cookie);
        fz_close_device(ctx, device);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, device);
    }
    fz_catch(ctx)
    {
        fz_drop_pixmap(ctx, pixmap);
        throw PdfError(fz_caught_message(ctx));
    }
    if (m_impl->cookie.abort) {
        fz_drop_pixmap(ctx, pixmap);
        throw PdfError("stopped: the document takes too long to read");
    }
    std::vector<uint8_t> bmp =
        EncodeBmpFile(pixmap->samples, pixmap->w, pixmap->h, static_cast<int>(pixmap->stride));
    fz_drop_pixmap(ctx, pixmap);
    return bmp;
}

PagePixels PdfSession::renderPixels(int index, int dpi)
{
    fz_context* ctx = m_impl->ctx;
    if (!m_impl->doc)
        throw PdfError("no document is open");
    PageResources held{ctx};
    PagePixels out;
    fz_pixmap* pixmap = nullptr;
    fz_device* device = nullptr;
    fz_var(pixmap);
    fz_var(device);
    fz_try(ctx)
    {
        held.page = fz_load_page(ctx, &m_impl->doc->super, index);
        const fz_rect bounds = fz_bound_page(ctx, held.page);
        const PictureSize size = PagePictureSize(bounds.x1 - bounds.x0, bounds.y1 - bounds.y0, dpi);
        out.width = size.width;
        out.height = size.height;
        out.zoom = size.zoom;
        // MuPDF draws straight into the caller's buffer.
        out.rgb.assign(static_cast<std::size_t>(size.width) * 3 * size.height, 255);
        pixmap = fz_new_pixmap_with_data(ctx, fz_device_rgb(ctx), size.width, size.height, nullptr,
                                         0, size.width * 3, out.rgb.data());
        const fz_matrix ctm =
            fz_concat(fz_translate(-bounds.x0, -bounds.y0), fz_scale(size.zoom, size.zoom));
        device = fz_new_draw_device(ctx, fz_identity, pixmap);
        fz_run_page(ctx, held.page, device, ctm, &m_impl->cookie);
        fz_close_device(ctx, device);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, device);
        fz_drop_pixmap(ctx, pixmap);
    }
    fz_catch(ctx)
    {
        throw PdfError(fz_caught_message(ctx));
    }
    if (m_impl->cookie.abort)
        throw PdfError("stopped: the document takes too long to read");
    return out;
}

void PdfSession::abortWork() noexcept
{
    m_impl->cookie.abort = 1;
}

}  // namespace velmora
