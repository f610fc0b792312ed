#pragma once

// The pictures of a page as the page shows them: each one drawn on its own through MuPDF,
// with its flips and turns, its clip, its soft mask and a stencil's colour, then encoded for
// the document.

#include "pdf/PdfSession.h"

extern "C" {
#include <mupdf/fitz.h>
}

namespace velmora {

// Reads the pictures of `list` (a page's display list) into `page`, with positions moved by
// (dx, dy) to the page's top-left origin. A picture that needs more memory than the ceiling
// allows throws PdfError; a damaged one is left out.
void CollectPictures(fz_context* ctx, fz_display_list* list, const fz_rect& bounds, float dx,
                     float dy, const PictureOptions& options, PageContent& page, fz_cookie* cookie);

}  // namespace velmora
