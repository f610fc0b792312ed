#include "convert/Converter.h"

#include "convert/AtomicFile.h"
#include "layout/PageLayout.h"
#include "layout/RunningHeads.h"
#include "ocr/PageRecognition.h"
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

struct Section
{
    float width = 612;
    float height = 792;
    float left = 72;
    float right = 72;
    float top = 72;
    float bottom = 72;
};

// Room the text of a block needs in a word processor's font: the PDF's own advances, with a
// margin for a substitute font's wider letters. Blanks the layout added have no width of their
// own and count as a word space.
float estimatedWidth(const std::vector<Glyph>& glyphs, float scale)
{
    constexpr float SubstituteMargin = 1.04f;
    float width = 0;
    for (const Glyph& glyph : glyphs) {
        if (glyph.c == '\t')
            continue;
        const float advance = glyph.box.width();
        width += advance > 0 ? advance : glyph.size * 0.25f;
    }
    return width * scale * SubstituteMargin;
}

// The length of text along its own baseline, from typical glyph widths: rotated glyphs' boxes
// don't tell their advances.
float nominalWidth(const std::vector<Glyph>& glyphs)
{
    float width = 0;
    for (const Glyph& glyph : glyphs) {
        const int charset = CharsetFor(glyph.c);
        width += glyph.size * (charset == 128 || charset == 129 ? 1.0f
                               : glyph.c == ' '                 ? 0.28f
                                                                : 0.55f);
    }
    return width;
}

// The factor that lets a block's text fit its box, never below 60 %.
float shrinkToFit(const Block& block, float boxWidth, float boxHeight)
{
    if (boxWidth <= 0 || block.size <= 0)
        return 1;
    float scale = 1;
    const float lineCount = static_cast<float>(std::max<std::size_t>(1, block.lines.size()));
    for (int step = 0; step < 8; ++step) {
        // The estimate is rough: within 10 % of the box counts as fitting.
        const float width = estimatedWidth(block.text, scale);
        const float lines = std::ceil(width / (boxWidth * 1.1f));
        const float height = lines * block.size * scale * 1.1f;
        if (lines <= lineCount || height <= boxHeight * 1.1f + 2)
            break;
        scale *= 0.95f;
        if (scale < 0.6f) {
            scale = 0.6f;
            break;
        }
    }
    return scale;
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
    }

    void run(const std::function<void(const std::string&)>& sink, const Progress& progress)
    {
        const int count = m_pdf.pageCount();
        const auto [first, last] = PageSpan(m_options, count);
        learn(first, last);

        std::unique_ptr<std::FILE, FileCloser> body(std::tmpfile());
        if (!body)
            throw ConversionError("cannot make a temporary file");
        RtfWriter writer(m_tables, m_fonts.faces(), m_options.adjustFontNames);
        PageRecognition recognition(m_pdf, m_fonts, m_options.conversionMethod, m_pictureOptions,
                                    m_hooks, [this](int index) { return takePage(index); });
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

    PageContent read(int index)
    {
        try {
            PageContent page = m_pdf.readPage(index, m_pictureOptions, m_fonts);
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
            if (k == 0) {
                m_section.width = page.width;
                m_section.height = page.height;
            }
            sampleLines.push_back(PageLines(page));
            sampleText.insert(sampleText.end(), page.lines.begin(), page.lines.end());
            if (keep)
                m_cache.emplace_back(index, std::move(page));
        }
        m_bodySize = DominantSize(sampleText);
        if (m_options.detectHeader && m_options.extractText)
            m_heads = RunningHeads::Learn(sampleLines);
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
        return layout;
    }

    void writePage(RtfWriter& writer, const PageContent& page, int index, bool firstPage)
    {
        PageLayout layout = LayOutPage(page, layoutOptions(), &m_fonts.faces());
        if (firstPage) {
            settleSection(page, layout);
            m_firstSection = m_section;
        }
        // A page of another size or orientation starts a section of its own, on a new page.
        const bool resized = !firstPage && (std::fabs(page.width - m_section.width) > 1 ||
                                            std::fabs(page.height - m_section.height) > 1);
        if (resized) {
            m_section.width = page.width;
            m_section.height = page.height;
            m_section.left = std::min(m_firstSection.left, page.width / 3);
            m_section.right = std::min(m_firstSection.right, page.width / 3);
            m_section.top = std::min(m_firstSection.top, page.height / 3);
            m_section.bottom = std::min(m_firstSection.bottom, page.height / 3);
            writer.out() += "\\sect\\sectd\\sbkpage" + sectionFormat() + "\n";
        }
        bool breakBefore = !firstPage && !resized;

        // Pictures that cover most of the page are its background, and go behind the text
        // instead of pushing it away; drawings stand at their place on the page, except in
        // flowing text, where nothing keeps its place.
        const float pageArea = page.width * page.height;
        std::vector<bool> background(page.pictures.size(), false);
        std::string shapes;
        for (std::size_t i = 0; i < page.pictures.size(); ++i) {
            Rect shown = page.pictures[i].box;
            shown.x0 = std::max(shown.x0, 0.0f);
            shown.y0 = std::max(shown.y0, 0.0f);
            shown.x1 = std::min(shown.x1, page.width);
            shown.y1 = std::min(shown.y1, page.height);
            background[i] = !shown.empty() && shown.width() * shown.height() >= pageArea * 0.5f;
            if (background[i]) {
                RtfWriter pictures(m_tables, m_fonts.faces(), m_options.adjustFontNames);
                pictures.pictureShape(page.pictures[i]);
                shapes += pictures.out();
            }
        }
        std::erase_if(layout.blocks, [&background](const Block& block) {
            return block.kind == BlockKind::Picture && block.picture >= 0 &&
                   background[static_cast<std::size_t>(block.picture)];
        });
        if (m_options.conversionMethod != 3) {
            RtfWriter drawn(m_tables, m_fonts.faces(), m_options.adjustFontNames);
            for (const Picture& artwork : page.artwork)
                drawn.pictureShape(artwork);
            for (const Drawing& drawing : page.drawings)
                drawn.shape(drawing);
            shapes += drawn.out();
        }
        // The shapes' paragraph opens the page; with text boxes it closes it, since a word
        // processor lets frames that follow a shape's anchor lose their text.
        if (!shapes.empty() && m_options.conversionMethod != 2) {
            std::string& out = writer.out();
            out += m_options.conversionMethod == 1 && breakBefore ? "\\pard\\plain\\pagebb\\fs2 "
                                                                  : "\\pard\\plain\\fs2 ";
            out += shapes + "\\par\n";
            if (m_options.conversionMethod == 1)
                breakBefore = false;
        }
        if (!m_headerWritten && !layout.header.empty())
            m_header = runningText(layout.header, page, index, true);
        if (!m_footerWritten && !layout.footer.empty())
            m_footer = runningText(layout.footer, page, index, false);
        m_headerWritten = m_headerWritten || !layout.header.empty();
        m_footerWritten = m_footerWritten || !layout.footer.empty();

        switch (m_options.conversionMethod) {
        case 1:
            writeTabbed(writer, page, layout, breakBefore);
            break;
        case 3:
            writeFlow(writer, page, layout);
            break;
        default:
            writeBoxes(writer, page, layout, breakBefore);
            if (!shapes.empty())
                writer.out() += "\\pard\\plain\\fs2 " + shapes + "\\par\n";
            break;
        }
    }

    void settleSection(const PageContent& page, const PageLayout& layout)
    {
        m_section.width = page.width;
        m_section.height = page.height;
        if (layout.contentBox.empty())
            return;
        const float minimum = 18;
        m_section.left = std::clamp(layout.contentBox.x0, minimum, page.width / 3);
        m_section.right = std::clamp(page.width - layout.contentBox.x1, minimum, page.width / 3);
        m_section.top = std::clamp(layout.contentBox.y0, minimum, page.height / 3);
        m_section.bottom = std::clamp(page.height - layout.contentBox.y1, minimum, page.height / 3);
        if (!layout.header.empty())
            m_headerTop = layout.header.front().box.y0;
        if (!layout.footer.empty())
            m_footerBottom = page.height - layout.footer.back().box.y1;
    }

    // A running line for the header or footer; the page's own number becomes a PAGE field.
    std::string runningText(const std::vector<Line>& lines, const PageContent& page, int index,
                            bool header)
    {
        RtfWriter writer(m_tables, m_fonts.faces(), m_options.adjustFontNames);
        std::string& out = writer.out();
        out += header ? "{\\header " : "{\\footer ";
        const std::string number = std::to_string(index + 1);
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
                    if (ToUtf8(digits) == number) {
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

    void paragraphSpacing(std::string& out, const PageLayout& layout, const Block& block) const
    {
        if (layout.doubleSpaced)
            out += "\\sl480\\slmult1";
        else if (m_options.adjustSpacing && block.lineGap > 0)
            out += "\\sl" + std::to_string(Twips(block.lineGap)) + "\\slmult0";
    }

    static void alignment(std::string& out, const Block& block)
    {
        switch (block.alignment) {
        case Alignment::Centre:
            out += "\\qc";
            break;
        case Alignment::Right:
            out += "\\qr";
            break;
        case Alignment::Justify:
            out += "\\qj";
            break;
        case Alignment::Left:
            break;
        }
    }

    void tabStops(std::string& out, const Block& block, float origin) const
    {
        for (float stop : block.tabStops) {
            const long at = Twips(stop - origin);
            if (at > 0)
                out += "\\tx" + std::to_string(at);
        }
    }

    void writePictureParagraph(RtfWriter& writer, const Picture& picture, float maxWidth)
    {
        float width = picture.box.width();
        float height = picture.box.height();
        if (maxWidth > 0 && width > maxWidth) {
            height *= maxWidth / width;
            width = maxWidth;
        }
        writer.out() += "\\pard\\plain\\qc ";
        writer.picture(picture, width, height);
        writer.out() += "\\par\n";
    }

    void writeRotatedShape(RtfWriter& writer, const Block& block, bool onPage)
    {
        std::string& out = writer.out();
        const float length = std::max(nominalWidth(block.text), block.size);
        const float thickness = block.size * 1.6f;
        const float cx = block.box.centreX();
        const float cy = block.box.centreY();
        const long left = onPage ? Twips(cx - length / 2) : 0;
        const long top = onPage ? Twips(cy - thickness / 2) : 0;
        out += "\\pard\\plain {\\shp{\\*\\shpinst\\shpleft" + std::to_string(left) + "\\shptop" +
               std::to_string(top) + "\\shpright" + std::to_string(left + Twips(length)) +
               "\\shpbottom" + std::to_string(top + Twips(thickness)) + "\\shpfhdr0";
        out += onPage ? "\\shpbxpage\\shpbxignore\\shpbypage\\shpbyignore"
                      : "\\shpbxcolumn\\shpbxignore\\shpbypara\\shpbyignore";
        out += "\\shpwr3\\shpwrk0\\shpfblwtxt0\\shpz0";
        out += "{\\sp{\\sn shapeType}{\\sv 202}}{\\sp{\\sn rotation}{\\sv " +
               std::to_string(std::lround(-block.angle * 65536)) + "}}";
        out +=
            "{\\sp{\\sn fLine}{\\sv 0}}{\\sp{\\sn fFilled}{\\sv 0}}{\\sp{\\sn dxTextLeft}{\\sv 0}}"
            "{\\sp{\\sn dxTextRight}{\\sv 0}}{\\sp{\\sn dyTextTop}{\\sv 0}}{\\sp{\\sn "
            "dyTextBottom}{\\sv 0}}";
        out += "{\\shptxt \\pard\\plain\\qc ";
        writer.text(block.text, nullptr);
        out += "\\par}}}\\par\n";
    }

    void writeFlow(RtfWriter& writer, const PageContent& page, const PageLayout& layout)
    {
        const float textWidth = m_section.width - m_section.left - m_section.right;
        for (const Block& block : layout.blocks) {
            std::string& out = writer.out();
            switch (block.kind) {
            case BlockKind::Picture:
                writePictureParagraph(
                    writer, page.pictures[static_cast<std::size_t>(block.picture)], textWidth);
                continue;
            case BlockKind::Rotated:
                writeRotatedShape(writer, block, false);
                continue;
            case BlockKind::Heading1:
                out += "\\pard\\plain\\s1\\outlinelevel0\\sb240\\sa120\\keepn ";
                break;
            case BlockKind::Heading2:
                out += "\\pard\\plain\\s2\\outlinelevel1\\sb180\\sa60\\keepn ";
                break;
            case BlockKind::Paragraph:
                out += "\\pard\\plain\\sa120";
                alignment(out, block);
                paragraphSpacing(out, layout, block);
                tabStops(out, block, m_section.left);
                out.push_back(' ');
                break;
            }
            writer.text(block.text, &page.links);
            out += "\\par\n";
        }
    }

    // One block of the tabbed method: indented from `origin`, wrapping at `rightEdge`, `gap`
    // points below what came before it; `lead` goes in front of its text (a column break).
    void writeTabbedBlock(RtfWriter& writer, const PageContent& page, const PageLayout& layout,
                          const Block& block, float origin, float rightEdge, float gap,
                          bool pageBreak, const char* lead)
    {
        std::string& out = writer.out();
        out += "\\pard\\plain";
        if (pageBreak)
            out += "\\pagebb";
        if (m_options.adjustSpacing && gap > 1)
            out += "\\sb" + std::to_string(Twips(gap));
        const bool placed =
            block.alignment == Alignment::Left || block.alignment == Alignment::Justify;
        const float indent =
            m_options.preserveTextPosition && placed ? std::max(0.0f, block.box.x0 - origin) : 0;
        if (indent > 0)
            out += "\\li" + std::to_string(Twips(indent));
        // A paragraph of several lines wraps where its lines ended.
        const float rightIndent = rightEdge - block.box.x1;
        if (m_options.preserveTextPosition && block.lines.size() > 1 && rightIndent > 1)
            out += "\\ri" + std::to_string(Twips(rightIndent));
        alignment(out, block);
        if (block.kind == BlockKind::Picture) {
            out.push_back(' ');
            out += lead;
            const Picture& picture = page.pictures[static_cast<std::size_t>(block.picture)];
            writer.picture(picture, picture.box.width(), picture.box.height());
            out += "\\par\n";
            return;
        }
        paragraphSpacing(out, layout, block);
        // Stops are measured from where the paragraph's indent also starts.
        tabStops(out, block, m_options.preserveTextPosition ? origin : block.box.x0);
        out.push_back(' ');
        out += lead;
        float scale = 1;
        if (m_options.shrinkFonts) {
            const float right = block.tabStops.empty() ? rightEdge : block.tabStops.front();
            scale =
                shrinkToFit(block, right - block.box.x0, block.box.height() * 1.5f + block.size);
        }
        writer.text(block.text, &page.links, scale);
        out += "\\par\n";
    }

    void writeTabbed(RtfWriter& writer, const PageContent& page, const PageLayout& layout,
                     bool breakBefore)
    {
        const std::vector<Block>& blocks = layout.blocks;
        const float textRight = m_section.width - m_section.right;
        float previousBottom = m_section.top;
        bool pageBreak = breakBefore;
        std::size_t i = 0;
        while (i < blocks.size()) {
            const Block& block = blocks[i];
            if (block.kind == BlockKind::Rotated) {
                writeRotatedShape(writer, block, true);
                ++i;
                continue;
            }
            std::size_t end = i;
            int columns = 0;
            if (layout.columns > 1) {
                while (end < blocks.size() && blocks[end].column >= 0) {
                    columns = std::max(columns, blocks[end].column + 1);
                    ++end;
                }
            }
            // What stands above the other columns, a title say, goes before the columns.
            if (columns >= 2) {
                float othersTop = 1e9f;
                for (std::size_t k = i; k < end; ++k) {
                    if (blocks[k].column != block.column)
                        othersTop = std::min(othersTop, blocks[k].box.y0);
                }
                if (block.box.y1 <= othersTop)
                    columns = 0;
            }
            if (columns < 2) {
                writeTabbedBlock(writer, page, layout, block, m_section.left, textRight,
                                 block.box.y0 - previousBottom, pageBreak, "");
                pageBreak = false;
                previousBottom = std::max(previousBottom, block.box.y1);
                ++i;
                continue;
            }
            // Columns side by side become a section of as many columns, each read in turn.
            std::vector<Rect> extents(static_cast<std::size_t>(columns));
            for (std::size_t k = i; k < end; ++k) {
                if (blocks[k].kind != BlockKind::Rotated)
                    extents[static_cast<std::size_t>(blocks[k].column)].unite(blocks[k].box);
            }
            float gutters = 0;
            int gaps = 0;
            for (std::size_t c = 1; c < extents.size(); ++c) {
                if (!extents[c - 1].empty() && !extents[c].empty()) {
                    gutters += extents[c].x0 - extents[c - 1].x1;
                    ++gaps;
                }
            }
            const float gutter = gaps ? std::max(6.0f, gutters / static_cast<float>(gaps)) : 18;
            std::string& out = writer.out();
            out += "\\sect\\sectd\\sbknone" + sectionFormat() + "\\cols" + std::to_string(columns) +
                   "\\colsx" + std::to_string(Twips(gutter)) + "\n";
            const float bandTop = previousBottom;
            float bandBottom = previousBottom;
            float columnBottom = bandTop;
            int column = blocks[i].column;
            for (std::size_t k = i; k < end; ++k) {
                const Block& member = blocks[k];
                if (member.kind == BlockKind::Rotated) {
                    writeRotatedShape(writer, member, true);
                    continue;
                }
                const bool newColumn = member.column != column;
                if (newColumn) {
                    column = member.column;
                    columnBottom = bandTop;
                }
                const Rect& extent = extents[static_cast<std::size_t>(member.column)];
                writeTabbedBlock(writer, page, layout, member, extent.x0, extent.x1,
                                 member.box.y0 - columnBottom, pageBreak,
                                 newColumn ? "\\column " : "");
                pageBreak = false;
                columnBottom = std::max(columnBottom, member.box.y1);
                bandBottom = std::max(bandBottom, member.box.y1);
            }
            writer.out() += "\\sect\\sectd\\sbknone" + sectionFormat() + "\n";
            previousBottom = bandBottom;
            i = end;
        }
        if (blocks.empty())
            writer.out() += breakBefore ? "\\pard\\plain\\pagebb\\par\n" : "\\pard\\plain\\par\n";
    }

    void writeBoxes(RtfWriter& writer, const PageContent& page, const PageLayout& layout,
                    bool breakBefore)
    {
        std::string& out = writer.out();
        if (breakBefore)
            out += "\\pard\\plain\\page\\par\n";
        const auto frame = [&out](const Rect& box, float width, float height, bool exact) {
            out += "\\pard\\plain\\phpg\\pvpg\\posx" +
                   std::to_string(Twips(std::max(0.0f, box.x0))) + "\\posy" +
                   std::to_string(Twips(std::max(0.0f, box.y0))) + "\\absw" +
                   std::to_string(Twips(width)) + "\\absh" +
                   std::to_string(exact ? -Twips(height) : Twips(height)) +
                   "\\dxfrtext0\\dfrmtxtx0\\dfrmtxty0";
        };
        for (const Line& number : layout.pleadingNumbers) {
            frame(number.box, number.box.width() + 4, number.box.height(), false);
            out += "\\qr ";
            writer.text(number.glyphs, nullptr);
            out += "\\par\n";
        }
        for (const Block& block : layout.blocks) {
            if (block.kind == BlockKind::Rotated) {
                writeRotatedShape(writer, block, true);
                continue;
            }
            if (block.kind == BlockKind::Picture) {
                const Picture& picture = page.pictures[static_cast<std::size_t>(block.picture)];
                frame(block.box, block.box.width(), block.box.height(), true);
                out.push_back(' ');
                writer.picture(picture, picture.box.width(), picture.box.height());
                out += "\\par\n";
                continue;
            }
            // Word's fonts are seldom the PDF's: the frame gets room for a substitute's wider
            // letters, and its height is a minimum, so a line that wraps all the same is shown
            // rather than cut off.
            float width = block.box.width();
            const float height = block.box.height();
            float scale = 1;
            if (m_options.shrinkFonts) {
                width = width * 1.06f + 3;
                scale = shrinkToFit(block, width, height + 2);
            } else {
                width = width * 1.08f + 4;
            }
            frame(block.box, width, height, false);
            alignment(out, block);
            paragraphSpacing(out, layout, block);
            tabStops(out, block, block.box.x0);
            out.push_back(' ');
            writer.text(block.text, &page.links, scale);
            out += "\\par\n";
        }
    }

    // Where the header and footer stand; every new section must say it again.
    std::string runningDistances() const
    {
        std::string out;
        if (m_headerTop)
            out += "\\headery" + std::to_string(Twips(*m_headerTop));
        if (m_footerBottom)
            out += "\\footery" + std::to_string(Twips(*m_footerBottom));
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
        head += "\\viewkind1\n\\sectd" + sectionFormat();
        m_section = current;
        head += "\n" + m_header + m_footer;
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
    std::string m_header;
    std::string m_footer;
    bool m_anything = false;
    bool m_headerWritten = false;
    bool m_footerWritten = false;
    std::optional<float> m_headerTop;
    std::optional<float> m_footerBottom;
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
