#pragma once

#include <optional>
#include <string_view>

/// @file
/// What the text of a cell looks like. All of these but one take texts without blanks
/// around them.

namespace app {

/// The number that a cell spells; see MADocuments::ParseNumber. With `decimalComma` a comma stands
/// where otherwise a point does, and a text with a point is no number.
std::optional<double> ParseCell(std::string_view text, bool decimalComma);

/// The same of a field that may have blanks around it; a NaN, which no text spells, for any other
/// text.
double NumberIn(std::string_view field, bool decimalComma);

/// Whether this is a number as spreadsheets show them: with separators between thousands, which are
/// commas, points, apostrophes or blanks; with a comma or a point before decimals; with a sign for
/// per cent or a currency, and below zero with a minus sign or in parentheses.
bool IsSpreadsheetNumber(std::string_view text);

/// Whether a comma in this number may set thousands apart as well as decimals: "1,234".
bool IsAmbiguousComma(std::string_view text);

/// Whether this is a date, with or without a time of day, or a month of a year: 2024-01-31,
/// 31.01.2024, 1/31/24 0:00, 31-JAN-24, Jan 31, 2024, 2024-01-31T12:00:00+01:00, 2024-01. Digits
/// alone are a number.
bool IsDate(std::string_view text);

}  // namespace app
