#include "app/base/OutputFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Accredit.h"
#include "TempFile.h"
#include "app/base/Errors.h"
#include "fakes/Tables.h"

namespace {

std::string failing;  // the names of the functions below that fail

int Fails(const char* function) {
    errno = EPERM;
    return failing.find(function) == std::string::npos ? 0 : -1;
}

}  // namespace

// These stand before those of the C library.
extern "C" int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
    struct stat status = {};
    EXPECT_EQ(fstat(descriptor, &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << "somebody may open the file too early";
    EXPECT_EQ(status.st_size, 0);
    return Fails("fchown") != 0 ? -1
                                : static_cast<int>(syscall(SYS_fchown, descriptor, owner, group));
}

extern "C" int fsetxattr(int descriptor, const char* name, const void* value, std::size_t size,
                         int flags) noexcept {
    return Fails("fsetxattr") != 0
               ? -1
               : static_cast<int>(syscall(SYS_fsetxattr, descriptor, name, value, size, flags));
}

namespace {

namespace fs = std::filesystem;
using app::OutputFile;

// A folder that goes with the object.
class Folder {
public:
    Folder() { fs::create_directories(mPath); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { fs::remove_all(mPath); }

    std::string Path(const std::string& name) const { return mPath + "/" + name; }
    std::size_t FileCount() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(mPath), fs::directory_iterator()));
    }

private:
    std::string mPath = "/tmp/accredit-output-" + std::to_string(getpid());
};

TEST(OutputFile, ReplacesTheFileAndNothingElse) {
    const Folder folder;
    OutputFile(folder.Path("new")).Replace("first");
    EXPECT_EQ(fakes::ReadFile(folder.Path("new")), "first");
    ASSERT_EQ(chmod(folder.Path("new").c_str(), 0640), 0);
    fs::create_symlink("new", folder.Path("link"));
    OutputFile(folder.Path("link")).Replace("second");
    EXPECT_EQ(fakes::ReadFile(folder.Path("new")), "second");
    EXPECT_TRUE(fs::is_symlink(folder.Path("link")));
    EXPECT_EQ(fs::status(folder.Path("new")).permissions(), fs::perms(0640));
    EXPECT_EQ(folder.FileCount(), 2U);
    fs::remove(folder.Path("new"));
    fs::create_symlink(folder.Path("link"), folder.Path("far"));
    OutputFile(folder.Path("far")).Replace("third");
    EXPECT_EQ(fakes::ReadFile(folder.Path("new")), "third");
    EXPECT_EQ(folder.FileCount(), 3U);
}

TEST(OutputFile, RefusesAPlaceWhereNoFileCanBe) {
    const Folder folder;
    fs::create_symlink("circle", folder.Path("circle"));
    OutputFile(folder.Path("file")).Replace("");
    for (const std::string& path : {std::string(), folder.Path("no/file"), folder.Path(""),
                                    folder.Path("."), folder.Path("file/"), folder.Path("new/"),
                                    folder.Path("circle"), std::string("/dev/null")}) {
        EXPECT_THROW(OutputFile{path}, app::OutputError) << path;
    }
    EXPECT_EQ(folder.FileCount(), 2U);
}

TEST(OutputFile, LeavesWhatWasThereIfTheFileCannotGrow) {
    const Folder folder;
    OutputFile(folder.Path("file")).Replace("before");
    rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit small = {1000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(OutputFile(folder.Path("file")).Replace(std::string(5000, 'x')), app::OutputError);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    EXPECT_EQ(fakes::ReadFile(folder.Path("file")), "before");
    EXPECT_EQ(folder.FileCount(), 1U);
}

TEST(OutputFile, IsNotStoppedByWhatKilledRunsLeft) {
    const Folder folder;
    for (int i = 0; i < 100; ++i) {
        const std::string name = ".accredit-" + std::to_string(getpid()) + "-" + std::to_string(i);
        std::ofstream(folder.Path(name + ".tmp"));
    }
    OutputFile(folder.Path("file")).Replace("text");
    EXPECT_EQ(fakes::ReadFile(folder.Path("file")), "text");
}

// An access control list as the system keeps it: a version, then tag, rights and user of each
// entry. The owner and user 1234 may read and write, the group and all others read.
const std::string kAccessList(
    "\2\0\0\0"
    "\1\0\6\0\xFF\xFF\xFF\xFF"
    "\2\0\6\0\xD2\4\0\0"
    "\4\0\4\0\xFF\xFF\xFF\xFF"
    "\x10\0\6\0\xFF\xFF\xFF\xFF"
    "\x20\0\4\0\xFF\xFF\xFF\xFF",
    44);

// The permissions and the list of a file, such as 664+list.
std::string Access(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return "";
    std::ostringstream access;
    access << std::oct << (status.st_mode & 0777U);
    if (getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0) access << "+list";
    return access.str();
}

TABLE_TEST(OutputFile, LetsNobodyInWhoWasNot, 4) {
    const Folder folder;
    const std::string file = folder.Path("file");
    const auto setList = [](const std::string& path, const char* name) {
        return setxattr(path.c_str(), name, kAccessList.data(), kAccessList.size(), 0) == 0;
    };
    const std::string old = row.Text(0);
    if (!old.empty()) {
        std::ofstream(file) << "old";
        ASSERT_EQ(chmod(file.c_str(), static_cast<mode_t>(std::stoi(old, nullptr, 8))), 0);
    }
    if ((old.size() > 3 && !setList(file, "system.posix_acl_access")) ||
        (row.Is(1, "list", "") && !setList(folder.Path(""), "system.posix_acl_default"))) {
        GTEST_SKIP() << "no access control lists under /tmp";
    }
    if (!row.Text(2).empty()) row.Is(2, "fchown", "fsetxattr");
    failing = row.Text(2);
    OutputFile(file).Replace("new");
    failing.clear();
    EXPECT_EQ(Access(file), row.Text(3));
    EXPECT_EQ(fakes::ReadFile(file), "new");
}

TEST(OutputFile, IsWholeWheneverTheProgramIsKilled) {
    const Folder folder;
    const std::size_t size = 300000;
    OutputFile(folder.Path("file")).Replace(std::string(size, 'a'));
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (char c = 'b';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
                OutputFile(folder.Path("file")).Replace(std::string(size, c));
            }
        }
        usleep(static_cast<useconds_t>(1000 + 700 * i));
        kill(child, i % 2 == 0 ? SIGTERM : SIGHUP);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        const std::string text = fakes::ReadFile(folder.Path("file"));
        EXPECT_EQ(text, std::string(size, text[0]));
        EXPECT_EQ(folder.FileCount(), 1U);
    }
}

}  // namespace
