#include "app/base/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

std::string FileName(const std::string& path) {
    if (path == "-") return "standard input";
    return path.empty() ? "\"\"" : Printable(path);
}

InputFile::InputFile(const std::string& path, Reading reading, Progress& progress,
                     MCQueryCancel& cancel)
    : mName(FileName(path)), mProgress(progress), mCancel(cancel) {
    const bool isInput = path == "-";
    if (isInput) {
        mDescriptor = STDIN_FILENO;
    } else {
        Open(path, reading);
    }
    const bool known = fstat(mDescriptor, &mOpened) == 0;
    mIsRegular = known && S_ISREG(mOpened.st_mode);
    // Standard input may begin anywhere in its file.
    if (mIsRegular && !isInput) mSize = static_cast<std::uint64_t>(mOpened.st_size);
    if (!mSize && reading == Reading::Repeated) {
        if (!isInput) close(mDescriptor);
        throw InputError(mName + (known && S_ISDIR(mOpened.st_mode)
                                      ? ": is a directory"
                                      : ": must be a regular file, because it is read more than "
                                        "once"));
    }
}

// To open a named pipe can mean to wait for its writer. There is no point in that for a file that
// is to be read repeatedly; regular files are not affected by O_NONBLOCK.
void InputFile::Open(const std::string& path, Reading reading) {
    const int flags = O_RDONLY | O_CLOEXEC | (reading == Reading::Repeated ? O_NONBLOCK : 0);
    while ((mDescriptor = open(path.c_str(), flags)) < 0) {
        if (errno != EINTR) Fail(errno);
        if (mCancel.QueryCancel()) throw Cancelled();
    }
}

InputFile::~InputFile() {
    if (mDescriptor > STDIN_FILENO) close(mDescriptor);
}

void InputFile::PutBack(std::string beginning) {
    mPutBack = std::move(beginning);
    mPutBackUsed = 0;
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
    std::size_t filled = mPutBack.copy(buffer, size, mPutBackUsed);
    mPutBackUsed += filled;
    while (filled < size) {
        if (mCancel.QueryCancel()) throw Cancelled();
        const ssize_t got = read(mDescriptor, buffer + filled, size - filled);
        if (got == 0) {
            RequireUnchanged();
            break;
        }
        if (got < 0) {
            if (errno == EINTR) continue;
            Fail(errno);
        }
        filled += static_cast<std::size_t>(got);
        mDone += static_cast<std::uint64_t>(got);
        mProgress.Update(mName, mPass, mDone, mSize);
    }
    return filled;
}

void InputFile::Rewind() {
    RequireUnchanged();
    if (lseek(mDescriptor, 0, SEEK_SET) != 0) Fail(errno);
    mDone = 0;
    PutBack({});
    ++mPass;
}

// What another program writes meanwhile is read half, and passes over different contents do not
// belong together.
void InputFile::RequireUnchanged() const {
    if (!mIsRegular) return;
    struct stat now = {};
    if (fstat(mDescriptor, &now) != 0) Fail(errno);
    if (now.st_dev != mOpened.st_dev || now.st_ino != mOpened.st_ino ||
        now.st_size != mOpened.st_size || now.st_mtim.tv_sec != mOpened.st_mtim.tv_sec ||
        now.st_mtim.tv_nsec != mOpened.st_mtim.tv_nsec) {
        RefuseChanged();
    }
}

void InputFile::RefuseChanged() const { throw InputError(mName + ": changed while it was read"); }

void InputFile::Fail(int error) const {
    if (error == ENOMEM) throw std::bad_alloc();
    if (mDescriptor == STDIN_FILENO && error == EBADF) throw InputError(mName + ": is not open");
    throw InputError(mName + ": " + std::generic_category().message(error));
}

}  // namespace app
