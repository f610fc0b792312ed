#pragma once

// The engine's one door to MuPDF: a context with a memory ceiling, one open PDF, and the
// operations the engine and the page-count library need. MuPDF errors come out as PdfError;
// nothing here ever runs a document's scripts or actions.

#include "model/PageModel.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmora {

class PdfError final : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

enum class OpenStatus { Opened, NeedsPassword, Failed };

struct PictureOptions final
{
    bool extract = true;
    bool jpeg = true;  // false: device-independent bitmaps
    int jpegQuality = 85;
    // Pictures are stored at no more than this resolution of their size on the page; larger
    // sources are decoded subsampled, so a huge image costs no more than a fitting one.
    int maxDpi = 300;
    // Also read the page's vector graphics (rules, boxes, fills, plots).
    bool drawings = true;
    // A page this holds for, given its text and where its pictures show, keeps the places
    // alone, without drawing or encoding a pixel: a scan on its way to recognition, which
    // draws the page itself.
    std::function<bool(const PageContent&)> placesOnly;
};

// The faces met so far in a document; pages refer to them by index.
class FontTable final
{
public:
    int indexOf(const FontFace& face);
    const std::vector<FontFace>& faces() const { return m_faces; }

private:
    std::vector<FontFace> m_faces;
};

// A page picture of an absurd page size still fits in memory: it is drawn smaller, with its
// aspect ratio kept, so that no side passes MaxPictureSide pixels and the whole stays within
// MaxPicturePixels (192 MB of 24-bit colour).
inline constexpr double MaxPictureSide = 32767;
inline constexpr double MaxPicturePixels = 64e6;

struct PictureSize final
{
    int width = 1;
    int height = 1;
    float zoom = 1;  // pixels per point
};

// The pixel size of a picture of a page of widthPt x heightPt points at `dpi`.
PictureSize PagePictureSize(float widthPt, float heightPt, int dpi);

// A page drawn as 8-bit RGB, top row first, rows packed, for text recognition.
struct PagePixels final
{
    int width = 0;
    int height = 0;
    float zoom = 1;  // pixels per point
    std::vector<uint8_t> rgb;
};

class PdfSession final
{
public:
    static constexpr std::size_t DefaultMemoryLimit = std::size_t{1} << 30;

    explicit PdfSession(std::size_t memoryLimit = DefaultMemoryLimit);
    ~PdfSession();
    PdfSession(const PdfSession&) = delete;
    PdfSession& operator=(const PdfSession&) = delete;

    // Opens the file and, when it is protected, tries each password in turn. On Failed,
    // lastError() says why.
    OpenStatus open(const std::string& path, const std::vector<std::string>& passwords);
    OpenStatus openMemory(const uint8_t* data, std::size_t size,
                          const std::vector<std::string>& passwords);

    int pageCount();
    PageContent readPage(int index, const PictureOptions& pictures, FontTable& fonts);
    // The page as a 24-bit Windows bitmap file at `dpi` dots per inch, or smaller as
    // PagePictureSize says.
    std::vector<uint8_t> renderBmp(int index, int dpi);
    PagePixels renderPixels(int index, int dpi);

    // Makes the page being read or drawn, and every later one, stop with a PdfError. Safe to
    // call from a signal handler.
    void abortWork() noexcept;
    // True when MuPDF had to rebuild a damaged file's structure to read it.
    bool wasRepaired() const;
    const std::string& lastError() const { return m_lastError; }
    std::size_t peakMemory() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
    std::string m_lastError;
};

}  // namespace velmora
