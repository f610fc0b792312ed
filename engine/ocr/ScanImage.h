#pragma once

// A scanned page as recognition sees it: grey pixels, and its colours only when it has any,
// so a page of black print costs a third of the memory.

#include "pdf/PdfSession.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace velmora {

struct ScanImage final
{
    int width = 0;
    int height = 0;
    float zoom = 1;  // pixels per point
    std::vector<uint8_t> grey;
    std::vector<uint8_t> rgb;  // empty when the page is grey

    // Takes over a page drawn in colour, keeping the colour only where it shows.
    static ScanImage FromPixels(PagePixels&& pixels);

    // The grey pixels without specks of dust: dark spots on paper too small to be a dot of
    // print, which would be read as stray punctuation and spoil the words beside them. Gives up
    // part way, with specks left, once `stop` is set.
    std::vector<uint8_t> withoutSpecks(const std::atomic<bool>* stop = nullptr) const;

    // Turns the picture a quarter clockwise `turns` times.
    void turnClockwise(int turns);
};

}  // namespace velmora
