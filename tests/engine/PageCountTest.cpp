#include "EngineRunSupport.h"
#include "TestPaths.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <dlfcn.h>

using namespace enginetest;

namespace {

using GetPageCountFunction = int32_t (*)(char*, char*);

}  // namespace

TEST(GetPageCount, CountsPagesAndTellsPasswordsAndFailuresApart)
{
    void* library = dlopen(VELMORA_APP_DIR "/liblomerdoc.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto getPageCount = reinterpret_cast<GetPageCountFunction>(dlsym(library, "GetPageCount"));
    ASSERT_NE(getPageCount, nullptr);
    // Nothing else leaks out of the library.
    EXPECT_EQ(dlsym(library, "fz_new_context_imp"), nullptr);

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const auto write = [&dir](const std::string& name) {
        return WriteFixture(dir.path(), name).toStdString();
    };
    const std::string garbage = dir.filePath("garbage.pdf").toStdString();
    WriteFile(QString::fromStdString(garbage), QByteArray(5000, 'x'));
    const std::string empty = dir.filePath("empty.pdf").toStdString();
    WriteFile(QString::fromStdString(empty), RawPdf({"<< /Type /Catalog /Pages 2 0 R >>",
                                                     "<< /Type /Pages /Kids [] /Count 0 >>"}));
    const std::string chained = dir.filePath("chained.pdf").toStdString();
    WriteFile(QString::fromStdString(chained), SelfChainedPdf());

    struct Row
    {
        std::string path;
        const char* password;
        int32_t expected;
    };
    const std::vector<Row> rows{
        {write("prose"), "", 1},
        {write("article"), "", 2},
        {write("article"), "unneeded", 2},
        {write("locked"), "", -3},
        {write("locked"), "wrong", -3},
        {write("locked"), "secret", 1},
        {empty, "", 0},
        {chained, "", 3},
        {garbage, "", -1},
        {dir.filePath("missing.pdf").toStdString(), "", -1},
    };
    for (const Row& row : rows) {
        std::string path = row.path;
        std::string password = row.password;
        EXPECT_EQ(getPageCount(path.data(), password.data()), row.expected)
            << path << " " << row.password;
    }
    std::string prose = rows.front().path;
    EXPECT_EQ(getPageCount(nullptr, nullptr), -1);
    EXPECT_EQ(getPageCount(prose.data(), nullptr), 1);
    dlclose(library);
}
