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

// A spot of connected dark pixels: its first and last column and row, and its size.
struct InkSpot final
{
    std::size_t left = 0;
    std::size_t top = 0;
    std::size_t right = 0;
    std::size_t bottom = 0;
    std::size_t pixels = 0;
};

// Walks spots of dark pixels (8-connected) in a grey picture. Each walk enters only pixels
// whose mark is 0 and marks them, so that a pass over the page walks every pixel once.
class InkWalker final
{
public:
    // Once `stop` is set, a walk ends part way: a page of ink is one spot as large as the page.
    InkWalker(const std::vector<uint8_t>& grey, std::size_t width, uint8_t dark,
              const std::atomic<bool>* stop);

    // Walks every spot not yet marked, row by row, its pixels marked `walked` in `marks`, and
    // hands it to `visit`. Ends early once `stop` is set or `visit` returns false; returns
    // whether every spot was visited.
    template <typename Visit>
    bool eachSpot(std::vector<uint8_t>& marks, uint8_t walked, Visit&& visit)
    {
        for (std::size_t row = 0; row < m_height; ++row) {
            // A page of ink takes long to walk; a run out of time doesn't wait for it.
            if (m_stop && m_stop->load(std::memory_order_relaxed))
                return false;
            for (std::size_t column = 0; column < m_width; ++column) {
                const std::size_t start = row * m_width + column;
                if (marks[start] != 0 || m_grey[start] >= m_dark)
                    continue;
                const InkSpot spot = walk(column, row, marks, walked);
                if (m_stopped || !visit(spot))
                    return false;
            }
        }
        return true;
    }

private:
    // The spot that holds (x, y); sets m_stopped when it ends part way.
    InkSpot walk(std::size_t x, std::size_t y, std::vector<uint8_t>& marks, uint8_t walked);

    // Points rather than indices: a page has hundreds of thousands of dark pixels, and
    // dividing each index back into its column and row costs more than the walk itself.
    struct Point
    {
        std::size_t x;
        std::size_t y;
    };

    const std::vector<uint8_t>& m_grey;
    std::size_t m_width;
    std::size_t m_height;
    uint8_t m_dark;
    const std::atomic<bool>* m_stop;
    bool m_stopped = false;
    std::vector<Point> m_stack;
};

}  // namespace velmora
