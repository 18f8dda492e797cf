#include "app/base/Interrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

TEST(Interrupt, TurnsASignalIntoACancellation) {
    for (const int signal : {SIGINT, SIGTERM}) {
        app::Interrupt interrupt;
        EXPECT_FALSE(interrupt.QueryCancel());
        raise(signal);
        EXPECT_TRUE(interrupt.QueryCancel());
    }
    std::signal(SIGINT, SIG_IGN);
    app::Interrupt interrupt;
    raise(SIGINT);
    EXPECT_FALSE(interrupt.QueryCancel()) << "ignored before";
    std::signal(SIGINT, SIG_DFL);
}

}  // namespace
