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

TABLE_TEST(MissingTokens, AreTheEmptyTextAndNaAndThoseThatAreNamed, 2) {
    const MADocuments::MissingTokens tokens({"?", " -999 ", "NULL", "?", " "});
    EXPECT_EQ(tokens.Contains(row.Text(0)), row.Is(1, "missing", "data"));
    EXPECT_EQ(tokens.Texts(), (std::vector<std::string>{"", "NA", "?", "-999", "NULL"}));
}

}  // namespace
