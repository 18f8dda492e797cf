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
#include <sstream>
#include <string>

#include "Folder.h"
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

// In a folder with a file, a folder, and links to the file, to each other and to nothing.
TABLE_TEST(OutputFile, ReplacesTheFileAndNothingElse, 3) {
    const fakes::Folder folder;
    fakes::WriteFile("file", "before");
    fs::create_directory("sub");
    fs::create_symlink("../file", "sub/up");
    fs::create_symlink("file", "link");
    fs::create_symlink(fs::absolute("link"), "far");
    fs::create_symlink("circle", "circle");
    fs::create_symlink("new", "broken");
    const auto count = folder.FileCount();
    const std::string written = row.Text(1);
    try {
        OutputFile(row.Text(0)).Replace("text");
        EXPECT_EQ(fakes::ReadFile(written), "text");
        EXPECT_TRUE(fs::is_symlink("link") && fs::is_symlink("far") && fs::is_symlink("broken"));
    } catch (const app::OutputError& error) {
        EXPECT_EQ(error.what(), row.Text(2));
    }
    EXPECT_EQ(fakes::ReadFile("file"), written == "file" ? "text" : "before");
    EXPECT_EQ(folder.FileCount(), written == "new" ? count + 1 : count);
}

TEST(OutputFile, LeavesWhatWasThereIfTheFileCannotGrow) {
    const fakes::Folder folder;
    OutputFile("file").Replace("before");
    rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit small = {1000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(OutputFile("file").Replace(std::string(5000, 'x')), app::OutputError);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    EXPECT_EQ(fakes::ReadFile("file"), "before");
    EXPECT_EQ(folder.FileCount(), 1);
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
    const fakes::Folder folder;
    const auto setList = [](const char* path, const char* name) {
        return setxattr(path, name, kAccessList.data(), kAccessList.size(), 0) == 0;
    };
    const std::string old = row.Text(0);
    if (!old.empty()) {
        fakes::WriteFile("file", "old");
        ASSERT_EQ(chmod("file", static_cast<mode_t>(std::stoi(old, nullptr, 8))), 0);
    }
    if ((old.size() > 3 && !setList("file", "system.posix_acl_access")) ||
        (row.Is(1, "list", "") && !setList(".", "system.posix_acl_default"))) {
        GTEST_SKIP() << "no access control lists under /tmp";
    }
    if (!row.Text(2).empty()) row.Is(2, "fchown", "fsetxattr");
    failing = row.Text(2);
    umask(022);
    OutputFile("file").Replace("new");
    failing.clear();
    EXPECT_EQ(Access("file"), row.Text(3));
    EXPECT_EQ(fakes::ReadFile("file"), "new");
}

TEST(OutputFile, IsWholeWheneverTheProgramIsKilled) {
    const fakes::Folder folder;
    const std::size_t size = 300000;
    OutputFile("file").Replace(std::string(size, 'a'));
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (char c = 'b';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
                OutputFile("file").Replace(std::string(size, c));
            }
        }
        usleep(static_cast<useconds_t>(1000 + 700 * i));
        kill(child, i % 2 == 0 ? SIGTERM : SIGALRM);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        const std::string text = fakes::ReadFile("file");
        EXPECT_EQ(text, std::string(size, text[0]));
        EXPECT_EQ(folder.FileCount(), 1);
    }
}

}  // namespace
