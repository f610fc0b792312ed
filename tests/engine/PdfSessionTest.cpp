#include "EngineRunSupport.h"

#include "pdf/PdfSession.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

using namespace enginetest;
using velmora::OpenStatus;
using velmora::PdfError;
using velmora::PdfSession;

TEST(PdfSession, StopsReadingOnceAborted)
{
    QTemporaryDir dir;
    PdfSession pdf;
    ASSERT_EQ(pdf.open(WriteFixture(dir.path(), "article").toStdString(), {}), OpenStatus::Opened);
    velmora::FontTable fonts;
    EXPECT_FALSE(pdf.readPage(0, {}, fonts).lines.empty());
    pdf.abortWork();
    EXPECT_THROW(pdf.readPage(1, {}, fonts), PdfError);
    EXPECT_THROW(pdf.renderBmp(0, 20), PdfError);
}

TEST(PdfSession, StaysUnderItsMemoryCeiling)
{
    QTemporaryDir dir;
    const std::string japanese = WriteFixture(dir.path(), "japanese").toStdString();
    // The embedded font alone is larger than this ceiling: MuPDF either gives up or falls
    // back to a font of its own, but never goes past the ceiling.
    PdfSession small(std::size_t{2} << 20);
    velmora::FontTable fonts;
    if (small.open(japanese, {}) == OpenStatus::Opened) {
        try {
            small.readPage(0, {}, fonts);
        } catch (const PdfError&) {
        }
    }
    EXPECT_LE(small.peakMemory(), std::size_t{2} << 20);

    PdfSession roomy;
    ASSERT_EQ(roomy.open(japanese, {}), OpenStatus::Opened);
    EXPECT_FALSE(roomy.readPage(0, {}, fonts).lines.empty());
    EXPECT_GT(roomy.peakMemory(), std::size_t{2} << 20);
}

TEST(PdfSession, OpensFromMemoryAndTriesEachPassword)
{
    QTemporaryDir dir;
    const QByteArray locked = ReadFile(WriteFixture(dir.path(), "locked"));
    const auto* bytes = reinterpret_cast<const uint8_t*>(locked.constData());
    const auto size = static_cast<std::size_t>(locked.size());
    struct Row
    {
        std::vector<std::string> passwords;
        OpenStatus expected;
    };
    const std::vector<Row> rows{{{}, OpenStatus::NeedsPassword},
                                {{"nope", "wrong"}, OpenStatus::NeedsPassword},
                                {{"nope", "secret"}, OpenStatus::Opened},
                                {{"secret-owner"}, OpenStatus::Opened}};
    for (const Row& row : rows) {
        PdfSession pdf;
        EXPECT_EQ(pdf.openMemory(bytes, size, row.passwords), row.expected) << row.passwords.size();
    }
    PdfSession garbage;
    const uint8_t junk[] = "%PDF-1.4 nothing else";
    EXPECT_EQ(garbage.openMemory(junk, sizeof junk, {}), OpenStatus::Failed);
    EXPECT_FALSE(garbage.lastError().empty());
    EXPECT_THROW(garbage.pageCount(), PdfError);
}

TEST(PagePictureSize, KeepsTheAspectWithinThePixelCeiling)
{
    struct Row
    {
        float width;
        float height;
        int dpi;
        int pixelWidth;
        int pixelHeight;
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<Row> rows{
        {612, 792, 20, 170, 220},
        {612, 792, 72, 612, 792},
        {612, 792, 1200, 7032, 9101},
        {1e9f, 1e9f, 20, 8000, 8000},
        {1e9f, 1.0f, 20, 32767, 1},
        {14400, 100, 1200, 32767, 228},
        {0, 0, 96, 1, 1},
        {nan, 792, 72, 1, 792},
    };
    for (const Row& row : rows) {
        const velmora::PictureSize size = velmora::PagePictureSize(row.width, row.height, row.dpi);
        EXPECT_EQ(size.width, row.pixelWidth) << row.width << "x" << row.height << "@" << row.dpi;
        EXPECT_EQ(size.height, row.pixelHeight) << row.width << "x" << row.height << "@" << row.dpi;
        EXPECT_LE(double(size.width) * size.height, velmora::MaxPicturePixels);
    }
}
