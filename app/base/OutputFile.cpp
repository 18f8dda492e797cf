#include "app/base/OutputFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <linux/limits.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <vector>

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

constexpr const char* kAccessList = "system.posix_acl_access";

// The access control list of the file, empty if it has none; nothing if it cannot be read.
std::optional<std::vector<char>> AccessListOf(const std::string& path) {
    std::vector<char> list(XATTR_SIZE_MAX);
    const ssize_t size = getxattr(path.c_str(), kAccessList, list.data(), list.size());
    if (size < 0 && errno != ENODATA && errno != ENOTSUP) return std::nullopt;
    list.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return list;
}

// Gives the file this list in place of one that it may have from its folder. False on failure.
bool SetAccessList(int descriptor, const std::vector<char>& list) {
    if (!list.empty()) return fsetxattr(descriptor, kAccessList, list.data(), list.size(), 0) == 0;
    return fremovexattr(descriptor, kAccessList) == 0 || errno == ENODATA || errno == ENOTSUP;
}

// A new file in a folder, removed in the end unless it got another name.
class TemporaryFile {
public:
    TemporaryFile(const std::string& folder, mode_t mode) {
        do {
            std::uint64_t number = 0;
            if (getrandom(&number, sizeof number, 0) != sizeof number) return;
            mPath = fmt::format("{}/.accredit-{:016x}.tmp", folder, number);
            mDescriptor = open(mPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        } while (mDescriptor < 0 && errno == EEXIST);
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

    // Gives the new file the owner, the group and the permissions of the file at `path`, whose
    // status is given. Where the system does not let the program do that, nobody may use the new
    // file who could not use the old one: if the group cannot be kept, the new group and all others
    // get only what the old group and all others both had, and if there is an access control list
    // that cannot be set or that was made for the old group, the owner alone may use the file.
    bool TakePermissionsOf(const std::string& path, const struct stat& status) const {
        constexpr auto kSameOwner = static_cast<uid_t>(-1);
        const bool sameGroup = fchown(mDescriptor, status.st_uid, status.st_gid) == 0 ||
                               fchown(mDescriptor, kSameOwner, status.st_gid) == 0;
        const std::optional<std::vector<char>> list = AccessListOf(path);
        mode_t mode = status.st_mode & 0777U;
        if (!list || !SetAccessList(mDescriptor, *list) || (!sameGroup && !list->empty())) {
            mode &= 0700U;
        } else if (!sameGroup) {
            const mode_t both = mode & (mode >> 3U) & 07U;
            mode = (mode & 0700U) | (both << 3U) | both;
        }
        return fchmod(mDescriptor, mode) == 0;
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
    struct stat old = {};
    const bool exists = stat(mPath.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) Fail(errno);
    // Nobody else opens the file before it has the permissions of the old one.
    TemporaryFile file(mFolder, exists ? 0600 : 0666);
    if (!file.IsOpen() || (exists && !file.TakePermissionsOf(mPath, old)) || !file.Write(text) ||
        !file.RenameTo(mPath)) {
        Fail(errno);
    }
    SyncFolder(mFolder);
}

void OutputFile::Fail(int error) const {
    if (error == ENOMEM) throw std::bad_alloc();
    throw OutputError(mName + ": " + std::generic_category().message(error));
}

}  // namespace app
