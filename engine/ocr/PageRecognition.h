#pragma once

// Recognition of a document's scanned pages on the cores the process may use. Pages are read
// a few ahead of the one being written; the scans among them are drawn and handed to a
// bounded pool of workers, each with a Tesseract of its own kept from page to page, and come
// back in page order. Only a few pages are held at a time, whatever the document's length.

#include "pdf/PdfSession.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace velmora {

// How the program around the engine takes part; every member may stay empty.
struct RecognitionHooks final
{
    // Called on the converting thread each time a page is sent to be recognised.
    std::function<void()> pageQueued;
    // A line for the user, such as a language pack that is missing; said once per run.
    std::function<void(const std::string&)> notice;
    // Set from outside, a signal handler say, to stop: the page waited for then fails.
    const std::atomic<bool>* stop = nullptr;
};

class PageRecognition final
{
public:
    using Reader = std::function<PageContent(int index, bool pixels)>;

    // `read` gives a page as the converter reads it; pictures must be extracted for scans
    // to be found. A scan may come with its pictures' places alone; one that is not
    // recognised after all is read again with `pixels`.
    PageRecognition(PdfSession& pdf, FontTable& fonts, int conversionMethod,
                    const PictureOptions& pictures, RecognitionHooks hooks, Reader read);
    ~PageRecognition();
    PageRecognition(const PageRecognition&) = delete;
    PageRecognition& operator=(const PageRecognition&) = delete;

    // Page `index` with its text recognised when it is a scan. Pages are asked for in
    // increasing order, none after `last`.
    PageContent take(int index, int last);

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

// The cores this process may run on.
int AvailableCores();

}  // namespace velmora
