#include "app/base/InputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 17U;

// So much is read of any archive; what becomes longer may be so many times as long as the archive.
// Data is compressed to a tenth, or a hundredth where its rows hardly differ.
constexpr std::uint64_t kAlwaysBearable = std::uint64_t{1} << 30U;
constexpr std::uint64_t kBearableFactor = 250;

}  // namespace

std::string FileName(const std::string& path) {
    if (path == "-") return "standard input";
    return path.empty() ? "\"\"" : Printable(path);
}

bool IsRegularFile(const std::string& path) {
    std::error_code ignored;
    return path != "-" && std::filesystem::is_regular_file(path, ignored);
}

InputFile::InputFile(const std::string& path, Progress& progress, MCQueryCancel& cancel)
    : mName(FileName(path)), mProgress(progress), mCancel(cancel) {
    if (path == "-") {
        mDescriptor = STDIN_FILENO;
    } else {
        while ((mDescriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC)) < 0) {
            if (errno != EINTR) Fail(errno);
            if (mCancel.QueryCancel()) throw Cancelled();
        }
    }
    mIsRegular = fstat(mDescriptor, &mOpened) == 0 && S_ISREG(mOpened.st_mode);
    mCanSeek = mIsRegular && path != "-";
}

InputFile::~InputFile() {
    if (mDescriptor > STDIN_FILENO) close(mDescriptor);
}

void InputFile::PutBack(std::string beginning) {
    mPutBack = std::move(beginning);
    mPutBackUsed = 0;
}

void InputFile::KeepForRewind() {
    if (mCanSeek) {
        // What was put back belongs to the hash, too.
        Restart();
        mHash.emplace();
    } else if (!mCopy) {
        mCopy = std::make_unique<TemporaryCopy>(mName);
        mCopy->Append(mPutBack.data(), mPutBack.size());
    }
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
    const std::size_t again = mPutBack.copy(buffer, size, mPutBackUsed);
    mPutBackUsed += again;
    return again + ReadOn(buffer + again, size - again);
}

std::size_t InputFile::ReadOn(char* buffer, std::size_t size) {
    if (size == 0) return 0;
    if (mCancel.QueryCancel()) throw Cancelled();
    if (mCopyIsRead) return ReadDescriptor(buffer, size);
    if (!mHasBegun) {
        mHasBegun = true;
        mPlain = {mMark.data(), ReadDescriptor(mMark.data(), mMark.size())};
        mDecompressor = DecompressorFor(mPlain);
        if (mDecompressor) std::swap(mPlain, mArchive);
    }
    std::size_t filled = mPlain.copy(buffer, size);
    mPlain.remove_prefix(filled);
    if (mDecompressor) {
        filled = ReadArchive(buffer, size);
    } else if (filled < size) {
        filled += ReadDescriptor(buffer + filled, size - filled);
    }
    if (mCopy) mCopy->Append(buffer, filled);
    return filled;
}

std::size_t InputFile::ReadArchive(char* buffer, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        std::size_t got = 0;
        try {
            got = mDecompressor->Decompress(mArchive, buffer + filled, size - filled);
        } catch (const ArchiveError& error) {
            RefuseArchive(mDone - mArchive.size() + 1, error.what());
        }
        filled += got;
        mDecompressed += got;
        RequireBearable(mDecompressed);
        if (got > 0 || !mArchive.empty()) continue;
        mPiece.resize(kPieceSize);
        mArchive = {mPiece.data(), ReadDescriptor(mPiece.data(), mPiece.size())};
        if (!mArchive.empty()) continue;
        if (!mDecompressor->IsWhole()) {
            RefuseArchive(
                mDone, fmt::format("the {} archive ends here, too early", mDecompressor->Format()));
        }
        break;
    }
    return filled;
}

void InputFile::RequireBearable(std::uint64_t decompressed) const {
    if (decompressed < kAlwaysBearable || decompressed / kBearableFactor < mDone) return;
    throw InputError(
        fmt::format("{}: the {} archive becomes more than {} times as long; if that is what it is "
                    "meant to be, decompress it and give it through a pipe as '-'",
                    mName, mDecompressor->Format(), kBearableFactor));
}

// `size` bytes, fewer only at the end.
std::size_t InputFile::ReadDescriptor(char* buffer, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        if (mCancel.QueryCancel()) throw Cancelled();
        const int descriptor = mCopyIsRead ? mCopy->Descriptor() : mDescriptor;
        const ssize_t got = read(descriptor, buffer + filled, size - filled);
        if (got == 0) {
            RequireUnchanged();
            RequireSameBytes();
            break;
        }
        if (got < 0) {
            if (errno == EINTR) continue;
            Fail(errno);
        }
        if (mHash) mHash->Add(buffer + filled, static_cast<std::size_t>(got));
        filled += static_cast<std::size_t>(got);
        mDone += static_cast<std::uint64_t>(got);
        std::optional<std::uint64_t> length;
        if (mCanSeek) length = static_cast<std::uint64_t>(mOpened.st_size);
        if (mCopyIsRead) length = mCopy->Size();
        mProgress.Update(mName, mPass, mDone, length);
    }
    return filled;
}

void InputFile::Rewind() {
    if (mCopy && !mCopyIsRead) {
        // What was not read in this pass belongs to the copy as well.
        std::vector<char> rest(kPieceSize);
        while (ReadOn(rest.data(), rest.size()) > 0) continue;
        mCopyIsRead = true;
    }
    if (!mCopy) RequireUnchanged();
    if (mHash) mHash.emplace();
    Restart();
    ++mPass;
}

void InputFile::Restart() {
    if (lseek(mCopy ? mCopy->Descriptor() : mDescriptor, 0, SEEK_SET) != 0) Fail(errno);
    mDone = 0;
    mHasBegun = false;
    mDecompressor.reset();
    mArchive = mPlain = {};
    mDecompressed = 0;
    PutBack({});
}

// What another program writes meanwhile is read half, and passes over different contents do not
// belong together. Of what is copied nothing is read a second time.
void InputFile::RequireUnchanged() const {
    if (!mIsRegular || mCopyIsRead) return;
    struct stat now = {};
    if (fstat(mDescriptor, &now) != 0) Fail(errno);
    if (now.st_dev != mOpened.st_dev || now.st_ino != mOpened.st_ino ||
        now.st_size != mOpened.st_size || now.st_mtim.tv_sec != mOpened.st_mtim.tv_sec ||
        now.st_mtim.tv_nsec != mOpened.st_mtim.tv_nsec) {
        RefuseChanged();
    }
}

// A file can be written to without becoming longer or, by its clock, younger.
void InputFile::RequireSameBytes() {
    if (!mHash) return;
    const std::string hash = mHash->Text();
    if (mWholeHash.empty()) mWholeHash = hash;
    if (hash != mWholeHash) RefuseChanged();
}

void InputFile::RefuseChanged() const { throw InputError(mName + ": changed while it was read"); }

// The byte is counted from 1, as lines are.
void InputFile::RefuseArchive(std::uint64_t byte, const std::string& problem) const {
    throw InputError(fmt::format("{}: byte {}: {}", mName, byte, problem));
}

void InputFile::Fail(int error) const {
    if (error == ENOMEM) throw std::bad_alloc();
    if (mDescriptor == STDIN_FILENO && error == EBADF) throw InputError(mName + ": is not open");
    throw InputError(mName + ": " + std::generic_category().message(error));
}

}  // namespace app
