#pragma once

// Telling a scanned page from one with a text layer.

#include "model/PageModel.h"

namespace velmora {

// A page whose text layer is empty or only blanks while pictures cover most of it. A page
// with any text, also invisible text laid over a scan by earlier recognition, is no scan.
bool IsScannedPage(const PageContent& page);

}  // namespace velmora
