#include "app/base/Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace app {

namespace {

constexpr std::size_t kUsualWidth = 80;

std::string_view Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

}  // namespace

Screen ScreenOf(int descriptor) {
    if (isatty(descriptor) != 1) return {};
    winsize size{};
    const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return {known ? size.ws_col : kUsualWidth,
            Environment("NO_COLOR").empty() && Environment("TERM") != "dumb"};
}

}  // namespace app
