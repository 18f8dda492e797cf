#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"

namespace app {

/// The name of the file for messages, fit to be shown; the path "-" is standard input.
std::string FileName(const std::string& path);

/// How often a file is read.
enum class Reading { Once, Repeated };

/// A file, or standard input, that is read from its beginning in large pieces.
class InputFile {
public:
    /// Opens the file; the path "-" means standard input. What is not a regular file, such as a
    /// pipe, can be read only once. `progress` is told of every piece that is read, and a read ends
    /// with Cancelled when `cancel` says so; both must outlive this.
    /// Throws InputError, Cancelled.
    InputFile(const std::string& path, Reading reading, Progress& progress, MCQueryCancel& cancel);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// The name for messages, fit to be shown.
    const std::string& Name() const { return mName; }

    /// The length of a regular file when it was opened, nothing for any other and for standard
    /// input.
    std::optional<std::uint64_t> Size() const { return mSize; }

    /// Fills `buffer` with the next `size` bytes, fewer only at the end of the file, and gives
    /// their number. Throws InputError, also when a regular file turns out at its end to have
    /// changed since it was opened; Cancelled.
    std::size_t Read(char* buffer, std::size_t size);

    /// Gives back what was read from the beginning, and nothing else yet, to be read again.
    void PutBack(std::string beginning);

    /// Goes back to the beginning of a file that is read repeatedly. Throws InputError, also when
    /// the file has changed since it was opened.
    void Rewind();

    /// Throws the InputError of a file that has changed since it was opened.
    [[noreturn]] void RefuseChanged() const;

private:
    void Open(const std::string& path, Reading reading);
    void RequireUnchanged() const;
    [[noreturn]] void Fail(int error) const;

    std::string mName;
    Progress& mProgress;
    MCQueryCancel& mCancel;
    int mDescriptor = -1;
    struct stat mOpened = {};
    bool mIsRegular = false;
    std::optional<std::uint64_t> mSize;
    std::uint64_t mDone = 0;
    std::string mPutBack;  // to be read before all else, from mPutBackUsed on
    std::size_t mPutBackUsed = 0;
    int mPass = 1;
};

}  // namespace app
