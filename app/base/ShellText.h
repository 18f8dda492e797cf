#pragma once

#include <string>
#include <string_view>

namespace app {

/// `text` as one word of a shell's command line, in quotes: 'it'\''s'. A text that cannot be shown
/// as it is gets the form $'...' with escapes, which bash, zsh and ksh understand.
std::string ShellQuoted(std::string_view text);

/// An option with its value as it can be typed, such as --ignore 'a b'. In place of a value that is
/// too long to be typed stands `placeholder`.
std::string ShellOption(std::string_view option, std::string_view value,
                        std::string_view placeholder = "COLUMN");

}  // namespace app
