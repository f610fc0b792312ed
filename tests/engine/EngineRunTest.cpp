#include "EngineRunSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <zlib.h>

using namespace enginetest;
using velmora::fixtures::WritePdf;

namespace {

class EngineRun : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }

    QString path(const QString& name) const { return m_dir.filePath(name); }

    QString fixture(const std::string& name) { return WriteFixture(m_dir.path(), name); }

    // Converts with the options `edit` sets and gives the RTF, or fails the test.
    std::string convert(const std::string& name,
                        const std::function<void(OptionValues&)>& edit = {})
    {
        StoreOptions(edit);
        const QString target = path(QString::fromStdString(name) + ".out.rtf");
        const EngineResult result = RunEngine({fixture(name), target, "-C", "-H"});
        EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_TRUE(result.out.isEmpty()) << "hidden runs print nothing";
        EXPECT_TRUE(result.err.isEmpty());
        return ReadFile(target).toStdString();
    }

    // Temporary files the engine left behind.
    QStringList leftovers() const
    {
        return QDir(m_dir.path()).entryList({".~*"}, QDir::Files | QDir::Hidden);
    }

    QTemporaryDir m_dir;
};

std::size_t Count(const std::string& text, const std::string& needle)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(needle); at != std::string::npos;
         at = text.find(needle, at + 1))
        ++count;
    return count;
}

// A zlib stream that inflates to `size` bytes of blanks.
QByteArray Bomb(qint64 size)
{
    z_stream stream{};
    deflateInit(&stream, 9);
    QByteArray out;
    QByteArray blanks(1 << 20, ' ');
    QByteArray buffer(1 << 16, '\0');
    for (qint64 done = 0; done <= size; done += blanks.size()) {
        const bool last = done + blanks.size() > size;
        stream.next_in = reinterpret_cast<Bytef*>(blanks.data());
        stream.avail_in = static_cast<uInt>(last ? size - done : blanks.size());
        do {
            stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
            stream.avail_out = static_cast<uInt>(buffer.size());
            deflate(&stream, last ? Z_FINISH : Z_NO_FLUSH);
            out.append(buffer.constData(),
                       buffer.size() - static_cast<qsizetype>(stream.avail_out));
        } while (stream.avail_out == 0);
        if (last)
            break;
    }
    deflateEnd(&stream);
    return out;
}

QByteArray Stream(const QByteArray& dictionary, const QByteArray& data)
{
    return "<< " + dictionary + " /Length " + QByteArray::number(data.size()) + " >>\nstream\n" +
           data + "\nendstream";
}

const QByteArray Catalog = "<< /Type /Catalog /Pages 2 0 R >>";
const QByteArray OnePage = "<< /Type /Pages /Kids [3 0 R] /Count 1 >>";

}  // namespace

TEST_F(EngineRun, WritesRtfWhateverTheTargetsExtensionAndOnlyThen)
{
    struct Row
    {
        int method;
        const char* present;
        const char* absent;
        QString name;
    };
    const std::vector<Row> rows{
        // The first page ends in its columns, so the next begins with a section on a new page.
        {1, "\\sect\\sectd\\sbkpage", "\\posx", "article1.doc"},
        {2, "\\posx", "\\pagebb", "article2.doc"},
        // A name of the longest length a folder takes.
        {3, "\\s1\\outlinelevel0", "\\posx", QString(251, u'n') + ".doc"},
    };
    for (const Row& row : rows) {
        StoreOptions(
            [&row](OptionValues& s) { s.ConversionMethod = static_cast<qint16>(row.method); });
        const QString target = path(row.name);
        const EngineResult result = RunEngine({fixture("article"), target, "-C"});
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_TRUE(result.err.isEmpty());
        EXPECT_TRUE(result.out.contains("page 2 of 2"));
        const std::string rtf = ReadFile(target).toStdString();
        EXPECT_EQ(rtf.rfind("{\\rtf1", 0), 0u) << row.method;
        EXPECT_NE(rtf.find(row.present), std::string::npos) << row.method;
        EXPECT_EQ(rtf.find(row.absent), std::string::npos) << row.method;
        EXPECT_NE(rtf.find("Columns of the valley"), std::string::npos) << row.method;
        EXPECT_EQ(Count(rtf, "{"), Count(rtf, "}")) << row.method;
    }
    EXPECT_EQ(leftovers(), QStringList{});
}

TEST_F(EngineRun, PreviewRendersThePagesOfTheRangeAsBitmaps)
{
    const QString article = fixture("article");
    const QString huge = path("huge.pdf");
    WriteFile(huge,
              RawPdf({Catalog, OnePage,
                      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 1000000000 1000000000] >>"}));
    struct Row
    {
        QString source;
        qint16 from;
        qint16 to;
        qint16 dpi;
        int pictures;
        int width;
        int height;
        QString stem;  // the target is "<stem>.rtf", the pictures "<stem>_<n>.bmp"
    };
    const std::vector<Row> rows{{article, 0, 0, 20, 1, 170, 220, "~SV00"},
                                {article, 0, 1, 20, 2, 170, 220, "~SV01"},
                                {article, 1, 1, 72, 1, 612, 792, "~SV11"},
                                {article, 0, 0, 20, 1, 170, 220, ""},
                                {huge, 0, 0, 20, 1, 8000, 8000, "~SVhuge"}};
    for (const Row& row : rows) {
        StoreOptions([&row](OptionValues& s) {
            s.UsingPageRange = 1;
            s.ExtractToBMP = 1;
            s.PageFrom = row.from;
            s.PageTo = row.to;
            s.ZoomDpi = row.dpi;
        });
        const QString stem = m_dir.path() + u'/' + row.stem;
        const EngineResult result = RunEngine({row.source, stem + ".rtf", "-C", "-P", "-H"});
        ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
        EXPECT_FALSE(QFileInfo::exists(stem + ".rtf"));
        for (int n = 1; n <= row.pictures + 1; ++n) {
            QFile file(stem + QString("_%1.bmp").arg(n));
            if (n > row.pictures) {
                EXPECT_FALSE(file.exists()) << n;
                continue;
            }
            ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << n;
            const QByteArray bmp = file.read(54);
            ASSERT_EQ(bmp.size(), 54) << n;
            EXPECT_TRUE(bmp.startsWith("BM"));
            const auto le32 = [&bmp](int at) {
                return static_cast<qint64>(
                    static_cast<unsigned char>(bmp[at]) |
                    static_cast<unsigned char>(bmp[at + 1]) << 8 |
                    static_cast<unsigned char>(bmp[at + 2]) << 16 |
                    static_cast<uint32_t>(static_cast<unsigned char>(bmp[at + 3])) << 24);
            };
            EXPECT_EQ(le32(2), file.size());
            EXPECT_EQ(le32(18), row.width);
            EXPECT_EQ(le32(22), row.height);
        }
        QFile::remove(stem + "_1.bmp");
    }
}

TEST_F(EngineRun, PicturesBesideAConversionWhenAsked)
{
    StoreOptions([](OptionValues& s) { s.ExtractToBMP = 1; });
    const EngineResult result = RunEngine({fixture("prose"), path("both.rtf"), "-C", "-H"});
    ASSERT_EQ(result.exitCode, 0);
    EXPECT_TRUE(QFileInfo::exists(path("both.rtf")));
    EXPECT_TRUE(QFileInfo::exists(path("both_1.bmp")));
}

TEST_F(EngineRun, HonoursTheOptions)
{
    const std::string header = convert("article", [](OptionValues& s) { s.DetectHeader = 1; });
    EXPECT_NE(header.find("{\\header"), std::string::npos);
    EXPECT_NE(header.find("{\\field{\\*\\fldinst PAGE}"), std::string::npos);
    const std::string noHeader = convert("article", [](OptionValues& s) { s.DetectHeader = 0; });
    EXPECT_EQ(noHeader.find("{\\header"), std::string::npos);
    EXPECT_NE(noHeader.find("Journal of Imaginary Studies"), std::string::npos);

    const auto tabbed = [](qint16 type) {
        return [type](OptionValues& s) {
            s.ConversionMethod = 1;
            s.DocumentType = type;
        };
    };
    const std::string columns = convert("article", tabbed(2));
    // Each section of columns says its page and where the running head stands again.
    const std::size_t band = columns.find("\\sect\\sectd\\sbknone\\pgwsxn12240\\pghsxn15840");
    ASSERT_NE(band, std::string::npos);
    EXPECT_LT(columns.find("\\headery", band), columns.find("\\cols2", band));
    EXPECT_NE(columns.find("\\cols2\\colsx"), std::string::npos);
    EXPECT_EQ(Count(columns, "\\column "), 2u);  // one per page
    const std::string rows = convert("article", tabbed(1));
    EXPECT_EQ(rows.find("\\cols2"), std::string::npos);
    EXPECT_NE(rows.find("\\tab "), std::string::npos);

    const std::string jpeg = convert("pictures", [](OptionValues& s) {
        s.ImageFormat = 0;
        s.JpegQuality = 95;
    });
    const std::string rough = convert("pictures", [](OptionValues& s) {
        s.ImageFormat = 0;
        s.JpegQuality = 10;
    });
    const std::string dib = convert("pictures", [](OptionValues& s) { s.ImageFormat = 1; });
    EXPECT_EQ(Count(jpeg, "{\\pict\\jpegblip"), 2u);
    EXPECT_LT(rough.size(), jpeg.size());
    EXPECT_EQ(Count(dib, "{\\pict\\dibitmap0"), 2u);

    const std::string adjusted = convert("prose", [](OptionValues& s) { s.AdjustFontNames = 1; });
    EXPECT_NE(adjusted.find("\\froman\\fcharset0 Times New Roman;"), std::string::npos);
    EXPECT_NE(adjusted.find("\\fswiss\\fcharset0 Arial;"), std::string::npos);
    const std::string kept = convert("prose", [](OptionValues& s) { s.AdjustFontNames = 0; });
    EXPECT_NE(kept.find(" Times-Roman{\\*\\falt Times New Roman};"), std::string::npos);
    EXPECT_NE(kept.find(" Helvetica-Bold{\\*\\falt Arial};"), std::string::npos);

    const std::string secondPage = convert("article", [](OptionValues& s) {
        s.UsingPageRange = 1;
        s.PageFrom = 1;
        s.PageTo = 1;
    });
    EXPECT_EQ(secondPage.find("Columns of the valley"), std::string::npos);
    EXPECT_NE(secondPage.find("\\rtf1"), std::string::npos);

    const auto flow = [](qint16 merge) {
        return [merge](OptionValues& s) {
            s.ConversionMethod = 3;
            s.MergeParagraph = merge;
        };
    };
    const std::string merged = convert("prose", flow(1));
    const std::string lines = convert("prose", flow(0));
    EXPECT_LT(Count(merged, "\\par\n"), Count(lines, "\\par\n"));
    EXPECT_NE(merged.find("example of a broken"), std::string::npos);
    EXPECT_NE(lines.find("exam-"), std::string::npos);

    const std::string pleading = convert("pleading", [](OptionValues& s) {
        s.ConversionMethod = 3;
        s.DocumentType = 3;
    });
    EXPECT_NE(pleading.find("\\sl480\\slmult1"), std::string::npos);
    EXPECT_EQ(pleading.find(" 17}"), std::string::npos);
    const std::string plain = convert("pleading", [](OptionValues& s) {
        s.ConversionMethod = 3;
        s.DocumentType = 1;
    });
    EXPECT_NE(plain.find("17"), std::string::npos);
}

TEST_F(EngineRun, KeepsLinksAndJapaneseText)
{
    const std::string links = convert("links");
    EXPECT_NE(links.find("HYPERLINK \"https://example.com/guide\""), std::string::npos);
    EXPECT_NE(links.find("HYPERLINK \"mailto:office@example.com\""), std::string::npos);

    const std::string japanese = convert("japanese");
    EXPECT_NE(japanese.find("\\u26085?\\u26412?\\u-30050?"), std::string::npos);  // 日本語
    EXPECT_NE(japanese.find("\\fcharset128"), std::string::npos);
}

TEST_F(EngineRun, TurnsRotatedTextIntoShapesOnlyWithWordArt)
{
    velmora::fixtures::PagePlan page;
    page.texts.push_back(
        {72, 700, 12, "Ordinary text of the page", velmora::fixtures::FontId::Times});
    page.texts.push_back({300, 300, 30, "DRAFT", velmora::fixtures::FontId::HelveticaBold, 45});
    const QString pdf = path("rotated.pdf");
    WritePdf(pdf.toStdString(), {page});
    for (qint16 wordArt : {0, 1}) {
        StoreOptions([wordArt](OptionValues& s) { s.WordArt = wordArt; });
        const QString target = path(QString("rotated%1.rtf").arg(wordArt));
        ASSERT_EQ(RunEngine({pdf, target, "-C", "-H"}).exitCode, 0);
        const std::string rtf = ReadFile(target).toStdString();
        EXPECT_NE(rtf.find("DRAFT"), std::string::npos);
        EXPECT_EQ(rtf.find("{\\sp{\\sn rotation}{\\sv -2949120}}") != std::string::npos,
                  wordArt == 1)
            << rtf;
    }
}

TEST_F(EngineRun, OpensProtectedFilesWithTheStoredPasswordOnly)
{
    struct Row
    {
        const char* password;
        int exitCode;
    };
    for (const Row& row : std::vector<Row>{{"", 3}, {"wrong", 3}, {"secret", 0}}) {
        StoreOptions([&row](OptionValues& s) {
            s.Passwords = QString::fromUtf8(row.password);
            s.PasswordLen =
                static_cast<qint16>(s.Passwords.size() + (s.Passwords.isEmpty() ? 0 : 1));
            s.PasswordSeparator = 44;
        });
        const QString target = path(QString("locked-%1.rtf").arg(row.password));
        const EngineResult result = RunEngine({fixture("locked"), target, "-C", "-H"});
        EXPECT_EQ(result.exitCode, row.exitCode) << row.password;
        EXPECT_EQ(QFileInfo::exists(target), row.exitCode == 0) << row.password;
        if (row.exitCode != 0) {
            EXPECT_TRUE(result.err.contains("password")) << result.err.toStdString();
        }
    }
}

TEST_F(EngineRun, BadInputEndsInTimeWithAReasonAndLeavesTheOldTarget)
{
    const QByteArray prose = ReadFile(fixture("prose"));
    const QByteArray page =
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 200 200] /Contents 4 0 R >>";
    enum Outcome { Fails, Either, Converts };
    struct Row
    {
        const char* name;
        QByteArray bytes;
        Outcome outcome;
        // The engine's budget: a minute, a second a page, 20 s more for a page it recognises.
        int budgetSeconds = 61;
    };
    QByteArray garbage(8192, '\0');
    for (int i = 0; i < garbage.size(); ++i)
        garbage[i] = static_cast<char>((i * 7919) % 251);
    const std::vector<Row> rows{
        {"empty", QByteArray(), Fails},
        {"garbage", garbage, Fails},
        {"truncated", prose.left(300), Fails},
        {"cut in the middle", prose.left(prose.size() / 2), Either},
        {"cyclic page tree",
         RawPdf({Catalog, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
                 "<< /Type /Pages /Kids [2 0 R] /Count 1 /Parent 2 0 R >>"}),
         Fails},
        {"content bomb",
         RawPdf({Catalog, OnePage, page, Stream("/Filter /FlateDecode", Bomb(qint64{256} << 20))}),
         Either},
        // Drawn at the size it shows at, it is decoded subsampled within the memory ceiling;
        // covering its page, it is taken for a scan and recognised.
        {"huge picture",
         RawPdf({Catalog, OnePage,
                 "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 14400 14400] /Contents 4 0 R "
                 "/Resources << /XObject << /Im0 5 0 R >> >> >>",
                 Stream("", "q 14400 0 0 14400 0 0 cm /Im0 Do Q"),
                 Stream("/Type /XObject /Subtype /Image /Width 30000 /Height 30000 /ColorSpace "
                        "/DeviceRGB "
                        "/BitsPerComponent 8 /Filter /FlateDecode",
                        Bomb(qint64{64} << 20))}),
         Either, 81},
        {"self-referencing update", SelfChainedPdf(), Converts},
    };
    for (const Row& row : rows) {
        const QString source = path(QString("bad-%1.pdf").arg(row.name));
        WriteFile(source, row.bytes);
        const QString target = path("kept.rtf");
        WriteFile(target, "older result");
        StoreOptions();
        const EngineResult result = RunEngine({source, target, "-C", "-H"}, 120000);
        ASSERT_TRUE(result.finished) << row.name;
        EXPECT_FALSE(result.crashed) << row.name;
        // A stopped page ends the run within a few seconds of the budget.
        EXPECT_LT(result.milliseconds, (row.budgetSeconds + 5) * 1000) << row.name;
        if (row.outcome == Converts) {
            EXPECT_EQ(result.exitCode, 0) << row.name << ": " << result.err.toStdString();
            EXPECT_NE(ReadFile(target), "older result") << row.name;
        } else if (result.exitCode != 0 || row.outcome == Fails) {
            EXPECT_NE(result.exitCode, 0) << row.name;
            EXPECT_EQ(ReadFile(target), "older result") << row.name;
            EXPECT_EQ(result.err.count('\n'), 1) << row.name << ": " << result.err.toStdString();
            EXPECT_TRUE(result.err.startsWith("VelmoraConverter: ")) << row.name;
        }
        EXPECT_EQ(leftovers(), QStringList{}) << row.name;
    }
}

TEST_F(EngineRun, NeverRunsScriptsOrLaunchesPrograms)
{
    const QString marker = path("launched");
    const QByteArray launch = "<< /S /Launch /F (/usr/bin/touch) /Win << /F (/usr/bin/touch) /P (" +
                              marker.toUtf8() + ") >> >>";
    const QByteArray pdf = RawPdf({
        "<< /Type /Catalog /Pages 2 0 R /OpenAction << /S /JavaScript /JS (app.alert\\(1\\)) >> "
        "/Names << /JavaScript << /Names [(a) << /S /JavaScript /JS (app.alert\\(2\\)) >>] >> >> "
        ">>",
        OnePage,
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R /Annots [5 0 R] "
        "/AA << /O " +
            launch + " >> /Resources << /Font << /F1 6 0 R >> >> >>",
        Stream("", "BT /F1 12 Tf 20 250 Td (Scripted page) Tj ET"),
        "<< /Type /Annot /Subtype /Link /Rect [0 0 300 300] /A " + launch + " >>",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
    });
    const QString source = path("scripted.pdf");
    WriteFile(source, pdf);
    StoreOptions();
    const EngineResult result = RunEngine({source, path("scripted.rtf"), "-C", "-H"});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    const std::string rtf = ReadFile(path("scripted.rtf")).toStdString();
    EXPECT_NE(rtf.find("Scripted page"), std::string::npos);
    EXPECT_EQ(rtf.find("HYPERLINK"), std::string::npos);
    EXPECT_FALSE(QFileInfo::exists(marker));
}

TEST_F(EngineRun, RefusesCommandLinesItCannotRun)
{
    for (const QStringList& args : {QStringList{}, QStringList{fixture("prose")},
                                    QStringList{fixture("prose"), path("x.rtf")},
                                    QStringList{fixture("prose"), path("x.rtf"), "-C", "-Q"}}) {
        const EngineResult result = RunEngine(args);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.err.count('\n'), 1);
    }
    EXPECT_FALSE(QFileInfo::exists(path("x.rtf")));
    StoreOptions();
    const EngineResult missing = RunEngine({path("missing.pdf"), path("x.rtf"), "-C"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_TRUE(missing.err.contains("missing.pdf"));
}
