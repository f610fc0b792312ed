#include "app/EngineCommandLine.h"
#include "app/StoredOptions.h"
#include "convert/AtomicFile.h"
#include "convert/Converter.h"
#include "options/OptionsDocument.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using velmora::EngineOptions;

namespace {

OptionValues FirstStartState()
{
    return FirstStartValues();
}

std::string ReadAll(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return "<missing>";
    return file.readAll().toStdString();
}

}  // namespace

TEST(EngineOptionsFromDocument, ReadsEveryElementTheFrontEndWrites)
{
    OptionValues state = FirstStartState();
    state.AdjustFontNames = 0;
    state.AdjustSpacing = 0;
    state.ConversionMethod = 3;
    state.DetectHeader = 0;
    state.WordArt = 1;
    state.DocumentType = 3;
    state.ImageFormat = 1;
    state.JpegQuality = 40;
    state.MergeParagraph = 0;
    state.MergeText = 0;
    state.PageFrom = 2;
    state.PageTo = 5;
    state.PreserveTextPosition = 0;
    state.ShrinkFonts = 0;
    state.ExtractToBMP = 1;
    state.UsingPageRange = 1;
    state.ZoomDpi = 20;
    const EngineOptions options = EngineOptionsFromDocument(BuildOptionsDocument(state));
    EXPECT_FALSE(options.adjustFontNames);
    EXPECT_FALSE(options.adjustSpacing);
    EXPECT_EQ(options.conversionMethod, 3);
    EXPECT_FALSE(options.detectHeader);
    EXPECT_TRUE(options.wordArt);
    EXPECT_EQ(options.documentType, 3);
    EXPECT_EQ(options.imageFormat, 1);
    EXPECT_EQ(options.jpegQuality, 40);
    EXPECT_FALSE(options.mergeParagraph);
    EXPECT_FALSE(options.mergeText);
    EXPECT_EQ(options.pageFrom, 2);
    EXPECT_EQ(options.pageTo, 5);
    EXPECT_FALSE(options.preserveTextPosition);
    EXPECT_FALSE(options.shrinkFonts);
    EXPECT_TRUE(options.extractToBmp);
    EXPECT_TRUE(options.usingPageRange);
    EXPECT_EQ(options.zoomDpi, 20);
    EXPECT_TRUE(options.extractText);
    EXPECT_TRUE(options.extractImages);
    EXPECT_TRUE(options.extractHyperlinks);
    EXPECT_TRUE(options.passwords.empty());
}

TEST(EngineOptionsFromDocument, DefaultsAndCorrections)
{
    struct Row
    {
        const char* document;
        int method;
        int type;
        int quality;
    };
    const std::vector<Row> rows{
        {"", 2, 2, 85},
        {R"(<numeric name = "ConversionMethod" value = "0" /><numeric name = "DocumentType" value = "0" />)",
         1, 1, 85},
        {R"(<numeric name = "ConversionMethod" value = "7" /><numeric name = "DocumentType" value = "-4" />)",
         2, 2, 85},
        {R"(<numeric name = "ConversionMethod" value = "x" /><numeric name = "JpegQuality" value = "300" />)",
         2, 2, 85},
        {R"(<numeric name = "conversionmethod" value = "1" /><numeric name = "JpegQuality" value = "" />)",
         1, 2, 85},
    };
    for (const Row& row : rows) {
        const EngineOptions options = EngineOptionsFromDocument(QString::fromUtf8(row.document));
        EXPECT_EQ(options.conversionMethod, row.method) << row.document;
        EXPECT_EQ(options.documentType, row.type) << row.document;
        EXPECT_EQ(options.jpegQuality, row.quality) << row.document;
    }
}

TEST(EngineOptionsFromDocument, TakesTheStoredPasswordOnlyWhenItsLengthIsSet)
{
    struct Row
    {
        QString passwords;
        qint16 length;
        qint16 separator;
        std::vector<std::string> expectedFirst;
        bool empty;
    };
    const std::vector<Row> rows{
        {"secret", 7, 44, {"secret"}, false},
        {"secret", 0, 0, {}, true},
        {"", 0, 0, {}, true},
        {"one,two", 8, 44, {"one,two", "one", "two"}, false},
        {QString::fromUtf8("pässwort"), 9, 44, {"p\xc3\xa4sswort", "p\xe4sswort"}, false},
    };
    for (const Row& row : rows) {
        OptionValues state = FirstStartState();
        state.Passwords = row.passwords;
        state.PasswordLen = row.length;
        state.PasswordSeparator = row.separator;
        const EngineOptions options = EngineOptionsFromDocument(BuildOptionsDocument(state));
        EXPECT_EQ(options.passwords.empty(), row.empty) << row.passwords.toStdString();
        for (std::size_t i = 0; i < row.expectedFirst.size(); ++i) {
            ASSERT_LT(i, options.passwords.size());
            EXPECT_EQ(options.passwords[i], row.expectedFirst[i]);
        }
    }
}

TEST(ParseEngineCommandLine, AcceptsTwoPathsAndTheSwitches)
{
    struct Row
    {
        std::vector<std::string> args;
        bool ok;
        bool pictures;
        bool quiet;
    };
    const std::vector<Row> rows{
        {{"a b.pdf", "c d.doc", "-C"}, true, false, false},
        {{"a.pdf", "t.rtf", "-C", "-P", "-H"}, true, true, true},
        {{"-c", "a.pdf", "t.rtf", "-h"}, true, false, true},
        {{"a.pdf", "t.rtf"}, false, false, false},
        {{"a.pdf", "-C"}, false, false, false},
        {{"a.pdf", "t.rtf", "x", "-C"}, false, false, false},
        {{"a.pdf", "t.rtf", "-C", "-X"}, false, false, false},
        {{"", "t.rtf", "-C"}, false, false, false},
    };
    for (const Row& row : rows) {
        std::string error;
        const auto line = ParseEngineCommandLine(row.args, error);
        ASSERT_EQ(line.has_value(), row.ok) << row.args.front();
        if (!line) {
            EXPECT_FALSE(error.empty());
            continue;
        }
        EXPECT_EQ(line->pictures, row.pictures);
        EXPECT_EQ(line->quiet, row.quiet);
        EXPECT_TRUE(line->convert);
    }
    std::string error;
    const auto line = ParseEngineCommandLine({"a b.pdf", "c d.doc", "-C"}, error);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->source, "a b.pdf");
    EXPECT_EQ(line->target, "c d.doc");
}

TEST(PageSpan, FollowsTheRangeWithinTheDocument)
{
    struct Row
    {
        bool usingRange;
        int from;
        int to;
        int count;
        int first;
        int last;  // -1: the span is refused
    };
    const std::vector<Row> rows{
        {false, 3, 1, 5, 0, 4},  {true, 1, 3, 5, 1, 3},   {true, 0, 0, 5, 0, 0},
        {true, 2, 99, 5, 2, 4},  {true, 5, 6, 5, 0, -1},  {true, 3, 1, 5, 0, -1},
        {true, -1, 2, 5, 0, -1}, {false, 0, 0, 0, 0, -1},
    };
    for (const Row& row : rows) {
        EngineOptions options;
        options.usingPageRange = row.usingRange;
        options.pageFrom = row.from;
        options.pageTo = row.to;
        if (row.last < 0) {
            EXPECT_THROW(velmora::PageSpan(options, row.count), velmora::ConversionError)
                << row.from;
            continue;
        }
        EXPECT_EQ(velmora::PageSpan(options, row.count), std::make_pair(row.first, row.last))
            << row.from;
    }
}

TEST(PictureStem, DropsTheFileNamesLastExtension)
{
    const std::vector<std::pair<std::string, std::string>> rows{
        {"/tmp/~SV12.tmp.rtf", "/tmp/~SV12.tmp"},
        {"/tmp/a", "/tmp/a"},
        {"/t.d/a", "/t.d/a"},
        // A preview stem may be empty: "<stem>.rtf" must still give "<stem>_1.bmp".
        {"/t/.rtf", "/t/"},
        {".rtf", ""},
        {"a.rtf", "a"},
        {"/t/a.b.doc", "/t/a.b"},
    };
    for (const auto& [target, stem] : rows)
        EXPECT_EQ(velmora::PictureStem(target), stem) << target;
}

TEST(AtomicFile, ReplacesTheTargetOnlyOnCommit)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString target = dir.filePath("out.rtf");
    {
        QFile old(target);
        ASSERT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old");
    }
    {
        velmora::AtomicFile file(target.toStdString());
        ASSERT_TRUE(file.open());
        ASSERT_TRUE(file.write(std::string("half a docu")));
        EXPECT_EQ(ReadAll(target), "old");
    }
    EXPECT_EQ(ReadAll(target), "old");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"out.rtf"});

    velmora::AtomicFile file(target.toStdString());
    ASSERT_TRUE(file.open());
    ASSERT_TRUE(file.write(std::string("new")));
    ASSERT_TRUE(file.commit());
    EXPECT_EQ(ReadAll(target), "new");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"out.rtf"});

    velmora::AtomicFile nowhere(dir.filePath("missing/out.rtf").toStdString());
    EXPECT_FALSE(nowhere.open());
    EXPECT_NE(nowhere.error().find("missing/out.rtf"), std::string::npos);
}
