#include <gtest/gtest.h>

#include <limits>

#include "Precision.h"
#include "fakes/Tables.h"

namespace {

// "most" and "least" are the largest and the smallest number there is.
long Whole(const std::string& text) {
    if (text == "most") return std::numeric_limits<long>::max();
    if (text == "least") return std::numeric_limits<long>::min();
    return static_cast<long>(fakes::ToNumber(text));
}

TABLE_TEST(GroupedData, Percentiles, 7) {
    double result = kNaN;
    long code = 99;
    MCDistFun::GPTile(Whole(row.Text(0)), row.Number(1), row.Numbers(3), row.Numbers(4),
                      row.Numbers(5), Whole(row.Text(2)), result, code);
    EXPECT_EQ(fakes::ToText({result, static_cast<double>(code)}), row.Text(6));
}

TABLE_TEST(GroupedData, MedianIntervals, 7) {
    double lower = kNaN;
    double upper = kNaN;
    double actual = kNaN;
    MCDistFun::Mednci(Whole(row.Text(0)), row.Numbers(1), row.Numbers(2), row.Number(3),
                      row.Number(4), row.Is(5, "yes", "no"), lower, upper, actual);
    EXPECT_EQ(fakes::ToText({lower, upper, actual}), row.Text(6));
}

}  // namespace
