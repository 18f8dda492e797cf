#include "app/base/Progress.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>

#include "fakes/Repeats.h"

namespace {

TABLE_TEST(Progress, DrawsTheShareAndErasesItself, 4) {
    std::ostringstream terminal;
    {
        app::Progress progress(&terminal, std::chrono::milliseconds(0));
        const fakes::Numbers numbers = fakes::Exactly(2, row.Numbers(1));
        std::optional<std::uint64_t> size;
        for (const double bytes : row.Numbers(2)) size = static_cast<std::uint64_t>(bytes);
        progress.Update(fakes::Repeated(row.Text(0)), static_cast<int>(numbers[0]),
                        static_cast<std::uint64_t>(numbers[1]), size);
        EXPECT_EQ(terminal.str(), "\r\x1b[K" + fakes::Repeated(row.Text(3)));
        terminal.str("");
        progress.Erase();
        progress.Erase();
        EXPECT_EQ(terminal.str(), "\r\x1b[K");
        progress.Update("a.csv", 1, 50, 200);
        terminal.str("");
    }
    EXPECT_EQ(terminal.str(), "\r\x1b[K");
}

TEST(Progress, DrawsNothingTooEarlyAndNothingTooOften) {
    std::ostringstream terminal;
    app::Progress(&terminal, std::chrono::hours(1)).Update("a.csv", 1, 50, 200);
    app::Progress(nullptr, std::chrono::milliseconds(0)).Update("a.csv", 1, 50, 200);
    EXPECT_EQ(terminal.str(), "");
}

}  // namespace
