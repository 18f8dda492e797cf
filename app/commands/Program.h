#pragma once

#include <ostream>

#include "app/base/Screen.h"

namespace app {

/// The exit statuses of the program.
enum ExitStatus {
    ExitPassed = 0,  ///< No rule is broken; or all went well.
    ExitBroken = 1,  ///< A rule is broken: see FailRules.
    ExitFailed = 2,  ///< Wrong usage, unreadable or malformed input, or cancelled.
};

/// Runs the program with this command line and gives its exit status. The report goes to `out`,
/// which `screen` describes; complaints go to `err`, where a progress bar is drawn if it is a
/// terminal. An interrupt cancels the run.
int RunProgram(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
               const Screen& screen, bool errIsTerminal);

}  // namespace app
