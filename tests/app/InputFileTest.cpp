#include "app/base/InputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "Folder.h"
#include "app/base/Errors.h"
#include "fakes/Fakes.h"

namespace {

void SetTime(const fakes::Numbers& time) {
    const timespec change = {static_cast<time_t>(time.at(0)), static_cast<long>(time.at(1))};
    const timespec times[] = {change, change};
    EXPECT_EQ(utimensat(AT_FDCWD, "F", times, 0), 0);
}

TABLE_TEST(InputFile, ThatChangesWhileItIsReadIsRefused, 4) {
    const fakes::Folder folder;
    fakes::WriteFile("F", "12345678");
    SetTime({5, 5});
    if (row.Is(0, "-", "F") && !std::freopen("F", "r", stdin)) FAIL() << "not opened";
    app::Progress progress(nullptr);
    fakes::Query query;
    app::InputFile input(row.Text(0), progress, query);
    char bytes[100];
    EXPECT_EQ(input.Read(bytes, 4), 4U);
    for (const double size : row.Numbers(1)) {
        EXPECT_EQ(truncate("F", static_cast<off_t>(size)), 0);
    }
    if (!row.Text(2).empty()) SetTime(row.Numbers(2));
    try {
        EXPECT_EQ(std::to_string(input.Read(bytes, sizeof bytes)), row.Text(3));
    } catch (const app::InputError& error) {
        EXPECT_EQ(error.what(), input.Name() + ": changed while it was read");
        EXPECT_EQ(row.Text(3), "refused");
    }
}

}  // namespace
