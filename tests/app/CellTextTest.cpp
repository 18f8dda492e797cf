#include "app/data/CellText.h"

#include <gtest/gtest.h>

#include <string>

#include "app/data/DistinctCounter.h"
#include "fakes/Fakes.h"
#include "fakes/Repeats.h"

namespace {

TABLE_TEST(CellText, Is, 2) {
    const std::string text = fakes::Repeated(row.Text(0));
    std::string what;
    if (const auto number = app::ParseCell(text, true)) what += fakes::ToText({*number}) + ' ';
    if (app::IsSpreadsheetNumber(text)) what += "shown ";
    if (app::IsAmbiguousComma(text)) what += "ambiguous ";
    if (app::IsDate(text)) what += "date ";
    EXPECT_EQ(what.substr(0, what.find_last_not_of(' ') + 1), row.Text(1));
}

TEST(DistinctCounter, CountsUpToItsLimitAndEstimatesFromThereOn) {
    app::DistinctCounter counter(1000);
    for (int i = 1; i <= 200000; ++i) {
        ASSERT_TRUE(counter.Add(std::to_string(i))) << i << " is new";
        counter.Add(std::to_string(i / 2 + 1));
        // Five standard errors of the sample, which holds 500 texts at least.
        ASSERT_NEAR(static_cast<double>(counter.Count()), i, i <= 1000 ? 0.0 : 0.22 * i);
    }
}

TEST(DistinctCounter, KnowsWhatItHasJustMet) {
    app::DistinctCounter counter(1000);
    EXPECT_TRUE(counter.Add(0.0));
    EXPECT_FALSE(counter.Add(-0.0)) << "is the same number";
    EXPECT_TRUE(counter.Add("0"));
    EXPECT_FALSE(counter.Add("0"));
    EXPECT_EQ(counter.Count(), 2U);
}

}  // namespace
