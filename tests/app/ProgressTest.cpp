#include "app/base/Progress.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "app/base/Characters.h"

namespace {

TEST(Progress, DrawsTheShareAndErasesItself) {
    std::ostringstream terminal;
    {
        app::Progress progress(&terminal, std::chrono::milliseconds(0));
        progress.Update("dir/a.csv", 2, 50, 200);
        EXPECT_EQ(terminal.str(), "\r\x1b[Ka.csv, pass 2 [#######-----------------------]  25 %");
        terminal.str("");
        progress.Update("-", 1, 2'500'000, {});
        EXPECT_EQ(terminal.str(), "\r\x1b[K-, pass 1 2.5 MB");
        terminal.str("");
        progress.Update(std::string(500, 'x'), 1, 300, 200);
        EXPECT_LT(terminal.str().size(), 80U);
        EXPECT_NE(terminal.str().find("100 %"), std::string::npos);
        terminal.str("");
    }
    EXPECT_EQ(terminal.str(), "\r\x1b[K");
    terminal.str("");
    app::Progress(&terminal, std::chrono::hours(1)).Update("a.csv", 1, 50, 200);
    EXPECT_EQ(terminal.str(), "") << "too early";
}

}  // namespace
