#pragma once

#include <stdexcept>

namespace app {

/// The command line asks for something that cannot be done.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file cannot be read or does not hold what it should. The text begins with the file's name and,
/// where there is one, the line.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A file cannot be written. The text begins with the file's name.
class OutputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The run was stopped on request.
class Cancelled : public std::runtime_error {
public:
    Cancelled() : std::runtime_error("cancelled") {}
};

}  // namespace app
