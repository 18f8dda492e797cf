#pragma once

#include <string>
#include <string_view>

namespace app {

/// `text`, which is fit to be shown as Printable makes it, as the content of an element of a page;
/// not for attributes. Where it has letters that are written from right to left, every quote gets a
/// mark behind it, so that they do not take along what follows the name they belong to.
std::string HtmlText(std::string_view text);

}  // namespace app
