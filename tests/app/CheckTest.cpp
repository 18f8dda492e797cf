#include "app/commands/Check.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>

#include "Accredit.h"
#include "app/base/Errors.h"
#include "app/commands/Learn.h"
#include "app/commands/Report.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Accredit;
using fakes::Outcome;
using fakes::TempFile;
using testing::HasSubstr;

Outcome Check(const std::string& reference, const std::string& newData,
              const std::string& options = "") {
    return fakes::Files(reference, newData).Run("check --format=json " + options + " A B");
}

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
             << (v["reason"].is_null() ? number(v["p_value"]) : v["reason"].get<std::string>());
    }
    return gist.str();
}

TABLE_TEST(Check, ComparesEveryVariable, 4) {
    EXPECT_EQ(Gist(Check(row.Text(0), row.Text(1), row.Text(2))), row.Text(3));
}

// A summary of one continuous variable x against new values of it.
TABLE_TEST(Check, TestsNoSummaryThatSaysNothing, 3) {
    const std::vector<std::string> parts = fakes::Split(row.Text(0) + " ", ';');
    const fakes::Numbers s = fakes::Exactly(4, fakes::ToNumbers(parts.at(1)));
    MADistStatsImp stats(fakes::List("x"), nullptr);
    const auto cases = static_cast<unsigned long>(fakes::ToNumber(parts.at(0)));
    ASSERT_TRUE(stats.SetSummStats(0, cases, s[0], s[1], s[2], s[3]));
    ASSERT_TRUE(stats.SetFreqs(0, fakes::ToNumbers(parts.at(3)), fakes::ToNumbers(parts.at(2))));
    std::ostringstream document;
    ASSERT_TRUE(stats.ExportAsXML(nullptr, document).IsOK());
    EXPECT_EQ(Gist(Check(document.str(), row.Text(1))), row.Text(2));
}

TEST(Check, ComparesTenThousandColumns) {
    std::string data;
    for (int row = 0; row < 4; ++row) {
        for (int i = 0; i < 10'000; ++i) {
            data += row == 0 ? "c" + std::to_string(i)
                             : std::to_string(row * i % 7) + (i % 2 ? "" : "x");
            data += i < 9999 ? "," : "\n";
        }
    }
    const Outcome outcome = Check(data, data, "--weight c9999=3");
    EXPECT_THAT(Gist(outcome), testing::StartsWith("0 0 1; c0 c 3/3 0 1; c1 n 3/3 0 1;"));
    EXPECT_THAT(Gist(outcome), testing::EndsWith("; c9999 n 3/3 0 1"));
}

TEST(Check, AColumnOfKeysIsRefusedBeforeItTakesTheMemory) {
    std::string keys = "key\n";
    for (int i = 0; i <= 1'000'000; ++i) keys += "k" + std::to_string(i) + "\n";
    const Outcome outcome = Check(keys, "key\nk1\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("column 1 \"key\": the categories take more than 128 MiB"));
}

TEST(Check, ReadsTheNewFileFromAPipeButNotTheReference) {
    const TempFile file("a\nx\ny\n");
    const std::string pipe = file.Path() + "-pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&pipe] { std::ofstream(pipe) << "a\nx\ny\n"; });
    EXPECT_EQ(Accredit({"check", file.Path(), pipe}).status, 0);
    writer.join();
    EXPECT_THAT(Accredit({"check", pipe, file.Path()}).err, HasSubstr("must be a regular file"));
    unlink(pipe.c_str());
}

// Whenever the query says yes, be it in a read, the first, second or third pass, the run ends.
TEST(Check, AndLearnCanBeCancelledAtEveryPoll) {
    std::string data = "n,c\n";
    for (int i = 0; i < 100; ++i) data += std::to_string(i) + ",x\n";
    const TempFile file(data);
    app::CheckOptions check;
    app::LearnOptions learn;
    check.referencePath = check.newPath = learn.dataPath = file.Path();
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

// Whenever the reference is written to, the run compares with what it held before or holds after,
// or ends. The second change leaves size and time as they were: a new category gives it away.
TEST(Check, AReferenceThatChangesIsNotReadHalfAndHalf) {
    const std::string before = "n,c\n1,x\n2,y\n4,x\n8,y\n16,x\n";
    const TempFile reference(before);
    const TempFile newFile("n,c\n1,x\n9,y\n9,y\n9,y\n");
    struct stat status = {};
    ASSERT_EQ(stat(reference.Path().c_str(), &status), 0);
    const timespec times[] = {status.st_atim, status.st_mtim};
    app::CheckOptions options;
    options.referencePath = reference.Path();
    options.newPath = newFile.Path();
    const auto report = [&options](MCQueryCancel&& query) {
        app::Progress progress(nullptr);
        return app::JsonReport(app::Check(options, progress, query));
    };
    const std::string old = report(fakes::Query());
    for (const std::string& after :
         {before + "99,x\n99,x\n", before.substr(0, 4) + "1,z" + before.substr(7)}) {
        const auto change = [&] {
            reference.Write(after);
            utimensat(AT_FDCWD, reference.Path().c_str(), times, 0);
        };
        change();
        const std::string other = report(fakes::Query());
        int refused = 0;
        for (int poll = 1; poll <= 15; ++poll) {
            reference.Write(before);
            utimensat(AT_FDCWD, reference.Path().c_str(), times, 0);
            try {
                EXPECT_THAT(report(fakes::Query(poll, change)), testing::AnyOf(old, other)) << poll;
            } catch (const app::InputError& error) {
                EXPECT_THAT(error.what(), testing::EndsWith(": changed while it was read"));
                ++refused;
            }
        }
        EXPECT_GT(refused, 0);
    }
}

}  // namespace
