#pragma once

// One engine run over an open PDF: the RTF document of the page range, and the page
// pictures of a preview. Failures come out as ConversionError with a one-line reason.

#include "convert/EngineOptions.h"
#include "ocr/PageRecognition.h"
#include "pdf/PdfSession.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

namespace velmora {

class ConversionError final : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The zero-based, inclusive pages the options ask for in a document of `pageCount` pages.
std::pair<int, int> PageSpan(const EngineOptions& options, int pageCount);

// Called after each page with the number done and the number to do.
using Progress = std::function<void(int, int)>;

// The whole RTF document, written through `sink` in pieces, in order. Scanned pages are
// recognised as text on the way.
void WriteRtf(PdfSession& pdf, const EngineOptions& options,
              const std::function<void(const std::string&)>& sink, const Progress& progress = {},
              const RecognitionHooks& hooks = {});

// The RTF document into `target`, whole or not at all.
void ConvertToFile(PdfSession& pdf, const EngineOptions& options, const std::string& target,
                   const Progress& progress = {}, const RecognitionHooks& hooks = {});

// Pictures of the pages in the span as <stem>_<n>.bmp, n counted from 1.
void WritePagePictures(PdfSession& pdf, const EngineOptions& options, const std::string& stem);

// The target's path without its last extension (from the last '.' of its file name on, also
// when that '.' begins the name): "dir/a.b.rtf" -> "dir/a.b", "dir/.rtf" -> "dir/".
std::string PictureStem(const std::string& target);

}  // namespace velmora
