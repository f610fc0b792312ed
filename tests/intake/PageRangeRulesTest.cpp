#include "intake/PageRangeRules.h"

#include <gtest/gtest.h>

namespace {

TEST(ParsePageRange, AcceptsWholeForwardRangesWithinTheDocument)
{
    struct Row
    {
        const char* from;
        const char* to;
        qint32 pageCount;
        int first;  // zero-based; -1 when the range is refused
        int last;
    };
    const Row rows[] = {
        {"1", "1", 12, 0, 0},       {"2", "12", 12, 1, 11},       {"3", "2", 12, -1, 0},
        {"0", "2", 12, -1, 0},      {"1", "13", 12, -1, 0},       {" 2 ", "  3", 12, 1, 2},
        {"2.6", "4", 12, 2, 3},     {"2.5", "3.5", 12, 1, 3},     {"", "3", 12, -1, 0},
        {"1a", "3", 12, -1, 0},     {"nan", "3", 12, -1, 0},      {"1", "inf", 12, -1, 0},
        {"-32768", "3", 12, -1, 0}, {"1", "32768", 40000, -1, 0}, {"1", "32767", 40000, 0, 32766}};
    for (const Row& row : rows) {
        const auto range =
            ParsePageRange(QString::fromUtf8(row.from), QString::fromUtf8(row.to), row.pageCount);
        EXPECT_EQ(range.has_value(), row.first >= 0) << row.from << " - " << row.to;
        if (range && row.first >= 0) {
            EXPECT_EQ(range->from, row.first) << row.from;
            EXPECT_EQ(range->to, row.last) << row.to;
        }
    }
}

}  // namespace
