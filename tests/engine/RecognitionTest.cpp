// Scanned pages: which pages count as scans, which language data is used, and a two-page
// scan converted by the engine into words that read as the original did.

#include "EngineRunSupport.h"
#include "ScanFixtures.h"
#include "TestPaths.h"

#include "ocr/OcrLanguages.h"
#include "ocr/ScanDetection.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

using namespace enginetest;

namespace {

velmora::TextLine Text(const std::u32string& text, float x0, float y0)
{
    velmora::TextLine line;
    for (char32_t c : text) {
        line.glyphs.push_back(velmora::Glyph{c, {x0, y0, x0 + 6, y0 + 12}});
        x0 += 6;
    }
    return line;
}

velmora::Picture Shown(float x0, float y0, float x1, float y1)
{
    velmora::Picture picture;
    picture.box = {x0, y0, x1, y1};
    return picture;
}

// The words of an RTF document's body: control words, pictures and tables left out.
QStringList RtfWords(const std::string& rtf)
{
    QString text;
    int skipDepth = 0;
    int depth = 0;
    for (std::size_t i = 0; i < rtf.size(); ++i) {
        const char c = rtf[i];
        if (c == '{') {
            ++depth;
            for (const char* skipped :
                 {"{\\*", "{\\pict", "{\\fonttbl", "{\\colortbl", "{\\stylesheet", "{\\shp"}) {
                if (!skipDepth && rtf.compare(i, std::strlen(skipped), skipped) == 0)
                    skipDepth = depth;
            }
        } else if (c == '}') {
            if (skipDepth == depth)
                skipDepth = 0;
            --depth;
        } else if (c == '\\' && i + 1 < rtf.size() && std::isalpha(rtf[i + 1])) {
            std::size_t end = i + 1;
            while (end < rtf.size() && (std::isalnum(rtf[end]) || rtf[end] == '-'))
                ++end;
            if (end < rtf.size() && rtf[end] == ' ')
                ++end;
            if (!skipDepth)
                text += ' ';
            i = end - 1;
        } else if (!skipDepth && c != '\r' && c != '\n') {
            text += QChar(c);
        }
    }
    QStringList words;
    for (QString word : text.toLower().split(' ', Qt::SkipEmptyParts)) {
        word.remove(QRegularExpression(QStringLiteral("[\\p{P}\\p{S}]")));
        if (!word.isEmpty())
            words.push_back(word);
    }
    return words;
}

// The share of `expected`, each counted as often as it occurs, that `actual` holds.
double Recall(const QStringList& expected, const QStringList& actual)
{
    std::map<QString, int> available;
    for (const QString& item : actual)
        ++available[item];
    int found = 0;
    for (const QString& item : expected)
        found += available[item]-- > 0;
    return expected.isEmpty() ? 1
                              : static_cast<double>(found) / static_cast<double>(expected.size());
}

QStringList Pairs(const QStringList& words)
{
    QStringList pairs;
    for (qsizetype i = 1; i < words.size(); ++i)
        pairs.push_back(words[i - 1] + ' ' + words[i]);
    return pairs;
}

}  // namespace

TEST(Recognition, OnlyPagesWithoutTextUnderPicturesAreScans)
{
    struct Row
    {
        const char* name;
        std::vector<velmora::TextLine> lines;
        std::vector<velmora::Picture> pictures;
        bool scanned;
    };
    const std::vector<Row> rows{
        {"one picture over the page", {}, {Shown(0, 0, 612, 792)}, true},
        {"blanks only", {Text(U"  \u3000 ", 72, 72)}, {Shown(0, 0, 612, 792)}, true},
        {"strips that cover it together",
         {},
         {Shown(0, 0, 612, 300), Shown(0, 300, 612, 600), Shown(0, 600, 612, 792)},
         true},
        {"invisible text of earlier recognition",
         {Text(U"River", 72, 72)},
         {Shown(0, 0, 612, 792)},
         false},
        {"a photograph on a third of the page", {}, {Shown(0, 0, 612, 264)}, false},
        {"overlapping pictures under half of it",
         {},
         {Shown(0, 0, 400, 500), Shown(100, 100, 400, 500)},
         false},
        {"no picture at all", {}, {}, false},
    };
    for (const Row& row : rows) {
        velmora::PageContent page;
        page.lines = row.lines;
        page.pictures = row.pictures;
        EXPECT_EQ(velmora::IsScannedPage(page), row.scanned) << row.name;
    }
}

TEST(Recognition, EnglishAndTheInterfaceLanguageFromTheInstalledData)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString data = dir.filePath("tessdata");
    ASSERT_TRUE(QDir().mkpath(data));
    std::ofstream((data + "/eng.traineddata").toStdString()) << "model";
    struct Row
    {
        std::map<std::string, std::string> environment;
        std::vector<std::string> languages;
        std::vector<std::string> missing;
    };
    // TESSDATA_PREFIX may name the data folder or the folder above it.
    const std::string prefix = data.toStdString();
    const std::string parent = dir.path().toStdString();
    const std::vector<Row> rows{
        {{{"TESSDATA_PREFIX", prefix}, {"LANG", "en_US.UTF-8"}}, {"eng"}, {}},
        {{{"TESSDATA_PREFIX", parent}, {"LANG", "ja_JP.UTF-8"}}, {"eng"}, {"jpn"}},
        {{{"TESSDATA_PREFIX", prefix}, {"LANG", "en_US.UTF-8"}, {"LC_MESSAGES", "ja_JP"}},
         {"eng"},
         {"jpn"}},
        {{{"TESSDATA_PREFIX", prefix}, {"LC_ALL", "C"}, {"LANG", "ja_JP.UTF-8"}}, {"eng"}, {}},
    };
    for (const Row& row : rows) {
        const auto choice = velmora::ChooseLanguages([&row](const char* name) -> const char* {
            const auto it = row.environment.find(name);
            return it == row.environment.end() ? nullptr : it->second.c_str();
        });
        EXPECT_EQ(choice.dataPath, prefix);
        EXPECT_EQ(choice.languages, row.languages);
        EXPECT_EQ(choice.missing, row.missing);
        // A missing language is said, in one line naming its package, and is no failure.
        const std::string notice = velmora::MissingLanguagesNotice(choice);
        EXPECT_EQ(notice.find("tesseract-ocr-jpn") != std::string::npos, !row.missing.empty());
        EXPECT_EQ(notice.find('\n'), std::string::npos);
    }
}

TEST(Recognition, ATwoPageScanReadsAsItsSource)
{
    const auto languages = velmora::ChooseLanguages(std::getenv);
    if (languages.languages.empty())
        GTEST_SKIP() << "no text recognition data is installed (tesseract-ocr-eng)";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // Two columns on two pages, scanned at 200 dpi, turned half a degree, with dust.
    const auto scan =
        velmora::fixtures::Scanned(StandardFixture("article"), {200, -0.5f, false, false, 3});
    const QString pdf = dir.filePath("scan.pdf");
    velmora::fixtures::WritePdf(pdf.toStdString(), scan.pages);

    StoreOptions([](OptionValues& s) { s.ConversionMethod = 3; });
    const QString rtf = dir.filePath("scan.rtf");
    const EngineResult result = RunEngine({pdf, rtf, "-C"}, 120000);
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, "page 1 of 2\npage 2 of 2\n");
    EXPECT_TRUE(result.err.isEmpty()) << result.err.toStdString();
    const std::string body = ReadFile(rtf).toStdString();
    const QStringList expected =
        QString::fromStdString(scan.bodyText).toLower().split(' ', Qt::SkipEmptyParts);
    const QStringList actual = RtfWords(body);
    EXPECT_GE(Recall(expected, actual), 0.97) << body.substr(0, 3000);
    // Column by column, as the source reads: the word pairs come back too.
    EXPECT_GE(Recall(Pairs(expected), Pairs(actual)), 0.9);
    // Every word was read with confidence, so the scan is not kept as well.
    EXPECT_EQ(body.find("{\\pict"), std::string::npos);

    // A preview of a scan still draws its page, and writes no document.
    StoreOptions([](OptionValues& s) { s.ZoomDpi = 20; });
    const EngineResult preview = RunEngine({pdf, dir.filePath("p.rtf"), "-C", "-P", "-H"});
    EXPECT_EQ(preview.exitCode, 0) << preview.err.toStdString();
    EXPECT_TRUE(QFileInfo::exists(dir.filePath("p_1.bmp")));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("p.rtf")));
}

TEST(Recognition, AnEngineWithoutItsRecognitionModuleKeepsTheScanAndSaysWhy)
{
    if (velmora::ChooseLanguages(std::getenv).languages.empty())
        GTEST_SKIP() << "no text recognition data is installed (tesseract-ocr-eng)";
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    // The engine alone in a folder, as an installation that lost its module would have it.
    const QString engine = dir.filePath("VelmoraConverter");
    ASSERT_TRUE(QFile::copy(QStringLiteral(VELMORA_APP_DIR "/VelmoraConverter"), engine));
    const auto scan =
        velmora::fixtures::Scanned(StandardFixture("prose"), {100, 0, false, false, 1});
    const QString pdf = dir.filePath("scan.pdf");
    velmora::fixtures::WritePdf(pdf.toStdString(), scan.pages);
    StoreOptions();
    const QString rtf = dir.filePath("scan.rtf");
    const EngineResult result = RunEngine({pdf, rtf, "-C", "-H"}, 60000, engine);
    ASSERT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_TRUE(result.err.contains("scanned pages stay pictures: ")) << result.err.toStdString();
    EXPECT_EQ(result.err.count('\n'), 1);
    EXPECT_NE(ReadFile(rtf).toStdString().find("{\\pict"), std::string::npos);
}
