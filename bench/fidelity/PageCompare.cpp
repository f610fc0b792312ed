// Compares a converted document, printed to PDF, with its source PDF the way a reader would:
// both rendered at 30 dpi in grey, page by page, by the overlap of their inked areas and by
// their structural similarity (SSIM); and their words, by content F1 and by the F1 of word
// pairs, which falls when the reading order breaks. A page missing from the output scores 0.
//   velmora_page_compare [-v] <source.pdf> <output.pdf>
// prints one line: pagesIn pagesOut ink ssim f1 order picturesIn picturesOut
// (-v also one line per page and the words only one side has before it). Both documents'
// words are read from the text MuPDF extracts, normalised alike (see Words).

#include <mupdf/fitz.h>
#include <mupdf/pdf.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr float Dpi = 30;
constexpr int InkThreshold = 192;  // darker than three quarters white counts as ink
constexpr int InkWidening = 2;     // pixels each inked pixel grows by in every direction

struct Grey
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;
    unsigned char at(int x, int y) const
    {
        return x < width && y < height ? pixels[static_cast<std::size_t>(y) * width + x] : 255;
    }
};

struct PageText
{
    std::vector<std::u32string> lines;
    int pictures = 0;
};

struct Document
{
    fz_context* ctx;
    fz_document* doc = nullptr;
    int pages = 0;
    Document(fz_context* c, const char* path) : ctx(c)
    {
        fz_try(ctx)
        {
            doc = &pdf_open_document(ctx, path)->super;
            pages = fz_count_pages(ctx, doc);
        }
        fz_catch(ctx)
        {
            std::fprintf(stderr, "cannot open %s: %s\n", path, fz_caught_message(ctx));
            doc = nullptr;
            pages = 0;
        }
    }
    ~Document() { fz_drop_document(ctx, doc); }

    Grey render(int index) const
    {
        Grey grey;
        fz_pixmap* pixmap = nullptr;
        fz_var(pixmap);
        fz_try(ctx)
        {
            const float zoom = Dpi / 72;
            pixmap = fz_new_pixmap_from_page_number(ctx, doc, index, fz_scale(zoom, zoom),
                                                    fz_device_gray(ctx), 0);
            grey.width = pixmap->w;
            grey.height = pixmap->h;
            grey.pixels.resize(static_cast<std::size_t>(grey.width) * grey.height);
            for (int y = 0; y < grey.height; ++y)
                std::memcpy(&grey.pixels[static_cast<std::size_t>(y) * grey.width],
                            pixmap->samples + static_cast<std::ptrdiff_t>(y) * pixmap->stride,
                            static_cast<std::size_t>(grey.width));
        }
        fz_always(ctx)
        {
            fz_drop_pixmap(ctx, pixmap);
        }
        fz_catch(ctx)
        {
            grey = Grey{};
        }
        return grey;
    }

    PageText text(int index) const
    {
        PageText out;
        fz_stext_page* page = nullptr;
        fz_var(page);
        fz_try(ctx)
        {
            fz_stext_options options{};
            options.flags = FZ_STEXT_PRESERVE_IMAGES;
            page = fz_new_stext_page_from_page_number(ctx, doc, index, &options);
            for (fz_stext_block* block = page->first_block; block; block = block->next) {
                if (block->type == FZ_STEXT_BLOCK_IMAGE) {
                    const fz_rect box = block->bbox;
                    if (box.x1 - box.x0 > 4 && box.y1 - box.y0 > 4)
                        ++out.pictures;
                    continue;
                }
                if (block->type != FZ_STEXT_BLOCK_TEXT)
                    continue;
                for (fz_stext_line* line = block->u.t.first_line; line; line = line->next) {
                    std::u32string chars;
                    for (fz_stext_char* ch = line->first_char; ch; ch = ch->next)
                        chars.push_back(static_cast<char32_t>(ch->c));
                    out.lines.push_back(std::move(chars));
                }
            }
        }
        fz_always(ctx)
        {
            fz_drop_stext_page(ctx, page);
        }
        fz_catch(ctx)
        {
        }
        return out;
    }
};

bool isSeparator(char32_t c)
{
    if (c < 128)
        return !std::isalnum(static_cast<int>(c));
    // Blanks, dashes, quotes and other general punctuation; the no-break space and the
    // ideographic blank and full stop.
    return c == 0xa0 || c == 0xad || (c >= 0x2000 && c <= 0x206f) || c == 0x3000 || c == 0x3001 ||
           c == 0x3002 || c == 0xfeff || c == 0xb7 || c == 0xab || c == 0xbb;
}

// Scripts written without blanks break their lines anywhere: each character is a word.
bool isIdeograph(char32_t c)
{
    return (c >= 0x3040 && c <= 0x30ff) || (c >= 0x3400 && c <= 0x9fff) ||
           (c >= 0xf900 && c <= 0xfaff) || (c >= 0xac00 && c <= 0xd7af) ||
           (c >= 0x20000 && c <= 0x2ffff);
}

bool isLetter(char32_t c)
{
    return (c < 128 && std::isalpha(static_cast<int>(c))) || (c >= 0xc0 && c <= 0x24f);
}

bool isLower(char32_t c)
{
    return (c >= 'a' && c <= 'z') || (c >= 0xdf && c <= 0xff && c != 0xf7);
}

// The words of the lines in order, read alike for every document: a word broken at a line's
// end by a hyphen is whole again ("corpo-" + "ration"), since one converter hyphenates where
// another does not; any other mark, a hyphen inside a line too, separates words; each East
// Asian character is a word of its own.
std::vector<std::string> Words(const std::vector<std::u32string>& lines)
{
    std::vector<std::string> words;
    std::string word;
    const auto flush = [&]() {
        if (!word.empty())
            words.push_back(word);
        word.clear();
    };
    for (std::size_t l = 0; l < lines.size(); ++l) {
        std::u32string line = lines[l];
        while (!line.empty() && (line.back() == ' ' || line.back() == 0xa0))
            line.pop_back();
        bool joined = false;
        if (line.size() >= 2 &&
            (line.back() == '-' || line.back() == 0xad || line.back() == 0x2010) &&
            isLetter(line[line.size() - 2]) && l + 1 < lines.size()) {
            const std::u32string& next = lines[l + 1];
            const auto first = next.find_first_not_of(U" ");
            joined = first != std::u32string::npos && isLower(next[first]);
        }
        if (joined)
            line.pop_back();
        for (char32_t c : line) {
            if (isSeparator(c)) {
                flush();
                continue;
            }
            if (isIdeograph(c)) {
                flush();
                char buffer[8];
                const int n = fz_runetochar(buffer, static_cast<int>(c));
                words.emplace_back(buffer, static_cast<std::size_t>(n));
                continue;
            }
            char buffer[8];
            const int n = fz_runetochar(buffer, c < 128 ? std::tolower(static_cast<int>(c))
                                                        : static_cast<int>(c));
            word.append(buffer, static_cast<std::size_t>(n));
        }
        if (!joined)
            flush();
    }
    flush();
    return words;
}

double inkOverlap(const Grey& a, const Grey& b)
{
    const int width = a.width;
    const int height = a.height;
    const auto widened = [width, height](const Grey& g) {
        std::vector<unsigned char> ink(static_cast<std::size_t>(width) * height, 0);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (g.at(x, y) >= InkThreshold)
                    continue;
                for (int dy = -InkWidening; dy <= InkWidening; ++dy) {
                    for (int dx = -InkWidening; dx <= InkWidening; ++dx) {
                        const int px = x + dx;
                        const int py = y + dy;
                        if (px >= 0 && py >= 0 && px < width && py < height)
                            ink[static_cast<std::size_t>(py) * width + px] = 1;
                    }
                }
            }
        }
        return ink;
    };
    const std::vector<unsigned char> inkA = widened(a);
    const std::vector<unsigned char> inkB = widened(b);
    long both = 0;
    long either = 0;
    for (std::size_t i = 0; i < inkA.size(); ++i) {
        both += inkA[i] & inkB[i];
        either += inkA[i] | inkB[i];
    }
    return either == 0 ? 1.0 : static_cast<double>(both) / static_cast<double>(either);
}

// Mean SSIM over an 11x11 Gaussian window (sigma 1.5), as Wang et al. define it.
double ssim(const Grey& a, const Grey& b)
{
    const int width = a.width;
    const int height = a.height;
    if (width == 0 || height == 0)
        return 0;
    constexpr int Radius = 5;
    double kernel[2 * Radius + 1];
    double sum = 0;
    for (int i = -Radius; i <= Radius; ++i) {
        kernel[i + Radius] = std::exp(-(i * i) / (2 * 1.5 * 1.5));
        sum += kernel[i + Radius];
    }
    for (double& k : kernel)
        k /= sum;
    const std::size_t n = static_cast<std::size_t>(width) * height;
    std::vector<double> fields[5];
    for (auto& f : fields)
        f.assign(n, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double va = a.at(x, y);
            const double vb = b.at(x, y);
            const std::size_t i = static_cast<std::size_t>(y) * width + x;
            fields[0][i] = va;
            fields[1][i] = vb;
            fields[2][i] = va * va;
            fields[3][i] = vb * vb;
            fields[4][i] = va * vb;
        }
    }
    std::vector<double> temp(n);
    for (auto& f : fields) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                double v = 0;
                for (int k = -Radius; k <= Radius; ++k) {
                    const int px = std::clamp(x + k, 0, width - 1);
                    v += kernel[k + Radius] * f[static_cast<std::size_t>(y) * width + px];
                }
                temp[static_cast<std::size_t>(y) * width + x] = v;
            }
        }
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                double v = 0;
                for (int k = -Radius; k <= Radius; ++k) {
                    const int py = std::clamp(y + k, 0, height - 1);
                    v += kernel[k + Radius] * temp[static_cast<std::size_t>(py) * width + x];
                }
                f[static_cast<std::size_t>(y) * width + x] = v;
            }
        }
    }
    constexpr double C1 = (0.01 * 255) * (0.01 * 255);
    constexpr double C2 = (0.03 * 255) * (0.03 * 255);
    double total = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double ma = fields[0][i];
        const double mb = fields[1][i];
        const double va = fields[2][i] - ma * ma;
        const double vb = fields[3][i] - mb * mb;
        const double cov = fields[4][i] - ma * mb;
        total +=
            ((2 * ma * mb + C1) * (2 * cov + C2)) / ((ma * ma + mb * mb + C1) * (va + vb + C2));
    }
    return total / static_cast<double>(n);
}

// F1 of two bags of items.
template <typename T> double bagF1(const std::vector<T>& expected, const std::vector<T>& actual)
{
    if (expected.empty() && actual.empty())
        return 1;
    std::map<T, long> counts;
    for (const T& item : expected)
        ++counts[item];
    long found = 0;
    for (const T& item : actual) {
        auto it = counts.find(item);
        if (it != counts.end() && it->second > 0) {
            --it->second;
            ++found;
        }
    }
    if (found == 0)
        return 0;
    const double precision = static_cast<double>(found) / static_cast<double>(actual.size());
    const double recall = static_cast<double>(found) / static_cast<double>(expected.size());
    return 2 * precision * recall / (precision + recall);
}

std::vector<std::string> pairs(const std::vector<std::string>& words)
{
    std::vector<std::string> out;
    for (std::size_t i = 1; i < words.size(); ++i)
        out.push_back(words[i - 1] + ' ' + words[i]);
    return out;
}

// The words only one side has, each with how many times it is missing or extra.
void printDifference(const std::vector<std::string>& expected,
                     const std::vector<std::string>& actual)
{
    std::map<std::string, long> balance;
    for (const std::string& word : expected)
        ++balance[word];
    for (const std::string& word : actual)
        --balance[word];
    std::string missing;
    std::string extra;
    for (const auto& [word, count] : balance) {
        if (count != 0)
            (count > 0 ? missing : extra) += " " + word + "x" + std::to_string(std::labs(count));
    }
    std::printf("missing:%s\nextra:%s\n", missing.c_str(), extra.c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    bool verbose = false;
    int first = 1;
    if (argc > 1 && std::strcmp(argv[1], "-v") == 0) {
        verbose = true;
        first = 2;
    }
    if (argc - first != 2) {
        std::fprintf(stderr, "usage: velmora_page_compare [-v] <source.pdf> <output.pdf>\n");
        return 2;
    }
    fz_context* ctx = fz_new_context(nullptr, nullptr, FZ_STORE_DEFAULT);
    fz_set_warning_callback(
        ctx, [](void*, const char*) {}, nullptr);
    fz_set_error_callback(
        ctx, [](void*, const char*) {}, nullptr);
    int pagesIn = 0;
    int pagesOut = 0;
    double inkSum = 0;
    double ssimSum = 0;
    std::vector<std::u32string> linesIn;
    std::vector<std::u32string> linesOut;
    int picturesIn = 0;
    int picturesOut = 0;
    {
        const Document source(ctx, argv[first]);
        const Document output(ctx, argv[first + 1]);
        if (!source.doc)
            return 1;
        pagesIn = source.pages;
        pagesOut = output.pages;
        for (int i = 0; i < pagesIn; ++i) {
            const Grey a = source.render(i);
            double ink = 0;
            double similarity = 0;
            if (i < pagesOut) {
                const Grey b = output.render(i);
                ink = inkOverlap(a, b);
                similarity = ssim(a, b);
            }
            inkSum += ink;
            ssimSum += similarity;
            if (verbose)
                std::printf("page %d ink %.3f ssim %.3f\n", i + 1, ink, similarity);
            const PageText text = source.text(i);
            linesIn.insert(linesIn.end(), text.lines.begin(), text.lines.end());
            picturesIn += text.pictures;
        }
        for (int i = 0; i < pagesOut; ++i) {
            const PageText text = output.text(i);
            linesOut.insert(linesOut.end(), text.lines.begin(), text.lines.end());
            picturesOut += text.pictures;
        }
    }
    fz_drop_context(ctx);
    const std::vector<std::string> wordsIn = Words(linesIn);
    const std::vector<std::string> wordsOut = Words(linesOut);
    if (verbose)
        printDifference(wordsIn, wordsOut);
    const double pages = std::max(pagesIn, 1);
    std::printf("%d %d %.4f %.4f %.4f %.4f %d %d\n", pagesIn, pagesOut, inkSum / pages,
                ssimSum / pages, bagF1(wordsIn, wordsOut), bagF1(pairs(wordsIn), pairs(wordsOut)),
                picturesIn, picturesOut);
    return 0;
}
