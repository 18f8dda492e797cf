#pragma once

#include <ostream>

namespace app {

/// The exit statuses of the program.
enum ExitStatus {
    ExitAccredited = 0,     ///< There is a number, and it is not below the bound; or all went well.
    ExitNotAccredited = 1,  ///< The number is below the bound, or there is none.
    ExitFailed = 2,         ///< Wrong usage, unreadable or malformed input, or cancelled.
};

/// Runs the program with this command line and gives its exit status. The report goes to `out`,
/// complaints go to `err`, where a progress bar is drawn if it is a terminal. An interrupt cancels
/// the run.
int RunProgram(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
               bool errIsTerminal);

}  // namespace app
