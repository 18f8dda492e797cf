#pragma once

#include <functional>
#include <map>
#include <string>

namespace app {

/// What to do with each value of a key of a configuration file. It may throw UsageError.
using ConfigKeys = std::map<std::string, std::function<void(const std::string&)>>;

/// Hands the values of a configuration file over, in their order. Its format is that of CLI11,
/// near TOML: a key, an equals sign and a value a line, or several values in brackets with commas
/// between them; texts may stand in quotes; what follows a # outside of them is a comment. A key
/// alone has the value "true". Sections [learn] and [check] count for the command of that name
/// only.
///
/// Throws InputError with the file, and the line or the key, for what is not such a file, for keys
/// that are not known, and for values that their function refuses.
void ReadConfigFile(const std::string& path, const std::string& command, const ConfigKeys& keys);

}  // namespace app
