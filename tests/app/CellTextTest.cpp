#include "app/data/CellText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "app/data/DistinctCounter.h"
#include "app/data/ShortNumber.h"
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

// All texts of digits and a point are short numbers, whatever else a text may be.
TEST(ShortNumber, IsTheNumberThatTheTextSpells) {
    constexpr std::string_view kBytes = "0123456789.,-+ e\n\x80;/:\x1e\x01";
    std::minstd_rand random(1);
    for (int i = 0; i < 400000; ++i) {
        const bool decimalComma = i % 2 == 0;
        const std::size_t kinds = i % 3 == 0 ? kBytes.size() : 12;
        std::string text(i % 5 == 0 ? "-" : "");
        for (std::size_t n = random() % 11; n > 0; --n) text += kBytes[random() % kinds];
        const std::string readable = text + "12345678";
        const double number =
            app::ShortNumber(readable.data(), text.size(), decimalComma ? ',' : '.');
        const std::size_t begin = text.substr(0, 1) == "-" ? 1 : 0;
        const bool isShort = text.size() - begin <= 8 &&
                             text.find_first_not_of(decimalComma ? "0123456789," : "0123456789.",
                                                    begin) == text.npos;
        const double expected = app::NumberIn(text, decimalComma);
        if (isShort || !std::isnan(number)) {
            ASSERT_EQ(std::memcmp(&number, &expected, sizeof number), 0) << text;
        }
    }
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
