#pragma once

#include <sys/stat.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/ByteHash.h"
#include "app/base/Decompressor.h"
#include "app/base/Progress.h"
#include "app/base/TemporaryCopy.h"

namespace app {

/// The name of the file for messages, fit to be shown; the path "-" is standard input.
std::string FileName(const std::string& path);

/// Whether the path is one of a file that can be opened again and again: no pipe, which must be
/// read when its turn comes, nor standard input.
bool IsRegularFile(const std::string& path);

/// A file, a pipe, or standard input, that is read from its beginning in large pieces. What is
/// compressed by gzip or zstd is read as what it was before.
class InputFile {
public:
    /// Opens the file, which for a named pipe means to wait for its writer; the path "-" means
    /// standard input. `progress` is told of every piece that is read, and a read ends with
    /// Cancelled when `cancel` says so; both must outlive this. Throws InputError, Cancelled.
    InputFile(const std::string& path, Progress& progress, MCQueryCancel& cancel);
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    /// The name for messages, fit to be shown.
    const std::string& Name() const { return mName; }

    /// Fills `buffer` with the next `size` bytes, fewer only at the end of the file, and gives
    /// their number. Throws InputError, also when a regular file turns out at its end to have
    /// changed since it was opened, or to hold other bytes than when it was first read to its end,
    /// and for archives that are cut short, damaged, or so much larger than their length that they
    /// could take for ever; OutputError, see KeepForRewind; Cancelled.
    std::size_t Read(char* buffer, std::size_t size);

    /// Gives back what was read from the beginning, and nothing else yet, to be read again.
    void PutBack(std::string beginning);

    /// To be called before Rewind is, when nothing has been read or all of it was put back: of what
    /// is no regular file a temporary copy is made while it is read, of a regular file a hash is
    /// taken. Throws InputError, OutputError.
    void KeepForRewind();

    /// Goes back to the beginning. Throws InputError, also when the file has changed since it was
    /// opened, OutputError, Cancelled.
    void Rewind();

    /// Throws the InputError of a file that has changed since it was opened.
    [[noreturn]] void RefuseChanged() const;

private:
    std::size_t ReadOn(char* buffer, std::size_t size);
    std::size_t ReadArchive(char* buffer, std::size_t size);
    std::size_t ReadDescriptor(char* buffer, std::size_t size);
    void RequireBearable(std::uint64_t decompressed) const;
    void RequireUnchanged() const;
    void RequireSameBytes();
    void Restart();
    [[noreturn]] void RefuseArchive(std::uint64_t byte, const std::string& problem) const;
    [[noreturn]] void Fail(int error) const;

    std::string mName;
    Progress& mProgress;
    MCQueryCancel& mCancel;
    int mDescriptor = -1;
    struct stat mOpened = {};
    bool mIsRegular = false;
    // Whether its length is known and it can be gone back in; standard input may begin anywhere in
    // its file.
    bool mCanSeek = false;
    std::uint64_t mDone = 0;  // bytes read from the descriptor, or from the copy
    int mPass = 1;

    bool mHasBegun = false;
    std::unique_ptr<Decompressor> mDecompressor;  // null for what is no archive
    std::vector<char> mPiece;                     // of the archive,
    std::string_view mArchive;                    // and what is left of it
    std::uint64_t mDecompressed = 0;
    std::array<char, kArchiveMark> mMark{};
    std::string_view mPlain;  // of the mark, what is left of it if there is no archive

    std::string mPutBack;  // to be read before all else, from mPutBackUsed on
    std::size_t mPutBackUsed = 0;
    std::optional<ByteHash> mHash;  // of this pass, if the file is read again
    std::string mWholeHash;         // of the first pass to the end
    std::unique_ptr<TemporaryCopy> mCopy;
    bool mCopyIsRead = false;  // and is whole
};

}  // namespace app
