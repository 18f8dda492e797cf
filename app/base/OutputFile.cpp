#include "app/base/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

namespace {

// Holds every signal back that can be, so that none ends the program between the first and the last
// step. The steps take no longer than the disk does. The signal of a file that grows too large is
// ignored instead: the write that caused it fails as well.
class SignalsHeldBack {
public:
    SignalsHeldBack() {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGXFSZ, &ignore, &mOldAction);
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, &mOldMask);
    }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;
    ~SignalsHeldBack() {
        sigprocmask(SIG_SETMASK, &mOldMask, nullptr);
        sigaction(SIGXFSZ, &mOldAction, nullptr);
    }

private:
    sigset_t mOldMask = {};
    struct sigaction mOldAction = {};
};

// A new file in a folder, removed in the end unless it got another name.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& folder) {
        // A name can be taken only by what a killed process of the same number left behind.
        for (int i = 0; mDescriptor < 0 && i < 100; ++i) {
            mPath = fmt::format("{}/.accredit-{}-{}.tmp", folder, getpid(), i);
            mDescriptor = open(mPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (mDescriptor < 0 && errno != EEXIST) break;
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (mDescriptor < 0) return;
        close(mDescriptor);
        if (!mRenamed) unlink(mPath.c_str());
    }

    // These give false, with errno set, on failure.
    bool IsOpen() const { return mDescriptor >= 0; }

    bool Write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t done = write(mDescriptor, text.data(), text.size());
            if (done < 0) return false;
            text.remove_prefix(static_cast<std::size_t>(done));
        }
        return fsync(mDescriptor) == 0;
    }

    // The owner only as far as the system lets the program change it.
    bool TakePermissionsOf(const std::string& path) const {
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0) return errno == ENOENT;
        if (fchown(mDescriptor, status.st_uid, status.st_gid) != 0) {
            [[maybe_unused]] const int changed =
                fchown(mDescriptor, static_cast<uid_t>(-1), status.st_gid);
        }
        return fchmod(mDescriptor, status.st_mode & 0777U) == 0;
    }

    bool RenameTo(const std::string& path) {
        mRenamed = rename(mPath.c_str(), path.c_str()) == 0;
        return mRenamed;
    }

private:
    std::string mPath;
    int mDescriptor = -1;
    bool mRenamed = false;
};

// Makes the new name as safe as the contents. Where the system cannot, the file is there all the
// same.
void SyncFolder(const std::string& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

// The place that a path leads to, whether or not a file stands there. The system follows no more
// links than these either.
std::filesystem::path WithoutLinks(std::filesystem::path path) {
    for (int links = 0; links < 40; ++links) {
        std::error_code notALink;
        const std::filesystem::path target = std::filesystem::read_symlink(path, notALink);
        if (notALink) break;
        path = path.parent_path() / target;
    }
    return path;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : mName(path.empty() ? "\"\"" : Printable(path)) {
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (path.empty() || (!exists && errno != ENOENT)) Fail(errno);
    if (exists && !S_ISREG(status.st_mode)) throw OutputError(mName + ": is not a regular file");

    const std::filesystem::path place = WithoutLinks(path);
    mPath = place.string();
    mFolder = place.has_parent_path() ? place.parent_path().string() : ".";
    if (access(mFolder.c_str(), W_OK | X_OK) != 0) Fail(errno);
    if (exists && access(mPath.c_str(), W_OK) != 0) Fail(errno);
}

void OutputFile::Replace(std::string_view text) {
    const SignalsHeldBack heldBack;
    TemporaryFile file(mFolder);
    if (!file.IsOpen() || !file.TakePermissionsOf(mPath) || !file.Write(text) ||
        !file.RenameTo(mPath)) {
        Fail(errno);
    }
    SyncFolder(mFolder);
}

void OutputFile::Fail(int error) const {
    throw OutputError(mName + ": " + std::generic_category().message(error));
}

}  // namespace app
