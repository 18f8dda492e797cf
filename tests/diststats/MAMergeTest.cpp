#include "accredit/diststats/MAMerge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/Summaries.h"

namespace {

using fakes::Numbers;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;

// A summary of this list; an empty handle without one.
MADistStats Stored(const std::string& list, const std::string& statistics) {
    if (list.empty()) return {};
    return {new MADistStatsImp(fakes::Loaded(list, statistics))};
}

std::string WordFor(const IMCVariable& variable, const IMCEncoder& encoder) {
    std::string word = variable.GetName().empty() ? "''" : variable.GetName();
    const int categories = encoder.GetNumCategories();
    const int level = variable.GetMeasureLevel();
    if (categories == 0 && level != 1) word += '/' + std::to_string(level);
    EXPECT_EQ(variable.GetNumCategories(), categories);
    for (int code = 0; code < categories; ++code) {
        const bool isNumber = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
        const std::string text =
            isNumber ? fakes::ToText({encoder.DecodeNumber(code)}) : encoder.DecodeString(code);
        word += code > 0 ? "," : isNumber ? "#" : ":";
        word += text.empty() ? "''" : text;
    }
    return variable.GetRole() == IMCVariable::VariableRoleInput ? word : '(' + word + ')';
}

// A list in the words of which the fakes make one.
std::string WordsFor(const MCMTD_NAMESPACE::MCVarList& list) {
    std::string words;
    for (int i = 0; i < static_cast<int>(list.Size()); ++i) {
        words += (i == 0 ? "" : " ") + WordFor(*list.GetVarAt(i), *list.GetEncoderAt(i));
    }
    return words;
}

TABLE_TEST(Merge, PutsTogetherOrRefuses, 7) {
    const MADistStats first = Stored(row.Text(0), row.Text(1));
    const MADistStats second = Stored(row.Text(2), row.Text(3));
    const std::string before = fakes::Contents(first) + " & " + fakes::Contents(second);
    const MAMerged merged = MAMergeDistStats(first, second);
    std::string problem = std::to_string(static_cast<int>(merged.problem)) + " at";
    for (const int slot : {merged.slot, merged.secondSlot}) problem += ' ' + std::to_string(slot);
    EXPECT_EQ(problem == "0 at -1 -1" ? fakes::Contents(merged.stats) : problem, row.Text(4));
    EXPECT_TRUE(problem == "0 at -1 -1" || merged.stats.GetVarCount() == 0);
    EXPECT_EQ(WordsFor(merged.stats.GetVarList()), row.Text(5));
    EXPECT_EQ(Numbers(merged.secondSlots.begin(), merged.secondSlots.end()), row.Numbers(6));
    EXPECT_EQ(fakes::Contents(first) + " & " + fakes::Contents(second), before);
}

}  // namespace
