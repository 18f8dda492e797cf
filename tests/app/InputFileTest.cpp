#include "app/base/InputFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "TempFile.h"
#include "app/base/Errors.h"
#include "fakes/Fakes.h"

namespace {

// Reads a file of 8 bytes to its end, or standard input if it is there, with a change half way.
std::string Read(const std::function<void(const std::string& path)>& change, bool standardInput) {
    const fakes::TempFile file("12345678");
    if (standardInput && !std::freopen(file.Path().c_str(), "r", stdin)) return "not opened";
    app::Progress progress(nullptr);
    fakes::Query query;
    app::InputFile input(standardInput ? "-" : file.Path(), app::Reading::Once, progress, query);
    char bytes[100];
    EXPECT_EQ(input.Read(bytes, 4), 4U);
    change(file.Path());
    try {
        return std::to_string(input.Read(bytes, sizeof bytes));
    } catch (const app::InputError& error) {
        const std::string complaint = error.what();
        return complaint.substr(complaint.find(": "));
    }
}

TEST(InputFile, ThatChangesWhileItIsReadIsRefused) {
    constexpr const char* kChanged = ": changed while it was read";
    for (const bool standardInput : {false, true}) {
        EXPECT_EQ(Read([](const auto&) {}, standardInput), "4");
        for (const off_t size : {0, 6, 9}) {
            const auto resize = [size](const auto& path) {
                EXPECT_EQ(truncate(path.c_str(), size), 0);
            };
            EXPECT_EQ(Read(resize, standardInput), kChanged) << size;
        }
        const auto touch = [](const auto& path) {
            const timespec times[] = {{1, 0}, {1, 0}};
            EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        };
        EXPECT_EQ(Read(touch, standardInput), kChanged) << "same size";
    }
}

}  // namespace
