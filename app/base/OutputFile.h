#pragma once

#include <string>
#include <string_view>

namespace app {

/// A file that is replaced as a whole or not at all: it is written beside its place under another
/// name and put there once it is safe on the disk. The folder holds nothing else afterwards, unless
/// the program is killed by a signal that cannot be held back.
class OutputFile {
public:
    /// Looks at the place without changing anything: the folder must be one that can be written to,
    /// and what stands at `path` a regular file, if anything. A symbolic link stays, and the file
    /// that it leads to is replaced. Throws OutputError.
    explicit OutputFile(const std::string& path);

    /// Puts a file that holds `text` in the place. It has the permissions and the access control
    /// list of the file that was there, and its owner and group where the system allows that;
    /// otherwise fewer may use it, but nobody new. A new file has what the umask or the folder's
    /// default list says. A signal that arrives meanwhile takes effect afterwards. Throws
    /// OutputError; what was there is then untouched.
    void Replace(std::string_view text);

private:
    [[noreturn]] void Fail(int error) const;

    std::string mName;
    std::string mPath;
    std::string mFolder;
};

}  // namespace app
