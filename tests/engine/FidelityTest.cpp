// The engine's documents as a word processor reads them: every generated PDF converted with
// each method, opened by LibreOffice headless, and its words compared with the known text.

#include "EngineRunSupport.h"

#include "pdf/PdfSession.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

using namespace enginetest;

namespace {

QStringList Words(const QString& text)
{
    QStringList words;
    for (QString word :
         text.split(QRegularExpression(QStringLiteral("\\s+")), Qt::SkipEmptyParts)) {
        word = word.toLower();
        word.remove(QRegularExpression(QStringLiteral("[\\p{P}\\p{S}\\x{feff}]")));
        if (!word.isEmpty())
            words.push_back(word);
    }
    return words;
}

// The share of the expected words found in the output, each counted as often as it occurs.
double Recall(const QStringList& expected, const QStringList& actual)
{
    std::map<QString, int> available;
    for (const QString& word : actual)
        ++available[word];
    int found = 0;
    for (const QString& word : expected) {
        if (available[word] > 0) {
            --available[word];
            ++found;
        }
    }
    return expected.isEmpty() ? 1
                              : static_cast<double>(found) / static_cast<double>(expected.size());
}

// 1 - the edit distance over words, divided by the longer sequence.
double OrderMatch(const QStringList& expected, const QStringList& actual)
{
    const auto n = static_cast<std::size_t>(expected.size());
    const auto m = static_cast<std::size_t>(actual.size());
    std::vector<std::size_t> previous(m + 1);
    std::vector<std::size_t> current(m + 1);
    for (std::size_t j = 0; j <= m; ++j)
        previous[j] = j;
    for (std::size_t i = 1; i <= n; ++i) {
        current[0] = i;
        for (std::size_t j = 1; j <= m; ++j) {
            const std::size_t substitution =
                previous[j - 1] +
                (expected[static_cast<qsizetype>(i - 1)] == actual[static_cast<qsizetype>(j - 1)]
                     ? 0
                     : 1);
            current[j] = std::min({previous[j] + 1, current[j - 1] + 1, substitution});
        }
        std::swap(previous, current);
    }
    const std::size_t longer = std::max<std::size_t>({n, m, 1});
    return 1.0 - static_cast<double>(previous[m]) / static_cast<double>(longer);
}

bool RunOffice(const QString& profile, const QString& format, const QString& outDir,
               const QStringList& files)
{
    QProcess office;
    QStringList args{"-env:UserInstallation=file://" + profile,
                     "--headless",
                     "--norestore",
                     "--convert-to",
                     format,
                     "--outdir",
                     outDir};
    args += files;
    office.start(QStandardPaths::findExecutable("soffice"), args);
    return office.waitForStarted(30000) && office.waitForFinished(600000) && office.exitCode() == 0;
}

// The text of a flat word-processor document's body, frames included.
QString FlatText(const QString& path)
{
    QString xml = QString::fromUtf8(ReadFile(path));
    xml.remove(QRegularExpression("<office:binary-data>[^<]*</office:binary-data>"));
    xml.remove(QRegularExpression("<office:(font-face-decls|styles|automatic-styles|master-styles|"
                                  "meta|settings)>.*</office:\\1>",
                                  QRegularExpression::DotMatchesEverythingOption));
    xml.replace(QRegularExpression("<[^>]*>"), " ");
    return xml;
}

std::size_t Occurrences(const std::string& text, const std::string& piece)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
        ++count;
    return count;
}

struct Case
{
    std::string fixture;
    int method;
    int documentType;
};

}  // namespace

TEST(Fidelity, WordsPicturesLinksAndOrderSurviveAWordProcessor)
{
    if (QStandardPaths::findExecutable("soffice").isEmpty() ||
        QStandardPaths::findExecutable("unzip").isEmpty())
        GTEST_SKIP() << "LibreOffice (soffice) and unzip are needed";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());

    std::map<std::string, velmora::fixtures::Fixture> fixtures;
    for (auto& fixture : velmora::fixtures::StandardFixtures()) {
        velmora::fixtures::WritePdf(
            dir.filePath(QString::fromStdString(fixture.name) + ".pdf").toStdString(),
            fixture.pages, fixture.password);
        fixtures[fixture.name] = fixture;
    }

    std::vector<Case> cases;
    for (const auto& [name, fixture] : fixtures) {
        for (int method : {1, 2, 3})
            cases.push_back({name, method, name == "pleading" ? 3 : 2});
    }
    QStringList textFiles;
    QStringList odtFiles;
    for (const Case& c : cases) {
        const auto& fixture = fixtures[c.fixture];
        StoreOptions([&](OptionValues& s) {
            s.ConversionMethod = static_cast<qint16>(c.method);
            s.DocumentType = static_cast<qint16>(c.documentType);
            s.Passwords = QString::fromStdString(fixture.password);
            s.PasswordLen =
                static_cast<qint16>(fixture.password.empty() ? 0 : fixture.password.size() + 1);
            s.PasswordSeparator = 44;
        });
        const QString rtf =
            dir.filePath(QString("%1-%2.rtf").arg(QString::fromStdString(c.fixture)).arg(c.method));
        const EngineResult result =
            RunEngine({dir.filePath(QString::fromStdString(c.fixture) + ".pdf"), rtf, "-C", "-H"});
        ASSERT_EQ(result.exitCode, 0)
            << c.fixture << " " << c.method << ": " << result.err.toStdString();
        const std::string body = ReadFile(rtf).toStdString();
        EXPECT_EQ(Occurrences(body, "{\\pict"), static_cast<std::size_t>(fixture.images))
            << c.fixture << " " << c.method;
        // Columns lined up over six rows are a table of six rows of four cells.
        if (c.fixture == "table" && c.method != 2) {
            EXPECT_EQ(Occurrences(body, "\\row"), 6u) << c.method;
            EXPECT_EQ(Occurrences(body, "\\cellx"), 24u) << c.method;
        }
        // Frames don't reach LibreOffice's plain-text export, so method 2 is read from its
        // own flat file format.
        (c.method == 2 ? odtFiles : textFiles).push_back(rtf);
    }
    odtFiles += dir.filePath("pictures-3.rtf");
    odtFiles += dir.filePath("links-3.rtf");
    const QString profile = dir.filePath("office-profile");
    const QString out = dir.filePath("office");
    ASSERT_TRUE(RunOffice(profile, "txt:Text (encoded):UTF8", out, textFiles));
    ASSERT_TRUE(RunOffice(profile, "fodt", out, odtFiles));

    for (const Case& c : cases) {
        const auto& fixture = fixtures[c.fixture];
        const QString stem =
            QString("%1/%2-%3").arg(out, QString::fromStdString(c.fixture)).arg(c.method);
        const QString text =
            c.method == 2 ? FlatText(stem + ".fodt") : QString::fromUtf8(ReadFile(stem + ".txt"));
        const QStringList expected = Words(QString::fromStdString(fixture.bodyText));
        const QStringList actual = Words(text);
        const std::string label = c.fixture + " with method " + std::to_string(c.method);
        const double recall = Recall(expected, actual);
        const double order = OrderMatch(expected, actual);
        std::printf("%-28s recall %.4f  order %.4f\n", label.c_str(), recall, order);
        EXPECT_GE(recall, 0.99) << label << "\n" << text.left(2000).toStdString();
        if (c.fixture == "article" && c.method != 2) {
            EXPECT_GE(order, 0.95) << label;
        }
        if (c.fixture == "japanese") {
            EXPECT_TRUE(text.contains(QString::fromUtf8("東京都の天気は晴れ"))) << label;
        }
        if (c.fixture == "pleading" && c.method != 2) {
            for (const QString& word : actual)
                EXPECT_FALSE(QRegularExpression("^\\d+$").match(word).hasMatch())
                    << label << ": " << word.toStdString();
        }
    }

    const QString pictures = QString::fromUtf8(ReadFile(out + "/pictures-3.fodt"));
    EXPECT_EQ(pictures.count("<draw:image"), 2);
    const QString links = QString::fromUtf8(ReadFile(out + "/links-3.fodt"));
    EXPECT_TRUE(links.contains("xlink:href=\"https://example.com/guide\""));
    EXPECT_TRUE(links.contains("xlink:href=\"mailto:office@example.com\""));
}

TEST(Fidelity, PagesKeepTheirSizesDrawingsAndKindsOfFont)
{
    if (QStandardPaths::findExecutable("soffice").isEmpty())
        GTEST_SKIP() << "LibreOffice (soffice) is needed";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    std::map<std::string, velmora::fixtures::Fixture> fixtures;
    for (auto& fixture : velmora::fixtures::LookFixtures())
        fixtures[fixture.name] = fixture;
    const auto convert = [&dir, &fixtures](const std::string& name, int method) {
        const QString pdf = dir.filePath(QString::fromStdString(name) + ".pdf");
        velmora::fixtures::WritePdf(pdf.toStdString(), fixtures[name].pages);
        StoreOptions(
            [method](OptionValues& s) { s.ConversionMethod = static_cast<qint16>(method); });
        const QString rtf =
            dir.filePath(QString("%1-%2.rtf").arg(QString::fromStdString(name)).arg(method));
        const EngineResult result = RunEngine({pdf, rtf, "-C", "-H"});
        EXPECT_EQ(result.exitCode, 0) << name << " " << method << ": " << result.err.toStdString();
        return rtf;
    };

    // Every page keeps its size and orientation, each in a section that says so.
    QStringList printed;
    for (int method : {1, 2, 3}) {
        const QString rtf = convert("sizes", method);
        const std::string body = ReadFile(rtf).toStdString();
        for (const char* section :
             {"\\pgwsxn12240\\pghsxn15840", "\\pgwsxn11900\\pghsxn16840",
              "\\pgwsxn16840\\pghsxn11900\\lndscpsxn", "\\pgwsxn8400\\pghsxn11900"})
            EXPECT_NE(body.find(section), std::string::npos) << method << " " << section;
        // The report's line at every foot is its running foot; titles that differ by a word
        // are no running head.
        EXPECT_NE(body.find("{\\footer"), std::string::npos) << method;
        EXPECT_EQ(body.find("{\\header"), std::string::npos) << method;
        printed += rtf;
    }
    // A ruled table is a table in every method, its rules cell borders and its fills cell
    // shading (the dark header and three grey rows); with text boxes it sits in one box.
    // Other drawings are shapes at their place; fonts carry their kind.
    for (int method : {1, 2, 3}) {
        const std::string rtf = ReadFile(convert("drawings", method)).toStdString();
        EXPECT_EQ(Occurrences(rtf, "\\row"), 6u) << method;
        EXPECT_EQ(Occurrences(rtf, "\\cellx"), 24u) << method;
        EXPECT_EQ(Occurrences(rtf, "\\clcbpat"), 16u) << method;
        EXPECT_EQ(Occurrences(rtf, "\\clbrdrt\\brdrs"), 24u) << method;
        EXPECT_NE(rtf.find("\\red51\\green77\\blue128;"), std::string::npos) << method;
        EXPECT_EQ(rtf.find("{\\shptxt \\trowd") != std::string::npos, method == 2) << method;
        EXPECT_NE(rtf.find("{\\sp{\\sn shapeType}{\\sv 20}}"), std::string::npos) << method;
        // A drawn underline is the run's underline; a drawn box the paragraph's border.
        EXPECT_NE(rtf.find("\\ul "), std::string::npos) << method;
        EXPECT_EQ(rtf.find("\\box\\brdrs") != std::string::npos, method != 2) << method;
        EXPECT_NE(rtf.find("\\fswiss\\fcharset0 Arial;"), std::string::npos);
        EXPECT_NE(rtf.find("\\froman\\fcharset0 Times New Roman;"), std::string::npos);
    }
    // Pictures keep their transparency (the round fade, the turned one's corners, the ring).
    const std::string transformed = ReadFile(convert("transforms", 1)).toStdString();
    EXPECT_EQ(Occurrences(transformed, "{\\pict"), 6u);
    EXPECT_EQ(Occurrences(transformed, "\\pngblip"), 3u);
    const std::string code = ReadFile(convert("footnotes", 3)).toStdString();
    EXPECT_NE(code.find("\\fmodern\\fprq1\\fcharset0 Courier New;"), std::string::npos);
    // The footnote mark stands raised, H2O's 2 lowered, and "L E T T E R" is one spaced word.
    EXPECT_NE(code.find("\\up8 1"), std::string::npos);
    EXPECT_NE(code.find("\\dn4 2"), std::string::npos);
    EXPECT_NE(code.find("\\expndtw120 LETTE}"), std::string::npos);
    // A scan's hidden text is the text, the scan one picture in front of it.
    const std::string scan = ReadFile(convert("scan", 1)).toStdString();
    EXPECT_EQ(Occurrences(scan, "{\\pict"), 1u);
    EXPECT_NE(scan.find("\\shpfblwtxt0\\shpz0{\\sp{\\sn shapeType}{\\sv 75}}"), std::string::npos);
    printed += dir.filePath("drawings-2.rtf");

    // Hebrew, stored left to right on the page, reads from right to left in the word processor.
    const QStringList hebrew{convert("hebrew", 1), convert("hebrew", 3)};
    for (const QString& rtf : hebrew)
        EXPECT_NE(ReadFile(rtf).toStdString().find("\\rtlpar\\qr"), std::string::npos);

    const QString out = dir.filePath("office");
    ASSERT_TRUE(RunOffice(dir.filePath("office-profile"), "pdf", out, printed));
    ASSERT_TRUE(RunOffice(dir.filePath("office-profile"), "txt:Text (encoded):UTF8", out, hebrew));
    for (int method : {1, 3}) {
        const QString text =
            QString::fromUtf8(ReadFile(QString("%1/hebrew-%2.txt").arg(out).arg(method)));
        EXPECT_TRUE(text.contains(QString::fromUtf8("שלום עולם וברוכים הבאים"))) << method;
    }
    struct Size
    {
        float width;
        float height;
    };
    const std::vector<Size> sizes{{612, 792}, {595, 842}, {842, 595}, {420, 595}};
    for (int method : {1, 2, 3}) {
        velmora::PdfSession pdf;
        ASSERT_EQ(pdf.open(QString("%1/sizes-%2.pdf").arg(out).arg(method).toStdString(), {}),
                  velmora::OpenStatus::Opened);
        ASSERT_EQ(pdf.pageCount(), 4) << method;
        velmora::FontTable fonts;
        for (int page = 0; page < 4; ++page) {
            const velmora::PageContent content = pdf.readPage(page, {}, fonts);
            EXPECT_NEAR(content.width, sizes[static_cast<std::size_t>(page)].width, 2) << method;
            EXPECT_NEAR(content.height, sizes[static_cast<std::size_t>(page)].height, 2) << method;
        }
    }
    // The table's dark header shows in the word processor, behind its white words.
    velmora::PdfSession pdf;
    ASSERT_EQ(pdf.open((out + "/drawings-2.pdf").toStdString(), {}), velmora::OpenStatus::Opened);
    const std::vector<uint8_t> bmp = pdf.renderBmp(0, 72);
    const auto pixel = [&bmp](int x, int y) {
        const int width = 612;
        const int row = (width * 3 + 3) & ~3;
        const std::size_t at = 54 + static_cast<std::size_t>((792 - 1 - y) * row + x * 3);
        return std::array<int, 3>{bmp[at + 2], bmp[at + 1], bmp[at]};  // stored as BGR
    };
    const std::array<int, 3> header = pixel(180, 792 - 690);
    EXPECT_NEAR(header[0], 51, 12);
    EXPECT_NEAR(header[1], 77, 12);
    EXPECT_NEAR(header[2], 128, 12);
}
