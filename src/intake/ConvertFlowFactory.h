#pragma once

// Chooses the conversion side that the main dialog's convert face works with.

#include <memory>

struct AppContext;
class ConvertFlow;
class PdfAccessLibrary;

std::unique_ptr<ConvertFlow> CreateConvertFlow(AppContext& context, PdfAccessLibrary& pdfAccess);
