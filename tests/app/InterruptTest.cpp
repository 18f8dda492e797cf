#include "app/base/Interrupt.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>

#include "Folder.h"
#include "app/base/Errors.h"

namespace {

TEST(Interrupt, TurnsASignalIntoACancellation) {
    for (const int signal : {SIGINT, SIGTERM}) {
        std::signal(signal, SIG_DFL);
        app::Interrupt interrupt;
        EXPECT_FALSE(interrupt.QueryCancel());
        raise(signal);
        EXPECT_TRUE(interrupt.QueryCancel());
        EXPECT_THROW(interrupt.EndAtOnce(), app::Cancelled);
    }
    std::signal(SIGINT, SIG_IGN);
    app::Interrupt interrupt;
    raise(SIGINT);
    EXPECT_FALSE(interrupt.QueryCancel()) << "ignored before";
    interrupt.EndAtOnce();
    raise(SIGINT);
}

// A pipe that takes no more bytes.
struct FullPipe {
    FullPipe() {
        EXPECT_EQ(pipe2(ends, O_NONBLOCK), 0);
        while (write(ends[1], "x", 1) == 1) continue;
        fcntl(ends[1], F_SETFL, 0);
    }
    int ends[2];
};

void WaitUntilAsleep(pid_t process) {
    for (char state = 'R'; state != 'S' && state != 'Z'; usleep(1000)) {
        const std::string stat = fakes::ReadFile("/proc/" + std::to_string(process) + "/stat");
        state = stat.at(stat.rfind(')') + 2);
    }
}

TEST(Interrupt, EndsARunThatWaitsForAPipe) {
    for (const int signal : {SIGINT, SIGTERM}) {
        for (const bool errorsToo : {false, true}) {
            const FullPipe full;
            const fakes::Folder folder;
            fakes::WriteFile("errors", "");
            const pid_t child = fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                std::signal(signal, SIG_DFL);
                app::Interrupt interrupt;
                interrupt.EndAtOnce();
                dup2(errorsToo ? full.ends[1] : open("errors", O_WRONLY), 2);
                _exit(static_cast<int>(write(full.ends[1], "x", 1)));
            }
            WaitUntilAsleep(child);
            const auto start = std::chrono::steady_clock::now();
            kill(child, signal);
            int status = 0;
            ASSERT_EQ(waitpid(child, &status, 0), child);
            EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 2) << status;
            EXPECT_EQ(fakes::ReadFile("errors"), errorsToo ? "" : "accredit: cancelled\n");
        }
    }
}

}  // namespace
