#pragma once

#include <cstddef>
#include <string>

namespace app {

/// The text of a file that was read whole, which can point at places in it.
class SourceText {
public:
    /// `name` is the file's name for messages, fit to be shown.
    SourceText(std::string name, std::string text);

    const std::string& Name() const { return mName; }
    const std::string& Text() const { return mText; }

    /// Throws InputError with the file, the line and the column, both from 1, of the byte at this
    /// offset, and `problem`. A column is a code point.
    [[noreturn]] void Refuse(std::size_t offset, const std::string& problem) const;

private:
    std::string mName;
    std::string mText;
};

}  // namespace app
