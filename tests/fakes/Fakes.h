#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "accredit/host/MCMV.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCUniStats.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MCVariable.h"
#include "accredit/host/MultiPassRecordIter.h"
#include "fakes/Seams.h"
#include "fakes/Tables.h"

namespace fakes {

inline constexpr double kMissing = MCMV::Missing();

/// A variable list from words with blanks between them: "x" is a continuous input variable, "x/2"
/// one of measurement level 2, "c:a,b" and "c#1,2.5" are nominal ones with these texts or numbers
/// as categories, and what stands in parentheses is no input variable. '' is an empty name or text.
inline MCMTD_NAMESPACE::MCVarList List(const std::string& words) {
    using MCMTD_NAMESPACE::IMCVariable;
    const auto plain = [](const std::string& text) { return text == "''" ? "" : text; };
    MCMTD_NAMESPACE::MCVarList list;
    for (std::string word : Split(words, ' ')) {
        const bool input = word[0] != '(';
        if (!input && word.back() != ')') Refuse(word, "has no closing parenthesis");
        if (!input) word = word.substr(1, word.size() - 2);
        const std::size_t end = std::min(word.find_first_of("/:#"), word.size());
        const char kind = end < word.size() ? word[end] : ' ';
        const std::string rest = word.substr(std::min(end + 1, word.size()));
        const int level = kind == '/' ? static_cast<int>(ToNumber(rest)) : kind == ' ' ? 1 : 2;
        std::vector<std::string> texts;
        Numbers numbers;
        for (const std::string& category : Split(kind == '/' ? "" : rest, ',')) {
            if (kind == '#') numbers.push_back(ToNumber(category));
            texts.push_back(plain(category));
        }
        const MCMTD_NAMESPACE::MCVariable variable(
            plain(word.substr(0, end)), level,
            input ? IMCVariable::VariableRoleInput : IMCVariable::VariableRoleTarget,
            static_cast<int>(texts.size()));
        if (kind == '#') list.Add(variable, MCMTD_NAMESPACE::MCNumberEncoder(numbers));
        if (kind == ':') list.Add(variable, MCMTD_NAMESPACE::MCStringEncoder(texts));
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

/// Statistics of one variable: "name; cases; frequencies", or "name; cases; min max mean deviation;
/// margins; frequencies", with "; closed left" at the end for bins that hold their lower margin.
inline MCMTD_NAMESPACE::MCUniStats UniStats(const std::string& text) {
    const std::vector<std::string> parts = Split(text + " ", ';');
    const std::size_t size = parts.size();
    if (size != 3 && size != 5 && (size != 6 || parts[5] != "closed left")) {
        Refuse(text, "is no statistics of a variable");
    }
    const double cases = ToNumber(parts[1]);
    if (size == 3) return {parts[0], cases, ToNumbers(parts[2])};
    const Numbers summary = Exactly(4, ToNumbers(parts[2]));
    MCMTD_NAMESPACE::MCUniStats stats(parts[0], cases,
                                      {summary[0], summary[1], summary[2], summary[3]},
                                      ToNumbers(parts[3]), ToNumbers(parts[4]));
    stats.SetIntervalsOpenLeft(size == 5);
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
