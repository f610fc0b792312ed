#include "ocr/ScanAssembly.h"

#include "pdf/ImageCodec.h"
#include "rtf/RtfWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace velmora {

namespace {

// Where a line's glyphs reach above and below its baseline, in ems, as a PDF's fonts say:
// Latin print, and the square body of Japanese and Chinese characters.
constexpr float LatinAscent = 0.92f;
constexpr float LatinDescent = 0.23f;
constexpr float CjkAscent = 0.88f;
constexpr float CjkDescent = 0.12f;

struct Point
{
    float x = 0;
    float y = 0;
};

// A word or line being settled, in pixels of the picture.
struct Word
{
    std::string text;
    float confidence = 0;
    Rect box;
    int line = 0;
};

struct Line
{
    Point base1;
    Point base2;
    Rect box;
    float height = 0;
};

bool isCjk(char32_t c)
{
    return CharsetFor(c) == 128;
}

std::u32string decodeUtf8(const std::string& text)
{
    std::u32string out;
    std::size_t i = 0;
    while (i < text.size()) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const int extra = byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : byte >= 0xc0 ? 1 : 0;
        char32_t c = extra == 3   ? byte & 0x07u
                     : extra == 2 ? byte & 0x0fu
                     : extra == 1 ? byte & 0x1fu
                                  : byte;
        ++i;
        for (int k = 0; k < extra && i < text.size(); ++k, ++i)
            c = (c << 6) | (static_cast<unsigned char>(text[i]) & 0x3fu);
        out.push_back(c);
    }
    return out;
}

// Letters, digits and ideographs: what makes a word worth keeping in some form.
bool meaningful(const std::u32string& text)
{
    return std::any_of(text.begin(), text.end(), [](char32_t c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               (c >= 0xc0 && c != 0xd7 && c != 0xf7 && !(c >= 0x2000 && c <= 0x2bff) &&
                !(c >= 0x3000 && c <= 0x303f) && !(c >= 0xff00 && c <= 0xff0f));
    });
}

Rect toRect(const PixelBox& box)
{
    return Rect{static_cast<float>(box.left), static_cast<float>(box.top),
                static_cast<float>(box.right), static_cast<float>(box.bottom)};
}

// One quarter turn clockwise, in a picture `height` pixels high.
Point turnPoint(Point p, float height)
{
    return {height - p.y, p.x};
}

Rect turnRect(const Rect& r, float height)
{
    return Rect{height - r.y1, r.x0, height - r.y0, r.x1};
}

// Quarter turns clockwise that bring the line's baseline to point rightwards; -1 when its
// baseline is unknown.
int turnsToUpright(const Line& line)
{
    const float dx = line.base2.x - line.base1.x;
    const float dy = line.base2.y - line.base1.y;
    if (std::fabs(dx) < 1 && std::fabs(dy) < 1)
        return -1;
    if (std::fabs(dx) >= std::fabs(dy))
        return dx > 0 ? 0 : 2;
    return dy > 0 ? 3 : 1;
}

float median(std::vector<float> values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The paper's tone: the middle of the page's light greys, so painted-out words vanish into it.
uint8_t paperTone(const std::vector<uint8_t>& grey)
{
    constexpr uint8_t Light = 160;
    std::array<std::size_t, 256> counts{};
    std::size_t samples = 0;
    for (std::size_t i = 0; i < grey.size(); i += 7) {
        if (grey[i] >= Light) {
            ++counts[grey[i]];
            ++samples;
        }
    }
    std::size_t seen = 0;
    for (int value = Light; value < 256; ++value) {
        seen += counts[static_cast<std::size_t>(value)];
        if (seen * 2 >= samples)
            return static_cast<uint8_t>(value);
    }
    return 255;
}

std::optional<Picture> encode(const std::vector<uint8_t>& rgb, int width, int height,
                              const Rect& box, const PictureOptions& options)
{
    Picture picture;
    picture.pixelWidth = width;
    picture.pixelHeight = height;
    picture.box = box;
    if (options.jpeg) {
        auto jpeg = EncodeJpeg(rgb.data(), width, height, width * 3, options.jpegQuality);
        if (!jpeg)
            return std::nullopt;
        picture.kind = PictureKind::Jpeg;
        picture.data = std::move(*jpeg);
    } else {
        picture.kind = PictureKind::Dib;
        picture.data = EncodeDib(rgb.data(), width, height, width * 3);
    }
    return picture;
}

// The region of the scan in RGB, every `step`-th pixel averaged over step x step.
std::vector<uint8_t> region(const ScanImage& image, int x0, int y0, int x1, int y1, int step,
                            int& width, int& height)
{
    width = std::max(1, (x1 - x0) / step);
    height = std::max(1, (y1 - y0) / step);
    std::vector<uint8_t> out(static_cast<std::size_t>(width) * height * 3);
    const bool colour = !image.rgb.empty();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::array<int, 3> sum{};
            for (int dy = 0; dy < step; ++dy) {
                for (int dx = 0; dx < step; ++dx) {
                    const int sx = std::min(x0 + x * step + dx, image.width - 1);
                    const int sy = std::min(y0 + y * step + dy, image.height - 1);
                    const std::size_t at = static_cast<std::size_t>(sy) * image.width + sx;
                    for (std::size_t c = 0; c < 3; ++c)
                        sum[c] += colour ? image.rgb[at * 3 + c] : image.grey[at];
                }
            }
            for (std::size_t c = 0; c < 3; ++c)
                out[(static_cast<std::size_t>(y) * width + x) * 3 + c] =
                    static_cast<uint8_t>(sum[c] / (step * step));
        }
    }
    return out;
}

void paint(ScanImage& image, const Rect& box, uint8_t tone)
{
    const int x0 = std::clamp(static_cast<int>(box.x0), 0, image.width);
    const int x1 = std::clamp(static_cast<int>(std::ceil(box.x1)), 0, image.width);
    const int y0 = std::clamp(static_cast<int>(box.y0), 0, image.height);
    const int y1 = std::clamp(static_cast<int>(std::ceil(box.y1)), 0, image.height);
    for (int y = y0; y < y1; ++y) {
        const std::size_t row = static_cast<std::size_t>(y) * image.width;
        std::fill(image.grey.begin() + static_cast<std::ptrdiff_t>(row + x0),
                  image.grey.begin() + static_cast<std::ptrdiff_t>(row + x1), tone);
        if (!image.rgb.empty())
            std::fill(image.rgb.begin() + static_cast<std::ptrdiff_t>((row + x0) * 3),
                      image.rgb.begin() + static_cast<std::ptrdiff_t>((row + x1) * 3), tone);
    }
}

}  // namespace

RecognisedPage AssemblePage(const OcrResult& result, ScanImage& image, int conversionMethod,
                            const PictureOptions& pictureOptions)
{
    RecognisedPage page;
    if (!result.read)
        return page;
    page.read = true;
    std::vector<Word> words;
    std::vector<Line> lines;
    for (const OcrWord& word : result.words)
        words.push_back(Word{word.text, word.confidence, toRect(word.box), word.line});
    for (const OcrLine& line : result.lines)
        lines.push_back(Line{
            {line.baseX1, line.baseY1}, {line.baseX2, line.baseY2}, toRect(line.box), line.height});
    std::vector<Rect> regions;
    for (const PixelBox& box : result.pictures)
        regions.push_back(toRect(box));

    // Tesseract reads a page lying on its side as it is; the way most of its lines run says
    // how to turn it upright.
    std::array<std::size_t, 4> votes{};
    std::vector<int> lineTurns;
    lineTurns.reserve(lines.size());
    for (const Line& line : lines)
        lineTurns.push_back(turnsToUpright(line));
    for (const Word& word : words) {
        const int turns = lineTurns[static_cast<std::size_t>(word.line)];
        if (turns >= 0)
            ++votes[static_cast<std::size_t>(turns)];
    }
    const int turns =
        static_cast<int>(std::max_element(votes.begin(), votes.end()) - votes.begin());
    for (int k = 0; k < turns; ++k) {
        const auto height = static_cast<float>(image.height);
        for (Word& word : words)
            word.box = turnRect(word.box, height);
        for (Line& line : lines) {
            line.base1 = turnPoint(line.base1, height);
            line.base2 = turnPoint(line.base2, height);
            line.box = turnRect(line.box, height);
        }
        for (Rect& box : regions)
            box = turnRect(box, height);
        image.turnClockwise(1);
    }

    // The page's skew, from its long lines, is taken out of the words' places.
    std::vector<float> slopes;
    for (const Line& line : lines) {
        const float dx = line.base2.x - line.base1.x;
        const float dy = line.base2.y - line.base1.y;
        if (dx > static_cast<float>(image.width) / 5 && std::fabs(dy) < dx / 5)
            slopes.push_back(std::atan2(dy, dx));
    }
    const float angle = median(slopes);
    const float cosine = std::cos(angle);
    const float sine = std::sin(angle);
    const Point centre{static_cast<float>(image.width) / 2, static_cast<float>(image.height) / 2};
    const auto straighten = [&](Point p) {
        const float dx = p.x - centre.x;
        const float dy = p.y - centre.y;
        return Point{centre.x + cosine * dx + sine * dy, centre.y - sine * dx + cosine * dy};
    };

    const float zoom = image.zoom;
    page.width = static_cast<float>(image.width) / zoom;
    page.height = static_cast<float>(image.height) / zoom;
    std::vector<std::vector<const Word*>> accepted(lines.size());
    std::vector<Rect> taken;
    bool doubtful = false;
    for (const Word& word : words) {
        const auto index = static_cast<std::size_t>(word.line);
        // Dust read as a word is far lower than the print around it.
        const Line& line = lines[index];
        const float lineHeight = line.height > 0 ? line.height : line.box.height();
        if (word.box.height() < lineHeight * 0.25f)
            continue;
        const bool upright = lineTurns[index] < 0 || lineTurns[index] == turns;
        // Words that run another way than the page, or that were read with little confidence,
        // stay in the picture rather than come out as garbled text.
        if (upright && word.confidence >= ConfidenceFloor) {
            accepted[index].push_back(&word);
            taken.push_back(word.box);
        } else if (meaningful(decodeUtf8(word.text))) {
            doubtful = true;
        }
    }

    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (accepted[i].empty())
            continue;
        const Line& line = lines[i];
        std::size_t cjk = 0;
        std::size_t characters = 0;
        std::vector<float> heights;
        for (const Word* word : accepted[i]) {
            for (char32_t c : decodeUtf8(word->text)) {
                cjk += isCjk(c);
                ++characters;
            }
            heights.push_back(word->box.height());
        }
        const bool ideographic = cjk * 2 > characters;
        // Latin print measures from ascender to descender, which Tesseract gives for the
        // line; Japanese characters fill most of their square.
        float sizePixels = ideographic || line.height <= 0 ? median(heights) / CjkAscent
                                                           : line.height / LatinAscent;
        if (!(sizePixels > 0))
            continue;
        const float size = sizePixels / zoom;
        const Point mid =
            straighten(Point{(line.base1.x + line.base2.x) / 2, (line.base1.y + line.base2.y) / 2});
        const bool hasBaseline = line.base1.x != line.base2.x || line.base1.y != line.base2.y;
        const float baselinePixels =
            hasBaseline ? mid.y : straighten(Point{line.box.centreX(), line.box.y1}).y;
        RecognisedLine out;
        out.size = size;
        out.baseline = baselinePixels / zoom;
        const float ascent = (ideographic ? CjkAscent : LatinAscent) * size;
        const float descent = (ideographic ? CjkDescent : LatinDescent) * size;
        for (const Word* word : accepted[i]) {
            const Point centre2 = straighten(Point{word->box.centreX(), word->box.centreY()});
            const float half = word->box.width() / 2;
            out.words.push_back(RecognisedWord{
                word->text, Rect{(centre2.x - half) / zoom, out.baseline - ascent,
                                 (centre2.x + half) / zoom, out.baseline + descent}});
        }
        std::sort(
            out.words.begin(), out.words.end(),
            [](const RecognisedWord& a, const RecognisedWord& b) { return a.box.x0 < b.box.x0; });
        page.lines.push_back(std::move(out));
    }

    // Sizes read from single lines wander a little; lines near the page's usual size take it,
    // so paragraphs are not broken by a tenth of a point.
    std::vector<float> sizes;
    for (const RecognisedLine& line : page.lines) {
        for (const RecognisedWord& word : line.words)
            sizes.insert(sizes.end(), decodeUtf8(word.text).size(), line.size);
    }
    const float usual = median(sizes);
    for (RecognisedLine& line : page.lines) {
        float size = std::fabs(line.size - usual) <= usual * 0.12f ? usual : line.size;
        size = std::max(1.0f, std::round(size * 2) / 2);
        const float scale = size / line.size;
        for (RecognisedWord& word : line.words) {
            word.box.y0 = line.baseline - (line.baseline - word.box.y0) * scale;
            word.box.y1 = line.baseline + (word.box.y1 - line.baseline) * scale;
        }
        line.size = size;
    }

    if (!pictureOptions.extract)
        return page;
    // Text boxes stand at their place, so the page's pictures and rules can stay behind them.
    const bool keepScan =
        doubtful || (conversionMethod == 2 && (!regions.empty() || !result.rules.empty()));
    if (keepScan) {
        // The scan stays behind the text with the words taken as text painted out, so they
        // don't show twice; half the resolution is plenty for what remains.
        const uint8_t tone = paperTone(image.grey);
        const float margin = 2 * zoom * 72 / 300;
        for (const Rect& box : taken)
            paint(image, Rect{box.x0 - margin, box.y0 - margin, box.x1 + margin, box.y1 + margin},
                  tone);
        int width = 0;
        int height = 0;
        const std::vector<uint8_t> rgb =
            region(image, 0, 0, image.width, image.height, 2, width, height);
        if (auto picture =
                encode(rgb, width, height, Rect{0, 0, page.width, page.height}, pictureOptions))
            page.pictures.push_back(std::move(*picture));
        return page;
    }
    for (const Rect& box : regions) {
        const int x0 = std::clamp(static_cast<int>(box.x0), 0, image.width - 1);
        const int y0 = std::clamp(static_cast<int>(box.y0), 0, image.height - 1);
        const int x1 = std::clamp(static_cast<int>(box.x1), x0 + 1, image.width);
        const int y1 = std::clamp(static_cast<int>(box.y1), y0 + 1, image.height);
        int width = 0;
        int height = 0;
        const std::vector<uint8_t> rgb = region(image, x0, y0, x1, y1, 1, width, height);
        const Rect shown{static_cast<float>(x0) / zoom, static_cast<float>(y0) / zoom,
                         static_cast<float>(x1) / zoom, static_cast<float>(y1) / zoom};
        if (auto picture = encode(rgb, width, height, shown, pictureOptions))
            page.pictures.push_back(std::move(*picture));
    }
    return page;
}

void PutRecognisedPage(PageContent& page, const RecognisedPage& recognised, FontTable& fonts)
{
    if (!recognised.read)
        return;
    if (std::fabs(page.width - recognised.width) > 1 ||
        std::fabs(page.height - recognised.height) > 1)
        page.links.clear();  // they were placed on the page as it lay
    page.width = recognised.width;
    page.height = recognised.height;
    page.pictures = recognised.pictures;
    page.artwork.clear();
    page.drawings.clear();
    page.lines.clear();
    // Print has no font to tell; a common serif face, and its Japanese counterpart.
    const int latin = fonts.indexOf(FontFace{"Times New Roman", false, false, false, true});
    int japanese = -1;
    for (const RecognisedLine& line : recognised.lines) {
        TextLine out;
        std::optional<Glyph> previous;
        for (const RecognisedWord& word : line.words) {
            const std::u32string text = decodeUtf8(word.text);
            if (text.empty())
                continue;
            Glyph style;
            style.baseline = line.baseline;
            style.size = line.size;
            style.font = latin;
            style.box = word.box;
            if (previous) {
                // Japanese runs on without blanks; Tesseract's word breaks inside it are not
                // spaces, unless there is a real gap.
                const bool joined = (isCjk(previous->c) || isCjk(text.front())) &&
                                    word.box.x0 - previous->box.x1 < line.size * 0.5f;
                if (!joined) {
                    Glyph space = style;
                    space.c = ' ';
                    space.box.x0 = previous->box.x1;
                    space.box.x1 = std::max(previous->box.x1, word.box.x0);
                    out.glyphs.push_back(space);
                }
            }
            // The word's width is shared out by how wide its characters usually are.
            float units = 0;
            for (char32_t c : text)
                units += isCjk(c) ? 1.0f : 0.55f;
            float x = word.box.x0;
            for (char32_t c : text) {
                Glyph glyph = style;
                glyph.c = c;
                if (isCjk(c)) {
                    if (japanese < 0)
                        japanese = fonts.indexOf(FontFace{"MS Mincho", false, false, false, true});
                    glyph.font = japanese;
                }
                const float advance = word.box.width() * (isCjk(c) ? 1.0f : 0.55f) / units;
                glyph.box.x0 = x;
                glyph.box.x1 = x + advance;
                x += advance;
                out.glyphs.push_back(glyph);
            }
            previous = out.glyphs.back();
            out.box.unite(word.box);
        }
        if (!out.glyphs.empty())
            page.lines.push_back(std::move(out));
    }
}

}  // namespace velmora
