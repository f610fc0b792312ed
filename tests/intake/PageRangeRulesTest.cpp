#include "intake/PageRangeRules.h"

#include <gtest/gtest.h>

namespace {

struct NumberRow
{
    const char* text;
    std::optional<qint16> expected;
};

class ToWholeNumberTest : public ::testing::TestWithParam<NumberRow>
{
};

TEST_P(ToWholeNumberTest, ConvertsLikeTheUsersLocaleWritesNumbers)
{
    const NumberRow& row = GetParam();
    EXPECT_EQ(ToWholeNumber(QString::fromUtf8(row.text)), row.expected) << row.text;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ToWholeNumberTest,
    ::testing::Values(NumberRow{"1", 1}, NumberRow{"  7  ", 7}, NumberRow{"-3", -3},
                      NumberRow{"2.6", 3}, NumberRow{"2.5", 2}, NumberRow{"3.5", 4},
                      NumberRow{"32767", 32767}, NumberRow{"-32768", -32768},
                      NumberRow{"32768", std::nullopt}, NumberRow{"-32769", std::nullopt},
                      NumberRow{"", std::nullopt}, NumberRow{"   ", std::nullopt},
                      NumberRow{"abc", std::nullopt}, NumberRow{"1a", std::nullopt},
                      NumberRow{"nan", std::nullopt}, NumberRow{"inf", std::nullopt}));

struct RangeRow
{
    const char* from;
    const char* to;
    qint32 pageCount;
    bool valid;
    qint16 first;
    qint16 last;
};

class ParsePageRangeTest : public ::testing::TestWithParam<RangeRow>
{
};

TEST_P(ParsePageRangeTest, AcceptsOnlyForwardRangesWithinTheDocument)
{
    const RangeRow& row = GetParam();
    const auto range =
        ParsePageRange(QString::fromUtf8(row.from), QString::fromUtf8(row.to), row.pageCount);
    ASSERT_EQ(range.has_value(), row.valid) << row.from << " - " << row.to;
    if (range) {
        EXPECT_EQ(range->from, row.first);
        EXPECT_EQ(range->to, row.last);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParsePageRangeTest,
    ::testing::Values(RangeRow{"1", "1", 12, true, 0, 0}, RangeRow{"2", "5", 12, true, 1, 4},
                      RangeRow{"3", "2", 12, false, 0, 0}, RangeRow{"0", "2", 12, false, 0, 0},
                      RangeRow{"1", "12", 12, true, 0, 11}, RangeRow{"1", "13", 12, false, 0, 0},
                      RangeRow{" 2 ", "3", 12, true, 1, 2}, RangeRow{"2.6", "4", 12, true, 2, 3},
                      RangeRow{"", "3", 12, false, 0, 0}, RangeRow{"a", "3", 12, false, 0, 0},
                      RangeRow{"-32768", "3", 12, false, 0, 0},
                      RangeRow{"1", "32767", 40000, true, 0, 32766}));

TEST(PageCountText, NamesThePageCountInTheUsersLanguage)
{
    const bool japanese = qEnvironmentVariable("VELMORA_TEST_LOCALE") == QStringLiteral("ja");
    EXPECT_EQ(PageCountText(12),
              japanese ? QStringLiteral("(計12ページ)") : QStringLiteral("(12 pages total)"));
}

}  // namespace
