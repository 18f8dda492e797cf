#pragma once

#include <string>
#include <string_view>

namespace app {

/// `text` as a JSON string with its quotes. What FirstCluster says must be escaped is written as
/// \uXXXX, which readers turn back into the text. A byte that is not UTF-8 becomes the text \xNN,
/// and a backslash that stands before such a text already becomes \x5C: so readers get different
/// strings for different texts, and the very text for nearly all.
std::string JsonText(std::string_view text);

}  // namespace app
