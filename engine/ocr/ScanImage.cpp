#include "ocr/ScanImage.h"

#include <algorithm>
#include <cstdlib>

namespace velmora {

namespace {

// `pixels` (width x height, `channels` bytes each) turned a quarter clockwise `turns` times.
std::vector<uint8_t> turned(const std::vector<uint8_t>& pixels, int width, int height, int channels,
                            int turns)
{
    std::vector<uint8_t> out(pixels.size());
    const bool sideways = turns % 2 != 0;
    const int outWidth = sideways ? height : width;
    const auto c = static_cast<std::size_t>(channels);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            int tx = x;
            int ty = y;
            if (turns == 1) {
                tx = height - 1 - y;
                ty = x;
            } else if (turns == 2) {
                tx = width - 1 - x;
                ty = height - 1 - y;
            } else if (turns == 3) {
                tx = y;
                ty = width - 1 - x;
            }
            const std::size_t from = (static_cast<std::size_t>(y) * width + x) * c;
            const std::size_t to = (static_cast<std::size_t>(ty) * outWidth + tx) * c;
            std::copy_n(pixels.begin() + static_cast<std::ptrdiff_t>(from), c,
                        out.begin() + static_cast<std::ptrdiff_t>(to));
        }
    }
    return out;
}

}  // namespace

ScanImage ScanImage::FromPixels(PagePixels&& pixels)
{
    ScanImage image;
    image.width = pixels.width;
    image.height = pixels.height;
    image.zoom = pixels.zoom;
    const std::size_t count = static_cast<std::size_t>(pixels.width) * pixels.height;
    image.grey.resize(count);
    // A page counts as coloured when a noticeable share of it is clearly not grey; scanner
    // noise and the colour fringes of JPEG don't make it so.
    std::size_t coloured = 0;
    const uint8_t* rgb = pixels.rgb.data();
    uint8_t* out = image.grey.data();
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned r = rgb[3 * i];
        const unsigned g = rgb[3 * i + 1];
        const unsigned b = rgb[3 * i + 2];
        out[i] = static_cast<uint8_t>((r * 77 + g * 150 + b * 29) >> 8);
        // The widest difference between two channels, without a branch a pixel.
        coloured += std::max({r, g, b}) - std::min({r, g, b}) > 40 ? 1 : 0;
    }
    if (coloured * 1000 > count)
        image.rgb = std::move(pixels.rgb);
    pixels.rgb = {};
    return image;
}

std::vector<uint8_t> ScanImage::withoutSpecks(const std::atomic<bool>* stop) const
{
    std::vector<uint8_t> clean = grey;
    constexpr uint8_t Dark = 150;
    constexpr uint8_t Paper = 180;
    // A full stop of 6 pt print covers about 12 pixels at 300 dpi; specks are smaller.
    const float scale = zoom * 72 / 300;
    const auto largest = static_cast<std::size_t>(std::max(1.0f, 6 * scale * scale));
    const auto w = static_cast<std::size_t>(width);
    const auto h = static_cast<std::size_t>(height);
    std::vector<uint8_t> seen(grey.size(), 0);
    InkWalker walker(clean, w, Dark, stop);
    walker.eachSpot(seen, 1, [&](const InkSpot& spot) {
        if (spot.pixels > largest)
            return true;
        // Painted with the paper around it, the soft edge included; a spot in a picture's
        // greys is left alone. The paint is the mean grey of the ring just around the spot, not
        // its brightest: a patch brighter than the paper's grain is one more thing Tesseract's
        // page layout looks into, and the page then takes it a tenth longer.
        const std::size_t x0 = spot.left > 0 ? spot.left - 1 : 0;
        const std::size_t y0 = spot.top > 0 ? spot.top - 1 : 0;
        const std::size_t x1 = std::min(spot.right + 1, w - 1);
        const std::size_t y1 = std::min(spot.bottom + 1, h - 1);
        uint8_t paper = 0;
        unsigned ringSum = 0;
        unsigned ringCount = 0;
        for (std::size_t y = y0; y <= y1; ++y) {
            for (std::size_t x = x0; x <= x1; ++x) {
                const uint8_t value = clean[y * w + x];
                paper = std::max(paper, value);
                if (y == y0 || y == y1 || x == x0 || x == x1) {
                    ringSum += value;
                    ++ringCount;
                }
            }
        }
        if (paper < Paper)
            return true;
        const auto ring = static_cast<uint8_t>(ringSum / ringCount);
        for (std::size_t y = y0; y <= y1; ++y) {
            for (std::size_t x = x0; x <= x1; ++x)
                clean[y * w + x] = ring;
        }
        return true;
    });
    return clean;
}

void ScanImage::turnClockwise(int turns)
{
    turns = ((turns % 4) + 4) % 4;
    if (turns == 0)
        return;
    grey = turned(grey, width, height, 1, turns);
    if (!rgb.empty())
        rgb = turned(rgb, width, height, 3, turns);
    if (turns % 2 != 0)
        std::swap(width, height);
}

InkWalker::InkWalker(const std::vector<uint8_t>& grey, std::size_t width, uint8_t dark,
                     const std::atomic<bool>* stop)
    : m_grey(grey), m_width(width), m_height(width ? grey.size() / width : 0), m_dark(dark),
      m_stop(stop)
{
}

InkSpot InkWalker::walk(std::size_t x, std::size_t y, std::vector<uint8_t>& marks, uint8_t walked)
{
    InkSpot spot{x, y, x, y, 0};
    m_stack.assign(1, Point{x, y});
    marks[y * m_width + x] = walked;
    while (!m_stack.empty()) {
        const Point at = m_stack.back();
        m_stack.pop_back();
        if (++spot.pixels % 65536 == 0 && m_stop && m_stop->load(std::memory_order_relaxed)) {
            m_stopped = true;
            break;
        }
        spot.left = std::min(spot.left, at.x);
        spot.right = std::max(spot.right, at.x);
        spot.top = std::min(spot.top, at.y);
        spot.bottom = std::max(spot.bottom, at.y);
        for (std::size_t ny = at.y > 0 ? at.y - 1 : 0; ny <= std::min(at.y + 1, m_height - 1);
             ++ny) {
            for (std::size_t nx = at.x > 0 ? at.x - 1 : 0; nx <= std::min(at.x + 1, m_width - 1);
                 ++nx) {
                const std::size_t next = ny * m_width + nx;
                if (marks[next] == 0 && m_grey[next] < m_dark) {
                    marks[next] = walked;
                    m_stack.push_back(Point{nx, ny});
                }
            }
        }
    }
    return spot;
}

}  // namespace velmora
