#pragma once

#include <string>
#include <variant>

#include "app/commands/Check.h"
#include "app/commands/Learn.h"
#include "app/commands/Merge.h"
#include "app/commands/Show.h"
#include "app/commands/Statements.h"

namespace app {

/// A text that the command line asks for in place of any work: the help or the version.
struct Message {
    std::string text;
};

/// What the command line asks for.
using Command =
    std::variant<Message, CheckOptions, LearnOptions, MergeOptions, ShowOptions, StatementOptions>;

/// Reads the command line. Throws UsageError.
Command ParseCommandLine(int argc, const char* const* argv);

}  // namespace app
