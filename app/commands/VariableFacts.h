#pragma once

#include <cstddef>
#include <string>

#include "app/commands/Comparison.h"

namespace app {

/// The figures of a variable for a page, as a list of terms and what they are, and the notes on it.
std::string VariableFacts(const CheckResult& result, std::size_t variable);

/// `words` with a capital letter in front.
std::string Sentence(std::string words);

}  // namespace app
