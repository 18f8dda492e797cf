#pragma once

namespace app {

/// The style sheet of the page that HtmlReport makes.
extern const char* const kPageStyle;

}  // namespace app
