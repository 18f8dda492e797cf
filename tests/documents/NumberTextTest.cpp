#include "accredit/documents/NumberText.h"

#include <gtest/gtest.h>

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

TABLE_TEST(MissingTokens, AreTheEmptyTextTheUsualOnesAndThoseThatAreNamed, 3) {
    const std::vector<std::string> named{"?", " -999 ", "NULL", "?", " "};
    const MADocuments::MissingTokens tokens(named);
    EXPECT_EQ(tokens.Contains(row.Text(0)), row.Is(1, "missing", "data"));
    const auto only = MADocuments::MissingTokens::Only(named);
    EXPECT_EQ(only.Contains(row.Text(0)), row.Is(2, "missing", "data"));
    EXPECT_EQ(only.Texts(), (std::vector<std::string>{"", "?", "-999", "NULL"}));
}

}  // namespace
