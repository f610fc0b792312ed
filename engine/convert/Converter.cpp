#include "convert/Converter.h"

#include "convert/AtomicFile.h"
#include "convert/PageWriting.h"
#include "layout/PageLayout.h"
#include "layout/RunningHeads.h"
#include "ocr/PageRecognition.h"
#include "ocr/ScanDetection.h"
#include "rtf/RtfWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>

namespace velmora {

namespace {

// Pages the running heads are learnt from; short documents are read once and kept.
constexpr int SamplePages = 12;

struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Where the body text and the running lines of the sampled pages reach, as distances from the
// page's edges.
struct Extents
{
    float left = 1e9f;
    float right = 1e9f;
    float top = 1e9f;
    float bottom = 1e9f;
    std::optional<float> headerTop;
    std::optional<float> headerBottom;
    std::optional<float> footerTop;     // from the page's bottom edge
    std::optional<float> footerBottom;  // from the page's bottom edge
};

void lower(std::optional<float>& value, float candidate)
{
    value = value ? std::min(*value, candidate) : candidate;
}

class DocumentWriter
{
public:
    DocumentWriter(PdfSession& pdf, const EngineOptions& options, const RecognitionHooks& hooks)
        : m_pdf(pdf), m_options(options), m_hooks(hooks)
    {
        m_pictureOptions.extract = options.extractImages;
        m_pictureOptions.jpeg = options.imageFormat != 1;
        m_pictureOptions.jpegQuality = std::clamp(options.jpegQuality, 1, 100);
        // A scan is recognised from a drawing of its own, so its pictures are not drawn
        // and encoded first for nothing.
        if (options.extractText)
            m_pictureOptions.placesOnly = IsScannedPage;
    }

    void run(const std::function<void(const std::string&)>& sink, const Progress& progress)
    {
        const int count = m_pdf.pageCount();
        const auto [first, last] = PageSpan(m_options, count);
        m_firstPage = first;
        learn(first, last);

        std::unique_ptr<std::FILE, FileCloser> body(std::tmpfile());
        if (!body)
            throw ConversionError("cannot make a temporary file");
        RtfWriter writer(m_tables, m_fonts.faces(), m_options.adjustFontNames);
        PageRecognition recognition(m_pdf, m_fonts, m_options.conversionMethod, m_pictureOptions,
                                    m_hooks, [this](int index, bool pixels) {
                                        return pixels ? read(index, true) : takePage(index);
                                    });
        for (int index = first; index <= last; ++index) {
            PageContent page =
                m_options.extractText ? recognition.take(index, last) : takePage(index);
            m_anything = m_anything || !page.lines.empty() || !page.pictures.empty();
            writePage(writer, page, index, index == first);
            if (std::fwrite(writer.out().data(), 1, writer.out().size(), body.get()) !=
                writer.out().size())
                throw ConversionError("cannot write the temporary file");
            writer.out().clear();
            if (progress)
                progress(index - first + 1, last - first + 1);
        }

        // A damaged file that MuPDF patched up but that gave nothing at all is no result.
        if (!m_anything && m_pdf.wasRepaired())
            throw ConversionError("the PDF is damaged and nothing in it could be read");
        sink(documentHead());
        std::rewind(body.get());
        std::string chunk(1 << 16, '\0');
        std::size_t got = 0;
        while ((got = std::fread(chunk.data(), 1, chunk.size(), body.get())) > 0)
            sink(chunk.substr(0, got));
        sink("}\n");
    }

private:
    PageContent takePage(int index)
    {
        for (auto& cached : m_cache) {
            if (cached.first == index) {
                PageContent page = std::move(cached.second);
                cached.first = -1;
                return page;
            }
        }
        return read(index);
    }

    // With `pixels`, pictures are drawn and encoded on every page, scans too.
    PageContent read(int index, bool pixels = false)
    {
        try {
            PictureOptions options = m_pictureOptions;
            if (pixels)
                options.placesOnly = nullptr;
            PageContent page = m_pdf.readPage(index, options, m_fonts);
            if (!m_options.extractText)
                page.lines.clear();
            if (!m_options.extractHyperlinks)
                page.links.clear();
            return page;
        } catch (const PdfError& error) {
            throw ConversionError("page " + std::to_string(index + 1) + ": " + error.what());
        }
    }

    // Reads a sample of the range for the body size, the margins and the running heads.
    void learn(int first, int last)
    {
        const int pages = last - first + 1;
        const bool keep = pages <= SamplePages;
        std::vector<std::vector<Line>> sampleLines;
        std::vector<std::pair<float, float>> sampleSizes;
        std::vector<TextLine> sampleText;
        PictureOptions noPictures = m_pictureOptions;
        for (int k = 0; k < std::min(pages, SamplePages); ++k) {
            const int index = keep ? first + k
                                   : first + static_cast<int>(static_cast<long>(k) * (pages - 1) /
                                                              (SamplePages - 1));
            PageContent page;
            if (keep) {
                page = read(index);
            } else {
                noPictures.extract = false;
                noPictures.drawings = false;
                try {
                    page = m_pdf.readPage(index, noPictures, m_fonts);
                } catch (const PdfError& error) {
                    throw ConversionError("page " + std::to_string(index + 1) + ": " +
                                          error.what());
                }
            }
            sampleLines.push_back(PageLines(page));
            sampleSizes.emplace_back(page.width, page.height);
            // Pictures the text flows around set its width too; backgrounds don't.
            for (const Picture& picture : page.pictures) {
                const Rect& box = picture.box;
                if (box.width() * box.height() >= page.width * page.height * 0.5f)
                    continue;
                m_extents.left = std::min(m_extents.left, std::max(box.x0, 0.0f));
                m_extents.right = std::min(m_extents.right, std::max(page.width - box.x1, 0.0f));
            }
            sampleText.insert(sampleText.end(), page.lines.begin(), page.lines.end());
            if (keep)
                m_cache.emplace_back(index, std::move(page));
        }
        m_bodySize = DominantSize(sampleText);
        if (m_options.detectHeader && m_options.extractText)
            m_heads = RunningHeads::Learn(sampleLines);
        // The body's margins are the least any sampled page leaves, so that no page's text
        // starts below where its PDF page has it; running lines stand in the margins.
        for (std::size_t p = 0; p < sampleLines.size(); ++p) {
            const std::vector<Line>& lines = sampleLines[p];
            const auto [width, height] = sampleSizes[p];
            for (std::size_t i = 0; i < lines.size(); ++i) {
                const Rect& box = lines[i].box;
                if (m_heads.isHeader(lines, i)) {
                    lower(m_extents.headerTop, box.y0);
                    m_extents.headerBottom = std::max(m_extents.headerBottom.value_or(0), box.y1);
                    continue;
                }
                if (m_heads.isFooter(lines, i)) {
                    lower(m_extents.footerBottom, height - box.y1);
                    m_extents.footerTop =
                        std::max(m_extents.footerTop.value_or(0), height - box.y0);
                    continue;
                }
                m_extents.left = std::min(m_extents.left, box.x0);
                m_extents.right = std::min(m_extents.right, width - box.x1);
                m_extents.top = std::min(m_extents.top, box.y0);
                m_extents.bottom = std::min(m_extents.bottom, height - box.y1);
            }
        }
    }

    LayoutOptions layoutOptions() const
    {
        LayoutOptions layout;
        layout.documentType = m_options.documentType;
        layout.mergeParagraphs = m_options.mergeParagraph;
        layout.mergeText = m_options.mergeText;
        layout.rotatedAsShapes = m_options.wordArt;
        layout.bodySize = m_bodySize;
        layout.runningHeads = &m_heads;
        // Text boxes keep a drawn box as a shape at its place.
        layout.paragraphBoxes = m_options.conversionMethod == 1 || m_options.conversionMethod == 3;
        return layout;
    }

    // The section of a page of this size: the learnt margins, within a third of the page.
    Section sectionFor(const PageContent& page) const
    {
        Section section;
        section.width = page.width;
        section.height = page.height;
        const float minimum = 18;
        const auto margin = [minimum](float learnt, float fallback, float limit) {
            return std::clamp(learnt < 1e8f ? learnt : fallback, minimum, limit / 3);
        };
        section.left = margin(m_extents.left, 72, page.width);
        section.right = margin(m_extents.right, 72, page.width);
        // Flowing text rewraps its lines, and a line that reached the PDF's margin must not
        // wrap for a hair's difference in a font's widths.
        if (m_options.conversionMethod == 3)
            section.right = std::max(minimum, section.right - 2);
        section.top = margin(m_extents.top, 72, page.height);
        // Flowing text fills pages as deep as the PDF's fullest page; placed text needs the
        // bottom margin only as room to spare.
        // A document whose few pages all end early does not ask for a deep bottom margin.
        section.bottom = m_options.conversionMethod == 3
                             ? std::min(margin(m_extents.bottom, 72, page.height),
                                        std::max(72.0f, section.top * 1.5f))
                             : minimum;
        // Flowing text goes a little deeper still, so that a page the PDF filled keeps room for
        // a line the word processor wraps where the PDF did not.
        if (m_options.conversionMethod == 3)
            section.bottom = std::max(minimum, section.bottom - page.height * 0.02f);
        // The body starts below the header and ends above the footer, or a word processor
        // pushes it away.
        if (m_extents.headerBottom)
            section.top =
                std::min(std::max(section.top, *m_extents.headerBottom + 2), page.height / 3);
        if (m_extents.footerTop)
            section.bottom =
                std::min(std::max(section.bottom, *m_extents.footerTop + 2), page.height / 3);
        return section;
    }

    void writePage(RtfWriter& writer, const PageContent& page, int index, bool firstPage)
    {
        PageLayout layout = LayOutPage(page, layoutOptions(), &m_fonts.faces());
        if (firstPage) {
            m_section = sectionFor(page);
            m_firstSection = m_section;
        }
        // A page of another size or orientation starts a section of its own, on a new page.
        const bool resized = !firstPage && (std::fabs(page.width - m_section.width) > 1 ||
                                            std::fabs(page.height - m_section.height) > 1);
        if (resized) {
            m_section = sectionFor(page);
            writer.out() += "\\sect\\sectd\\sbkpage" + sectionFormat() + "\n";
            m_flow.newPage();
            m_columnsOpen = false;
        }

        // Pictures that cover most of the page are its background, and go behind the text
        // instead of pushing it away; drawings stand at their place on the page, except in
        // flowing text, where they go with their paragraph.
        const float pageArea = page.width * page.height;
        std::vector<bool> background(page.pictures.size(), false);
        std::string shapes;
        // A scan with its recognised text drawn invisibly over it: the text is the page's text,
        // and the scan stands in front of it, so its words show once.
        std::size_t glyphs = 0;
        std::size_t hidden = 0;
        for (const TextLine& line : page.lines) {
            for (const Glyph& glyph : line.glyphs) {
                ++glyphs;
                hidden += glyph.hidden ? 1 : 0;
            }
        }
        const bool scanned = glyphs > 0 && hidden * 10 >= glyphs * 8;
        for (std::size_t i = 0; i < page.pictures.size(); ++i) {
            Rect shown = page.pictures[i].box;
            shown.x0 = std::max(shown.x0, 0.0f);
            shown.y0 = std::max(shown.y0, 0.0f);
            shown.x1 = std::min(shown.x1, page.width);
            shown.y1 = std::min(shown.y1, page.height);
            background[i] = !shown.empty() && shown.width() * shown.height() >= pageArea * 0.5f;
            if (background[i]) {
                RtfWriter pictures = writer.fresh();
                pictures.pictureShape(page.pictures[i], !scanned);
                shapes += pictures.out();
            }
        }
        std::erase_if(layout.blocks, [&background](const Block& block) {
            return block.kind == BlockKind::Picture && block.picture >= 0 &&
                   background[static_cast<std::size_t>(block.picture)];
        });
        if (m_options.conversionMethod != 3) {
            RtfWriter drawn = writer.fresh();
            for (const Picture& artwork : page.artwork)
                drawn.pictureShape(artwork);
            for (std::size_t d : layout.drawings)
                drawn.shape(page.drawings[d]);
            shapes += drawn.out();
        }
        if (firstPage) {
            m_firstHasHeader = !layout.header.empty();
            m_firstHasFooter = !layout.footer.empty();
        }
        // Right-hand (odd) and left-hand (even) pages may have running lines of their own.
        const auto side = static_cast<std::size_t>((index - m_firstPage) % 2);
        if (m_header[side].empty() && !layout.header.empty())
            m_header[side] = runningText(layout.header, page, index, true);
        if (m_footer[side].empty() && !layout.footer.empty())
            m_footer[side] = runningText(layout.footer, page, index, false);

        PageJob job{m_options,
                    page,
                    layout,
                    m_section,
                    sectionFormat(),
                    std::move(shapes),
                    !firstPage && !resized,
                    &m_columnsOpen};
        switch (m_options.conversionMethod) {
        case 1:
            WriteTabbedPage(writer, job);
            break;
        case 3:
            WriteFlowPage(writer, job, m_flow);
            break;
        default:
            WriteBoxedPage(writer, job);
            break;
        }
    }

    // Whether right-hand and left-hand pages have running lines of their own: both have some,
    // and they differ in more than their numbers.
    static bool facingPages(const std::string (&running)[2])
    {
        const auto words = [](const std::string& rtf) {
            std::string out;
            for (char c : rtf) {
                if (c < '0' || c > '9')
                    out.push_back(c);
            }
            return out;
        };
        return !running[0].empty() && !running[1].empty() && words(running[0]) != words(running[1]);
    }

    // A running line for the header or footer; the page's own number becomes a PAGE field.
    std::string runningText(const std::vector<Line>& lines, const PageContent& page, int index,
                            bool header)
    {
        RtfWriter writer(m_tables, m_fonts.faces(), m_options.adjustFontNames);
        std::string& out = writer.out();
        out += header ? "{\\header " : "{\\footer ";
        bool numbered = false;
        for (const Line& line : lines) {
            out += "\\pard\\plain";
            const float centre = line.box.centreX();
            if (std::fabs(centre - page.width / 2) < 24)
                out += "\\qc";
            else if (line.box.x1 > page.width - m_section.right - 12 &&
                     line.box.x0 > page.width / 2)
                out += "\\qr";
            out.push_back(' ');
            std::size_t i = 0;
            std::vector<Glyph> pending;
            while (i < line.glyphs.size()) {
                std::size_t end = i;
                while (end < line.glyphs.size() && line.glyphs[end].c >= '0' &&
                       line.glyphs[end].c <= '9')
                    ++end;
                if (end > i) {
                    std::vector<Glyph> digits(line.glyphs.begin() + static_cast<std::ptrdiff_t>(i),
                                              line.glyphs.begin() +
                                                  static_cast<std::ptrdiff_t>(end));
                    // The first number standing alone is the page's number; the document's
                    // pages are numbered from where that makes it right.
                    const auto letter = [](char32_t c) {
                        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
                    };
                    // Part of a word or of a decimal ("5.4") is no page number.
                    const auto joined = [&line, letter](std::size_t at, std::size_t beyond) {
                        const char32_t c = line.glyphs[at].c;
                        const bool decimal =
                            (c == '.' || c == ',') && beyond < line.glyphs.size() &&
                            line.glyphs[beyond].c >= '0' && line.glyphs[beyond].c <= '9';
                        return letter(c) || decimal;
                    };
                    const bool alone = (i == 0 || !joined(i - 1, i >= 2 ? i - 2 : i)) &&
                                       (end == line.glyphs.size() || !joined(end, end + 1));
                    if (!numbered && alone && end - i <= 5) {
                        numbered = true;
                        if (!m_firstNumber)
                            m_firstNumber = std::stoi(ToUtf8(digits)) - (index - m_firstPage);
                        writer.text(pending, nullptr);
                        pending.clear();
                        out += "{\\field{\\*\\fldinst PAGE}{\\fldrslt ";
                        writer.text(digits, nullptr);
                        out += "}}";
                    } else {
                        pending.insert(pending.end(), digits.begin(), digits.end());
                    }
                    i = end;
                    continue;
                }
                Glyph glyph = line.glyphs[i];
                if (glyph.c == '\t')
                    glyph.c = ' ';
                pending.push_back(glyph);
                ++i;
            }
            writer.text(pending, nullptr);
            out += "\\par";
        }
        out += "}\n";
        return out;
    }

    // Where the header and footer stand; every new section must say it again.
    std::string runningDistances() const
    {
        std::string out;
        if (m_extents.headerTop)
            out += "\\headery" + std::to_string(Twips(std::max(*m_extents.headerTop, 6.0f)));
        if (m_extents.footerBottom)
            out += "\\footery" + std::to_string(Twips(std::max(*m_extents.footerBottom, 6.0f)));
        return out;
    }

    // The page of the current section; every new section must say all of it again.
    std::string sectionFormat() const
    {
        std::string out = "\\pgwsxn" + std::to_string(Twips(m_section.width)) + "\\pghsxn" +
                          std::to_string(Twips(m_section.height));
        if (m_section.width > m_section.height)
            out += "\\lndscpsxn";
        out += "\\marglsxn" + std::to_string(Twips(m_section.left)) + "\\margrsxn" +
               std::to_string(Twips(m_section.right)) + "\\margtsxn" +
               std::to_string(Twips(m_section.top)) + "\\margbsxn" +
               std::to_string(Twips(m_section.bottom));
        return out + runningDistances();
    }

    std::string documentHead()
    {
        std::string head = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n";
        // The styles and the defaults must name their fonts before the table is written.
        const int body =
            m_tables.font(FontStyle{"Times New Roman", false, false, FontKind::Roman}, 0);
        head += m_tables.fontTable();
        head += m_tables.colourTable();
        const std::string fs =
            std::to_string(std::max(8L, std::lround((m_bodySize > 0 ? m_bodySize : 12) * 2)));
        head += "{\\stylesheet{\\s0\\snext0\\f" + std::to_string(body) + "\\fs" + fs + " Normal;}";
        head += "{\\s1\\sbasedon0\\snext0\\outlinelevel0\\b\\fs32 heading 1;}";
        head += "{\\s2\\sbasedon0\\snext0\\outlinelevel1\\b\\fs26 heading 2;}}\n";
        head += "{\\*\\generator VelmoraConverter;}\n";
        // The first page's section opens the document; the body was written after it.
        const Section current = m_section;
        m_section = m_firstSection;
        head += "\\paperw" + std::to_string(Twips(m_section.width)) + "\\paperh" +
                std::to_string(Twips(m_section.height));
        head += "\\margl" + std::to_string(Twips(m_section.left)) + "\\margr" +
                std::to_string(Twips(m_section.right));
        head += "\\margt" + std::to_string(Twips(m_section.top)) + "\\margb" +
                std::to_string(Twips(m_section.bottom));
        const bool facing = facingPages(m_header) || facingPages(m_footer);
        if (facing)
            head += "\\facingp";
        head += "\\viewkind1\n\\sectd" + sectionFormat();
        m_section = current;
        const std::string& header = m_header[0].empty() ? m_header[1] : m_header[0];
        const std::string& footer = m_footer[0].empty() ? m_footer[1] : m_footer[0];
        // A first page without the running head or foot (a title page) has its own.
        const bool titlePage =
            (!header.empty() && !m_firstHasHeader) || (!footer.empty() && !m_firstHasFooter);
        if (titlePage)
            head += "\\titlepg";
        if (m_firstNumber && *m_firstNumber != 1 && *m_firstNumber >= 0)
            head += "\\pgnrestart\\pgnstarts" + std::to_string(*m_firstNumber);
        head += "\n";
        // A running line's group under another name: its text follows the group's first blank.
        const auto group = [](const std::string& running, const char* name) {
            if (running.empty())
                return std::string("{\\") + name + " \\pard\\plain\\par}\n";
            return std::string("{\\") + name + running.substr(running.find(' '));
        };
        if (facing) {
            head += group(m_header[0], "headerr") + group(m_header[1], "headerl");
            head += group(m_footer[0], "footerr") + group(m_footer[1], "footerl");
        } else {
            head += header + footer;
        }
        if (titlePage) {
            head += group(m_firstHasHeader ? header : std::string(), "headerf");
            head += group(m_firstHasFooter ? footer : std::string(), "footerf");
        }
        return head;
    }

    PdfSession& m_pdf;
    const EngineOptions& m_options;
    const RecognitionHooks& m_hooks;
    PictureOptions m_pictureOptions;
    FontTable m_fonts;
    RtfTables m_tables;
    RunningHeads m_heads;
    float m_bodySize = 0;
    Section m_section;
    Section m_firstSection;
    std::vector<std::pair<int, PageContent>> m_cache;
    std::string m_header[2];  // of right-hand pages, then of left-hand ones
    std::string m_footer[2];
    bool m_anything = false;
    bool m_firstHasHeader = false;
    bool m_firstHasFooter = false;
    int m_firstPage = 0;               // the PDF page the document starts with
    std::optional<int> m_firstNumber;  // the number its running head gives that page
    Extents m_extents;
    FlowPosition m_flow;
    bool m_columnsOpen = false;
};

}  // namespace

std::pair<int, int> PageSpan(const EngineOptions& options, int pageCount)
{
    if (pageCount <= 0)
        throw ConversionError("the PDF has no pages");
    if (!options.usingPageRange)
        return {0, pageCount - 1};
    const int first = options.pageFrom;
    const int last = std::min(options.pageTo, pageCount - 1);
    if (first < 0 || first >= pageCount || last < first) {
        throw ConversionError("page range " + std::to_string(options.pageFrom + 1) + "-" +
                              std::to_string(options.pageTo + 1) + " lies outside the document's " +
                              std::to_string(pageCount) + " pages");
    }
    return {first, last};
}

void WriteRtf(PdfSession& pdf, const EngineOptions& options,
              const std::function<void(const std::string&)>& sink, const Progress& progress,
              const RecognitionHooks& hooks)
{
    DocumentWriter writer(pdf, options, hooks);
    try {
        writer.run(sink, progress);
    } catch (const PdfError& error) {
        throw ConversionError(error.what());
    }
}

void ConvertToFile(PdfSession& pdf, const EngineOptions& options, const std::string& target,
                   const Progress& progress, const RecognitionHooks& hooks)
{
    AtomicFile file(target);
    if (!file.open())
        throw ConversionError(file.error());
    WriteRtf(
        pdf, options,
        [&file](const std::string& piece) {
            if (!file.write(piece))
                throw ConversionError(file.error());
        },
        progress, hooks);
    if (!file.commit())
        throw ConversionError(file.error());
}

std::string PictureStem(const std::string& target)
{
    // The last extension goes even when it is the whole name: the front end asks for the
    // pictures of "<stem>.rtf" as "<stem>_1.bmp", and its stem may be empty.
    const std::size_t slash = target.find_last_of('/');
    const std::size_t dot = target.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
        return target;
    return target.substr(0, dot);
}

void WritePagePictures(PdfSession& pdf, const EngineOptions& options, const std::string& stem)
{
    int count = 0;
    try {
        count = pdf.pageCount();
    } catch (const PdfError& error) {
        throw ConversionError(error.what());
    }
    const auto [first, last] = PageSpan(options, count);
    const int dpi = options.zoomDpi > 0 ? std::min(options.zoomDpi, 1200) : 96;
    for (int index = first; index <= last; ++index) {
        std::vector<uint8_t> bmp;
        try {
            bmp = pdf.renderBmp(index, dpi);
        } catch (const PdfError& error) {
            throw ConversionError("page " + std::to_string(index + 1) + ": " + error.what());
        }
        AtomicFile file(stem + "_" + std::to_string(index - first + 1) + ".bmp", false);
        if (!file.open() || !file.write(bmp.data(), bmp.size()) || !file.commit())
            throw ConversionError(file.error());
    }
}

}  // namespace velmora
