#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "app/commands/Program.h"

namespace fakes {

using Arguments = std::vector<std::string>;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the program with these arguments.
inline Outcome Accredit(const Arguments& arguments) {
    std::vector<const char*> argv{"accredit"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    std::ostringstream out;
    std::ostringstream err;
    const int status = app::RunProgram(static_cast<int>(argv.size()), argv.data(), out, err, false);
    return {status, out.str(), err.str()};
}

}  // namespace fakes
