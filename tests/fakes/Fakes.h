#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "accredit/host/MCMV.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCSummaryStatistics.h"
#include "accredit/host/MCUniStats.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MCVariable.h"
#include "accredit/host/MultiPassRecordIter.h"
#include "fakes/Seams.h"
#include "fakes/Tables.h"

namespace fakes {

inline constexpr double kMissing = MCMV::Missing();

/// Words with this character between them; '' is an empty one.
inline std::vector<std::string> Words(const std::string& text, char separator) {
    std::vector<std::string> words = Split(text, separator);
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    return words;
}

/// An encoder of no texts that claims to have so many.
class ClaimingEncoder : public MCMTD_NAMESPACE::MCStringEncoder {
public:
    explicit ClaimingEncoder(double claim) : mClaim(static_cast<int>(claim)) {}
    int GetNumCategories() const override { return mClaim; }

private:
    int mClaim;
};

/// A variable list from words with blanks between them: "x" is a continuous input variable, "x/2"
/// one of measurement level 2, "c:a,b" and "c#1,2.5" are nominal ones with these texts or numbers
/// as categories, "c!9" one whose encoder claims to have 9, and what stands in parentheses has a
/// role that the library does not know. '' is an empty name or text.
inline MCMTD_NAMESPACE::MCVarList List(const std::string& words) {
    using MCMTD_NAMESPACE::IMCVariable;
    MCMTD_NAMESPACE::MCVarList list;
    for (std::string word : Split(words, ' ')) {
        const bool input = word[0] != '(';
        if (!input && word.back() != ')') Refuse(word, "has no closing parenthesis");
        if (!input) word = word.substr(1, word.size() - 2);
        const std::size_t end = std::min(word.find_first_of("/:#!"), word.size());
        const char kind = end < word.size() ? word[end] : ' ';
        const std::string rest = word.substr(std::min(end + 1, word.size()));
        const int level = kind == '/' ? static_cast<int>(ToNumber(rest)) : kind == ' ' ? 1 : 2;
        const std::vector<std::string> texts = Words(kind == '/' ? "" : rest, ',');
        Numbers numbers;
        if (kind == '#') {
            std::transform(texts.begin(), texts.end(), std::back_inserter(numbers), ToNumber);
        }
        const std::string name = word.substr(0, end);
        const MCMTD_NAMESPACE::MCVariable variable(
            name == "''" ? "" : name, level,
            input ? IMCVariable::VariableRoleInput : static_cast<IMCVariable::VariableRole>(100),
            static_cast<int>(texts.size()));
        if (kind == '#') list.Add(variable, MCMTD_NAMESPACE::MCNumberEncoder(numbers));
        if (kind == ':') list.Add(variable, MCMTD_NAMESPACE::MCStringEncoder(texts));
        if (kind == '!') list.Add(variable, ClaimingEncoder(ToNumber(rest)));
        if (kind == ' ' || kind == '/') list.Add(variable);
    }
    return list;
}

/// One record a value.
inline std::vector<Numbers> Column(const Numbers& values) {
    std::vector<Numbers> rows;
    for (const double value : values) rows.push_back({value});
    return rows;
}

/// Statistics of one variable: "name; cases; frequencies", with the number of missing data behind
/// that of the cases where it is known, or "name; cases; min max mean deviation;
/// margins; frequencies", with "; closed left" at the end for bins that hold their lower margin.
inline MCMTD_NAMESPACE::MCUniStats UniStats(const std::string& text) {
    const std::vector<std::string> parts = Words(text + " ", ';');
    const std::size_t size = parts.size();
    if (size != 3 && size != 5 && (size != 6 || parts[5] != "closed left")) {
        Refuse(text, "is no statistics of a variable");
    }
    const Numbers cases = ToNumbers(parts[1]);
    const bool missing = cases.size() == 2;
    if (!missing) Exactly(1, cases);
    MCMTD_NAMESPACE::MCUniStats stats(parts[0], cases[0], ToNumbers(parts[2]));
    if (size > 3) {
        const Numbers numbers =
            Exactly(MCMTD_NAMESPACE::kMCSummaryStatistics.size(), stats.GetFrequencies());
        MCMTD_NAMESPACE::MCUniStats::SummStats summary;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            summary.*MCMTD_NAMESPACE::kMCSummaryStatistics[i].value = numbers[i];
        }
        stats = {parts[0], cases[0], summary, ToNumbers(parts[3]), ToNumbers(parts[4])};
        stats.SetIntervalsOpenLeft(size == 5);
    }
    if (missing) stats.SetMissing(cases[1]);
    return stats;
}

/// The code of the status that an operation returns or throws. No status has the flag.
template <class Operation>
long CodeOf(Operation operation) {
    MCCommon::MCStatus status;
    try {
        if constexpr (std::is_void_v<decltype(operation())>) {
            operation();
        } else {
            status = operation();
        }
    } catch (const MCCommon::MCStatus& thrown) {
        status = thrown;
    }
    EXPECT_FALSE(status.GetFlag());
    return status.GetCode();
}

}  // namespace fakes
