#pragma once

#include <optional>
#include <string>

#include "app/commands/Comparison.h"

namespace app {

/// A table of the variables, categories that keep the comparison from being made, and a sentence
/// with the accreditation, or why there is none, for reading. `failBelow` is the bound that the
/// user set.
std::string TextReport(const CheckResult& result, std::optional<double> failBelow);

/// The same as a JSON document, whose numbers have the digits that give the same double back. For
/// names that are not UTF-8 see JsonText.
std::string JsonReport(const CheckResult& result);

}  // namespace app
