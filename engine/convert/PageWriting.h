#pragma once

// Writing one laid-out page in each conversion method, and the pieces of paragraph formatting
// the methods share.

#include "convert/EngineOptions.h"
#include "layout/PageLayout.h"
#include "rtf/RtfWriter.h"

#include <string>
#include <vector>

namespace velmora {

// The page of a section, in points.
struct Section final
{
    float width = 612;
    float height = 792;
    float left = 72;
    float right = 72;
    float top = 72;
    float bottom = 72;

    float textWidth() const { return width - left - right; }
    float textBottom() const { return height - bottom; }
};

// Where the flowing text stands in the word processor's pages, carried from page to page.
struct FlowPosition final
{
    int sourcePages = 0;  // PDF pages written so far
    int outputPages = 1;  // pages the text is expected to fill so far
    float used = 0;       // points of the current page's text area taken

    void newPage();
    // Text of `height` points added to pages whose text area is `pageHeight` high.
    void advance(float height, float pageHeight);
};

// One page to write.
struct PageJob final
{
    const EngineOptions& options;
    const PageContent& page;
    const PageLayout& layout;
    const Section& section;
    std::string sectionFormat;  // says the section's page again, for a section break
    std::string anchored;       // shapes to anchor in the page's first paragraph
    bool pageBreak = false;     // the page begins with a page break
    // Set when the page before ended inside a section of columns, which this page closes;
    // a page that ends inside one leaves it open.
    bool* columnsOpen = nullptr;
};

// Tabs and spaces: every block at its place through indents, tab stops and space before,
// fitted so that the page's text fits its page.
void WriteTabbedPage(RtfWriter& writer, PageJob& job);

// Flowing text: paragraphs in reading order with the PDF's own rhythm, a page break only where
// the text runs ahead of the PDF's pages.
void WriteFlowPage(RtfWriter& writer, PageJob& job, FlowPosition& flow);

// Text boxes: every block an absolutely placed frame.
void WriteBoxedPage(RtfWriter& writer, PageJob& job);

// Paragraph formatting the methods share.
void WriteAlignment(std::string& out, const Block& block);
void WriteAlignment(std::string& out, Alignment alignment, bool rightToLeft);
void WriteTabStops(std::string& out, const Block& block, float origin);
// A drawn box around the paragraph as its border and shading; returns the room it adds
// above the text, and as much again below.
float WriteParagraphBox(std::string& out, const Block& block, RtfWriter& writer);

// Text turned by the PDF as a turned text box shape, on the page or in its paragraph.
void WriteRotatedShape(RtfWriter& writer, const Block& block, bool onPage);

// A table's rows: its left edge `left` points right of the column's edge, its columns'
// widths scaled by `widthScale` and its text's sizes by `fontScale`.
void WriteTable(RtfWriter& writer, const Table& table, const std::vector<Link>* links, float left,
                float widthScale, float fontScale);

// How tall a table stands in a word processor: each row as high as in the PDF or as its
// text needs, whichever is more.
float TableHeight(const Table& table, float widthScale, float fontScale);

// The one factor for all of a table's font sizes that keeps each line of its cells on one
// line in a word processor's wider font, never below 75 %.
float TableFontFit(const Table& table, float widthScale);

// Where a table's top stands in the PDF: its top rule, or for a table without rules the top
// of its first row's text as a word processor sets it.
float TableTop(const Table& table);

// A table as a text box shape at its place on the page.
void WriteTableShape(RtfWriter& writer, const Table& table, const std::vector<Link>* links);

// The largest size of the text, in points.
float LargestSize(const std::vector<Glyph>& glyphs);

// Room the text needs in a word processor's font, by the PDF's own advances with a margin for
// a substitute font's wider letters.
float EstimatedWidth(const std::vector<Glyph>& glyphs, float scale);

// How wide a word processor sets each glyph: in the standard faces' own widths where the text
// is written in one of the families set in them (Times New Roman, Arial, Courier New), else
// by the PDF's advance; sizes in half points, as the document states them.
class TextWidths final
{
public:
    TextWidths(const std::vector<FontFace>& faces, bool adjustFontNames);
    // Points, for the glyph's size times `scale`; for a blank, the blank of its face.
    float advance(const Glyph& glyph, float scale) const;

private:
    struct Face
    {
        int family = -1;  // a StandardFamily, or -1 when the text is not set in one
        bool bold = false;
        bool italic = false;
    };
    std::vector<Face> m_faces;
};

// The lines a word processor wraps the text to in `width` points, filling each line with as
// many words as fit, blanks at their usual width. Tabs are not wrapped at. Without `widths`
// the PDF's own advances are taken. The first line starts `firstIndent` further in.
int WrappedLines(const std::vector<Glyph>& glyphs, float width, float scale,
                 const TextWidths* widths = nullptr, float firstIndent = 0);

// The factor that lets each part of a tabbed block fit before the tab stop that follows it
// (the last one before `rightEdge`), never below 60 %.
float ShrinkTabbed(const Block& block, float rightEdge);

// The factor that lets a block's text fit a box, never below 60 %.
float ShrinkToFit(const Block& block, float boxWidth, float boxHeight);

// Single spacing in a word processor's common fonts, and how far the last baseline stands
// above a line's bottom, both in ems of the largest size.
inline constexpr float SingleSpacing = 1.15f;
inline constexpr float DescentShare = 0.22f;

}  // namespace velmora
