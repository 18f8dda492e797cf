#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace app {

/// `text` fit to be shown on one line of a terminal: control characters, characters
/// without width, those that change the direction of writing or end a line, and bytes that are not
/// UTF-8 become \n, \r, \t or \xNN. Names and values come from files that may hold anything.
std::string Printable(std::string_view text);

/// The same, cut after 40 code points, with "..." in place of the rest.
std::string Shortened(std::string_view text);

/// The number of code points in UTF-8 text.
std::size_t CountCodePoints(std::string_view text);

/// The first `count` code points of UTF-8 text, or all of it if it has no more.
std::string_view FirstCodePoints(std::string_view text, std::size_t count);

}  // namespace app
