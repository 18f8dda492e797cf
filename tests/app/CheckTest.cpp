#include "app/commands/Check.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "Accredit.h"
#include "app/base/Errors.h"
#include "app/commands/Learn.h"
#include "app/commands/Report.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Outcome;
using testing::HasSubstr;

// The exit status, the status and the accreditation of a JSON report, then for each variable its
// name and kind, the cases in both files, the status and the p-value, with 6 digits, or the reason
// why there is none.
std::string Gist(const Outcome& outcome) {
    const auto number = [](const nlohmann::json& value) {
        std::ostringstream text;
        value.is_null() ? text << "null" : text << value.get<double>();
        return text.str();
    };
    const nlohmann::json report = nlohmann::json::parse(outcome.out);
    std::ostringstream gist;
    gist << outcome.status << ' ' << report["status"]["code"] << ' '
         << number(report["accreditation"]);
    for (const auto& v : report["variables"]) {
        gist << "; " << v["name"].get<std::string>() << (v["kind"] == "continuous" ? " n " : " c ")
             << v["reference_cases"] << '/' << v["new_cases"] << ' ' << v["status"]["code"] << ' '
             << (!v["p_value"].is_null() || v["status"]["code"] != 0
                     ? number(v["p_value"])
                     : v["reason"].get<std::string>());
    }
    return gist.str();
}

TABLE_TEST(Check, ComparesEveryVariable, 4) {
    const fakes::Files files(row.Text(0), row.Text(1));
    EXPECT_EQ(Gist(fakes::Run("check --format=json " + row.Text(2) + " A B")), row.Text(3));
}

// A summary of one continuous variable x against new values of it.
TABLE_TEST(Check, TestsNoSummaryThatSaysNothing, 3) {
    std::ostringstream document;
    ASSERT_TRUE(fakes::Loaded("x", row.Text(0)).ExportAsXML(nullptr, document).IsOK());
    const fakes::Files files(document.str(), row.Text(1));
    EXPECT_EQ(Gist(fakes::Run("check --format=json A B")), row.Text(2));
}

TEST(Check, ReadsPipesOneAfterTheOther) {
    const std::string data = fakes::Repeated("a,b\n@200000(#,x\n3,y\n)");
    const fakes::Files files(data, data);
    for (const char* pipe : {"first", "second"}) ASSERT_EQ(mkfifo(pipe, 0600), 0);
    const std::string expected = fakes::Run("check --format json A B").out;
    // The writer fills the second pipe only when the first has been emptied.
    std::thread writer([&data] {
        for (const char* pipe : {"first", "second"}) fakes::WriteFile(pipe, data);
    });
    EXPECT_EQ(fakes::Run("check --format json first second").out, expected);
    writer.join();
}

// Whenever the query says yes, be it in a read or in a pass, the run ends.
TEST(Check, AndLearnCanBeCancelledAtEveryPoll) {
    const fakes::Files files("n,c\n@100(#,x\n)", "");
    app::CheckOptions check;
    app::LearnOptions learn;
    check.referencePath = "A";
    learn.dataPaths = {"A"};
    check.newPaths = {"A"};
    app::Progress progress(nullptr);
    for (const auto& run : std::vector<std::function<void(MCQueryCancel&)>>{
             [&](MCQueryCancel& query) { app::Check(check, progress, query); },
             [&](MCQueryCancel& query) { app::Learn(learn, progress, query); }}) {
        fakes::Query all;
        run(all);
        EXPECT_GT(all.polls, 10);
        for (int poll = 1; poll <= all.polls; ++poll) {
            fakes::Query query(poll);
            EXPECT_THROW(run(query), app::Cancelled) << poll;
        }
    }
}

// Values whose cut points coincide are put into bins by one more pass.
TEST(Check, AndLearnReadAReferenceTwice) {
    for (const auto& [data, passes] :
         {std::pair("n,c\n1,x\n2,y\n", 2),
          std::pair("n,c\n1e16,x\n1e16,y\n10000000000000002,y\n", 3)}) {
        const fakes::Files files(data, "");
        app::LearnOptions options;
        options.dataPaths = {"A"};
        std::ostringstream terminal;
        app::Progress progress(&terminal, std::chrono::milliseconds(0));
        fakes::Query query;
        app::Learn(options, progress, query);
        for (int pass = 1; pass <= 4; ++pass) {
            const bool isMade =
                terminal.str().find("pass " + std::to_string(pass)) != std::string::npos;
            EXPECT_EQ(isMade, pass <= passes) << pass;
        }
    }
}

// Whenever the reference is written to, the run compares with what it held before or holds after,
// or ends. The last two changes leave size and time as they were, and the very last one what is
// counted of the numbers.
TEST(Check, AReferenceThatChangesIsNotReadHalfAndHalf) {
    const std::string before = "n,c\n1,x\n2,y\n4,x\n8,y\n16,x\n";
    const fakes::Files files("", "n,c\n1,x\n9,y\n9,y\n9,y\n");
    const timespec times[] = {{1, 0}, {1, 0}};
    const auto change = [&times](const std::string& text) {
        fakes::WriteFile("A", text);
        EXPECT_EQ(utimensat(AT_FDCWD, "A", times, 0), 0);
    };
    app::CheckOptions options;
    options.referencePath = "A";
    options.newPaths = {"B"};
    const auto report = [&options](MCQueryCancel&& query) {
        app::Progress progress(nullptr);
        return app::JsonReport(app::Check(options, progress, query).results, options);
    };
    change(before);
    const std::string old = report(fakes::Query());
    for (const std::string& after :
         {before + "99,x\n99,x\n", before.substr(0, 4) + "1,z" + before.substr(7),
          before.substr(0, 4) + "1,y" + before.substr(7)}) {
        change(after);
        const std::string other = report(fakes::Query());
        int refused = 0;
        for (int poll = 1; poll <= 60; ++poll) {
            change(before);
            try {
                EXPECT_THAT(report(fakes::Query(poll, [&] { change(after); })),
                            testing::AnyOf(old, other))
                    << poll;
            } catch (const app::InputError& error) {
                EXPECT_THAT(error.what(), testing::EndsWith(": changed while it was read"));
                ++refused;
            }
        }
        EXPECT_GT(refused, 0);
    }
}

}  // namespace
