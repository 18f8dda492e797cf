#include "app/commands/FailRules.h"

#include <fmt/format.h>

#include <algorithm>

namespace app {

const char* VerdictText(MAVerdict verdict) {
    switch (verdict) {
        case MAVerdict::Unchanged:
            return "unchanged";
        case MAVerdict::Minor:
            return "minor";
        case MAVerdict::Moderate:
            return "moderate";
        case MAVerdict::Major:
            return "major";
        case MAVerdict::NotTested:
            break;
    }
    return "not tested";
}

std::vector<std::string> FailedRules(const CheckResult& result, const FailRules& rules) {
    std::vector<std::string> failed;
    const auto isAsBad = [&rules](const CheckedVariable& variable) {
        return variable.comparison.verdict >= *rules.failOn;
    };
    if (rules.failOn && std::any_of(result.variables.begin(), result.variables.end(), isAsBad)) {
        failed.push_back(fmt::format("--fail-on {}", VerdictText(*rules.failOn)));
    }
    if (!result.accreditation) {
        if (rules.failBelow || !rules.failOn) failed.emplace_back("no accreditation");
    } else if (rules.failBelow && *result.accreditation < *rules.failBelow) {
        failed.push_back(fmt::format("--fail-below {}", *rules.failBelow));
    }
    return failed;
}

}  // namespace app
