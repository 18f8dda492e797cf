#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "accredit/host/AccreditExport.h"

/// @file
/// Numbers as documents and data spell them.

namespace MADocuments {

/// `text` without the spaces and tabs around it.
ACCREDIT_EXPORT std::string_view TrimBlanks(std::string_view text);

/// The double nearest to the decimal number that all of `text` spells: digits with an optional
/// sign, decimal point and exponent, in any locale. Gives 0 for a number too small for a double,
/// and nothing for any other text, for a number too large, and for the missing value, which no
/// datum can have. NaN, infinities and hexadecimal digits are not decimal numbers.
ACCREDIT_EXPORT std::optional<double> ParseNumber(std::string_view text);

/// The shortest text that gives a number back, in any locale.
ACCREDIT_EXPORT std::string SpellNumber(double number);

}  // namespace MADocuments
