#include "accredit/documents/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "fakes/Repeats.h"

namespace {

using MADocuments::ParseNumber;

TABLE_TEST(ParseNumber, TakesDecimalNumbersOnly, 2) {
    const std::optional<double> parsed = ParseNumber(fakes::Repeated(row.Text(0)));
    EXPECT_EQ(parsed ? fakes::ToText({*parsed}) : "refused", row.Text(1));
}

// The C library is a second method; tests run in the C locale.
TEST(ParseNumber, IsTheNearestDouble) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 200'000; ++i) {
        const double scale = std::pow(10.0, static_cast<double>(random() % 18));
        const double x = (static_cast<double>(random() >> 11U) / 9007199254740992.0 - 0.5) * scale;
        char text[64];
        std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 17), x);
        ASSERT_EQ(ParseNumber(text), std::strtod(text, nullptr)) << text;
    }
}

TABLE_TEST(MissingTokens, AreTheEmptyTextAndNaAndThoseThatAreNamed, 2) {
    const MADocuments::MissingTokens tokens({"?", " -999 ", "NULL", "?", " "});
    EXPECT_EQ(tokens.Contains(row.Text(0)), row.Is(1, "missing", "data"));
    EXPECT_EQ(tokens.Texts(), (std::vector<std::string>{"", "NA", "?", "-999", "NULL"}));
}

}  // namespace
