#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace app {

/// `text` fit to be shown on one line of a terminal: what FirstCluster says must be escaped becomes
/// \n, \r, \t or one \xNN for each byte, and a backslash becomes two. So two different texts stay
/// different, and undoing the escapes gives the text back. Names and values come from files that
/// may hold anything.
std::string Printable(std::string_view text);

/// The same in at most `width` columns, at least 3. A text that is cut ends in "...". Takes bounded
/// time and memory, whatever the length of the text.
std::string Shortened(std::string_view text, std::size_t width = 40);

/// A column's name as a table shows it, which has no quotes around it: like Shortened, but a blank
/// at either end is \x20, and a name that is cut ends in "...#" and `number`. As long as different
/// columns have different numbers, different names are shown differently. It takes at most `width`
/// columns, but always has room for the ending.
std::string ShownName(std::string_view name, std::size_t number, std::size_t width = 40);

/// `text`, which is fit to be shown, in at most `width` columns. A text that is cut ends in "...",
/// if there is room for that.
std::string Cut(const std::string& text, std::size_t width);

/// The complaint about `text` where a number is wanted, fit to be shown.
std::string NotANumber(std::string_view text);

}  // namespace app
