#pragma once

#include <string>
#include <string_view>

namespace app {

/// `text`, which is fit to be shown as Printable makes it, for a page: as content or between the
/// quotes of an attribute. Where it has letters that are written from right to left, every quote
/// gets a mark behind it, so that they do not take along what follows the name they belong to.
std::string HtmlText(std::string_view text);

}  // namespace app
