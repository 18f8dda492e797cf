#pragma once

#include <string>
#include <string_view>

namespace app {

/// `text` as UTF-8: a byte that is not becomes the text \xNN, and a backslash that stands before
/// such a text already becomes \x5C. So different texts stay different, and nearly all stay what
/// they are.
std::string Utf8Text(std::string_view text);

/// `text` as a JSON string with its quotes. What FirstCluster says must be escaped is written as
/// \uXXXX, so that readers get what Utf8Text gives.
std::string JsonText(std::string_view text);

}  // namespace app
