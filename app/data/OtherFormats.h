#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace app {

/// What a file is that begins like this, and what to do with it, if it is of a format that cannot
/// be read as data. Nothing for a file that may be data.
std::optional<std::string> OtherFormat(std::string_view beginning);

}  // namespace app
