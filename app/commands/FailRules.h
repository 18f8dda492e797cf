#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "app/commands/Comparison.h"

namespace app {

/// What makes `accredit check` end with the exit status 1.
struct FailRules {
    std::optional<double> failBelow;  ///< An accreditation below this, or none.
    std::optional<MAVerdict> failOn;  ///< A variable with this verdict or a worse one.
};

/// A verdict in the words of reports and options.
const char* VerdictText(MAVerdict verdict);

/// The rules that this result breaks, as a person would write them: "--fail-on moderate",
/// "--fail-below 0.05", "no accreditation". Without any accreditation a result fails, unless
/// `failOn` is the only rule.
std::vector<std::string> FailedRules(const CheckResult& result, const FailRules& rules);

}  // namespace app
