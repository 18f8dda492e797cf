#include "app/base/OutputFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>

#include "Accredit.h"
#include "TempFile.h"
#include "app/base/Errors.h"

namespace {

namespace fs = std::filesystem;
using app::OutputFile;

// A folder that goes with the object.
class OutputFileTest : public testing::Test {
protected:
    OutputFileTest() { fs::create_directories(mFolder); }
    ~OutputFileTest() override { fs::remove_all(mFolder); }

    std::string Path(const std::string& name) const { return mFolder + "/" + name; }
    std::size_t FileCount() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(mFolder), fs::directory_iterator()));
    }

private:
    std::string mFolder = "/tmp/accredit-output-" + std::to_string(getpid());
};

TEST_F(OutputFileTest, ReplacesTheFileAndNothingElse) {
    OutputFile(Path("new")).Replace("first");
    EXPECT_EQ(fakes::ReadFile(Path("new")), "first");
    ASSERT_EQ(chmod(Path("new").c_str(), 0640), 0);
    fs::create_symlink("new", Path("link"));
    OutputFile(Path("link")).Replace("second");
    EXPECT_EQ(fakes::ReadFile(Path("new")), "second");
    EXPECT_TRUE(fs::is_symlink(Path("link")));
    EXPECT_EQ(fs::status(Path("new")).permissions(), fs::perms(0640));
    EXPECT_EQ(FileCount(), 2U);
    fs::remove(Path("new"));
    fs::create_symlink(Path("link"), Path("far"));
    OutputFile(Path("far")).Replace("third");
    EXPECT_EQ(fakes::ReadFile(Path("new")), "third");
    EXPECT_EQ(FileCount(), 3U);
}

TEST_F(OutputFileTest, RefusesAPlaceWhereNoFileCanBe) {
    fs::create_symlink("circle", Path("circle"));
    OutputFile(Path("file")).Replace("");
    for (const std::string& path :
         {std::string(), Path("no/file"), Path(""), Path("."), Path("file/"), Path("new/"),
          Path("circle"), std::string("/dev/null")}) {
        EXPECT_THROW(OutputFile{path}, app::OutputError) << path;
    }
    EXPECT_EQ(FileCount(), 2U);
}

TEST_F(OutputFileTest, LeavesWhatWasThereIfTheFileCannotGrow) {
    OutputFile(Path("file")).Replace("before");
    rlimit old = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    const rlimit small = {1000, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(OutputFile(Path("file")).Replace(std::string(5000, 'x')), app::OutputError);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    EXPECT_EQ(fakes::ReadFile(Path("file")), "before");
    EXPECT_EQ(FileCount(), 1U);
}

TEST_F(OutputFileTest, IsWholeWheneverTheProgramIsKilled) {
    const std::size_t size = 300000;
    OutputFile(Path("file")).Replace(std::string(size, 'a'));
    for (int i = 0; i < 20; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (char c = 'b';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
                OutputFile(Path("file")).Replace(std::string(size, c));
            }
        }
        usleep(static_cast<useconds_t>(1000 + 700 * i));
        kill(child, i % 2 == 0 ? SIGTERM : SIGHUP);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        const std::string text = fakes::ReadFile(Path("file"));
        EXPECT_EQ(text, std::string(size, text[0]));
        EXPECT_EQ(FileCount(), 1U);
    }
}

}  // namespace
