#pragma once

// The vector graphics of a page, read through a MuPDF device: rectangles and straight lines
// become drawings the document can show as shapes; everything else is painted into one
// transparent picture of the region it covers.

#include "model/PageModel.h"

extern "C" {
#include <mupdf/fitz.h>
}

namespace velmora {

// Reads the drawings of `list` (a page's display list) into `page`, with positions moved by
// (dx, dy) to the page's top-left origin. MuPDF errors propagate as fz_throw.
void CollectDrawings(fz_context* ctx, fz_display_list* list, const fz_rect& bounds, float dx,
                     float dy, PageContent& page, fz_cookie* cookie);

}  // namespace velmora
