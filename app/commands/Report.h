#pragma once

#include <string>
#include <vector>

#include "accredit/host/MCApplicInfo4XML.h"
#include "app/base/Screen.h"
#include "app/commands/Check.h"
#include "app/commands/Comparison.h"

namespace app {

/// The answer in words, a table of the variables, what is to be known besides, and the
/// accreditation; for reading. One part a result; the last line names the rules that are broken.
std::string TextReport(const std::vector<CheckResult>& results, const CheckOptions& options,
                       const Screen& screen);

/// All figures as a JSON document, whose numbers have the digits that give the same double back;
/// see docs/report.schema.json. One result is an object, several are a list of them with the paths
/// of `options`. For names that are not UTF-8 see JsonText.
std::string JsonReport(const std::vector<CheckResult>& results, const CheckOptions& options);

/// The figures as OpenMetrics text, which a monitoring system collects: a sample for each that has
/// a value, labelled with the path of the new file in `options` and the variable. For names that
/// are not UTF-8 see Utf8Text.
std::string OpenMetricsReport(const std::vector<CheckResult>& results, const CheckOptions& options);

/// A page for a browser that holds all it needs and runs no script: one part a result, the
/// variables that changed most first, each with both distributions over each other. `run` is the
/// program that made it and the time. Names are escaped; see ShownName and HtmlText.
std::string HtmlReport(const std::vector<CheckResult>& results, const CheckOptions& options,
                       const MCApplicInfo4XML& run);

}  // namespace app
