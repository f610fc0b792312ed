#pragma once

// The PDF access library: how many pages a PDF has, and whether it needs a password. The real
// one is our shared library liblomerdoc.so, bound by its relative name "./liblomerdoc.so", so
// the working directory must be the application directory at each call.

#include <QString>
#include <QtGlobal>

#include <memory>
#include <optional>

namespace PageCountResults {
inline constexpr qint32 PasswordNeeded = -3;
inline constexpr qint32 PasswordRefused = -9;
inline constexpr qint32 NoPage = 0;
}  // namespace PageCountResults

class PdfAccessLibrary
{
public:
    virtual ~PdfAccessLibrary() = default;
    // The page count, or the library's negative status. Both texts are handed over as writable
    // buffers, and what they hold afterwards replaces them. Empty when the library itself
    // can't be loaded from the working directory.
    virtual std::optional<qint32> GetPageCount(QString& pdfPath, QString& password) = 0;
};

std::unique_ptr<PdfAccessLibrary> CreatePdfAccessLibrary();
