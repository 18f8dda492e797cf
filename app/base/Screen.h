#pragma once

#include <cstddef>

namespace app {

/// What a text report is written to.
struct Screen {
    std::size_t width = 0;  ///< In columns; 0 if there is no limit, as in a pipe.
    bool hasColour = false;
};

/// The screen behind an open file, which is one if it is a terminal. No colour where the
/// environment has NO_COLOR with any text, or calls the terminal "dumb".
Screen ScreenOf(int descriptor);

}  // namespace app
