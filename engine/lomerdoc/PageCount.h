#pragma once

// The one call of the PDF access library.

#include <cstdint>

extern "C" {

// The number of pages of the PDF at `pdfPath` (a path in the locale's encoding), opened with
// `password` when it is protected: -3 when a password is needed or the one given is wrong,
// -1 when the file can't be opened as a PDF, 0 for a PDF without pages.
__attribute__((visibility("default"))) int32_t GetPageCount(char* pdfPath, char* password);
}
