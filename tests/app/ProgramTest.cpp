#include "app/Program.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app/Check.h"
#include "app/Errors.h"
#include "app/Report.h"
#include "tests/app/Accredit.h"
#include "tests/app/TempFile.h"
#include "tests/fakes/Fakes.h"

namespace {

using fakes::Accredit;
using fakes::Arguments;
using fakes::Outcome;
using fakes::TempFile;
using testing::HasSubstr;
// The options are words with blanks between them; '' is an empty one.
Outcome Check(const std::string& reference, const std::string& newData,
              const std::string& options = "") {
    const TempFile referenceFile(reference);
    const TempFile newFile(newData);
    Arguments arguments{"check", "--format=json"};
    std::istringstream words(options);
    for (std::string word; words >> word;) arguments.push_back(word == "''" ? "" : word);
    arguments.insert(arguments.end(), {referenceFile.Path(), newFile.Path()});
    return Accredit(arguments);
}

// The exit status, the status and the accreditation of a JSON report, then for each variable its
// name and kind, the cases in both files, the status and the p-value, with 6 digits.
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
        gist << " | " << v["name"].get<std::string>() << (v["kind"] == "continuous" ? " n " : " c ")
             << v["reference_cases"] << '/' << v["new_cases"] << ' ' << v["status"]["code"] << ' '
             << number(v["p_value"]);
    }
    return gist.str();
}

TEST(Check, ComparesEveryVariable) {
    const std::string four = "a,b,c,k\n1,x,1,9\n2,y,2,9\n3,x,3,9\n";
    const std::string three = "a,b,b=c\nx,1,1\ny,1,1\n";
    const std::string shifted = "a,b,b=c\nx,2,1\ny,2,1\n";  // the p-values are 1, 0 and 1
    const std::string rest = " | b n 2/2 0 0 | b=c n 2/2 0 1";
    std::string flat = "near,far,good\n";
    for (int i = 0; i < 10; ++i) {
        flat += i == 7 ? "10000000000000002,1e308," : "10000000000000000,-1e308,";
        flat += std::to_string(i % 5) + "\n";
    }
    const struct {
        const char* label;
        std::string reference;
        std::string newData;
        const char* options;
        std::string gist;
    } cases[] = {
        {"any order, blanks, missing values, another column", "n,c\n1,x\n2,y\n4,x\n8,NA\n9,\n",
         "other,c,n\n?,y, 8\t\n!,x,1\n#,x,2\n%, NA ,4\n$,?,\"9\"\n", "--missing ?",
         "0 0 1 | n n 5/5 0 1 | c c 3/3 0 1"},
        {"numbers as categories", "c\n1\n2\n", "c\n1.0\n+2e0\n", "--categorical c",
         "0 0 1 | c c 2/2 0 1"},
        {"a text among them makes all of them texts", "c\n1\nx\n", "c\n1.0\nx\n", "--categorical c",
         "1 180020 null | c c 2/2 180020 null"},
        {"texts where the reference has numbers", "c\n1\n2\n", "c\n1\nx\ny\n", "--categorical c",
         "1 180020 null | c c 2/3 180020 null"},
        {"one number category, one text", "c\n1\n", "c\nx\n", "--categorical c",
         "1 180020 null | c c 1/1 180020 null"},
        {"one text, another", "c\nx\n", "c\ny\n", "", "1 180020 null | c c 1/1 180020 null"},
        {"one text, two others", "c\nx\n", "c\ny\nz\n", "", "1 180020 null | c c 1/2 180020 null"},
        {"two texts, one of them and two others", "c\nx\ny\n", "c\ny\nz\nw\n", "",
         "1 180020 null | c c 2/3 180020 null"},
        {"an unknown category and a column that is not there", four, "a,b,k\n1,x,9\n2,z,9\n3,x,9\n",
         "",
         "1 180015 null | a n 3/3 0 1 | b c 3/3 180020 null | c n 3/0 180015 null | k n 3/3 0 1"},
        // Pearson's statistic of b is 1/2, and its p-value with 1 degree of freedom erfc(1/2).
        {"one row", four, "a,b,c,k\n1,x,1,9\n", "",
         "1 180019 null | a n 3/1 180019 null | b c 3/1 0 0.4795 | c n 3/1 180019 null | "
         "k n 3/1 180019 null"},
        {"no row", "a,b\n1,x\n2,y\n", "a,b\n", "",
         "1 180019 null | a n 2/0 180019 null | b c 2/0 180018 null"},
        {"all missing, and another constant", four, "a,b,c,k\n1,,1,8\n2,,2,8\n3,,3,8\n", "",
         "1 180018 null | a n 3/3 0 1 | b c 3/0 180018 null | c n 3/3 0 1 | k n 3/3 0 0"},
        {"nothing shared", "a\n1\n2\n", "z\n1\n", "", "1 180015 null | a n 2/0 180015 null"},
        {"cut points that do not ascend", flat, flat, "",
         "1 180003 null | near n 10/10 180003 null | far n 10/10 180003 null | good n 10/10 0 1"},
        {"plain mean", three, shifted, "", "0 0 0.666667 | a c 2/2 0 1" + rest},
        {"ignored", three, shifted, "--ignore b", "0 0 1 | a c 2/2 0 1 | b=c n 2/2 0 1"},
        {"weighted", three, shifted, "--weight=a=3 --weight b=c=0",
         "0 0 0.75 | a c 2/2 0 1" + rest},
        {"not below", three, shifted, "--weight a=2 --fail-below 0.75",
         "0 0 0.75 | a c 2/2 0 1" + rest},
        {"below", three, shifted, "--weight a=2 --fail-below 0.75000001",
         "1 0 0.75 | a c 2/2 0 1" + rest},
        {"no weight at all", three, shifted, "--weight a=0 --weight b=0 --weight b=c=0",
         "1 0 null | a c 2/2 0 1" + rest},
        {"tokens of odd looks", "a\n1\n2\n{}\n-9\n\"[1,2]\"\n", "a\n1\n2\n",
         "--missing {} --missing -9 --missing [1,2]", "0 0 1 | a n 2/2 0 1"},
        {"a heading that the reference lacks may be anything", "a\nx\n", "b,,b,a,\n1,2,3,x,4\n", "",
         "0 0 1 | a c 1/1 0 1"},
        {"a heading that is ignored may be anything", ",a\n1,x\n", "a,,\nx,1,2\n", "--ignore ''",
         "0 0 1 | a c 1/1 0 1"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Gist(Check(c.reference, c.newData, c.options)), c.gist) << c.label;
    }
    EXPECT_THAT(Check(three, three, "--weight a=-0").out, testing::Not(HasSubstr("-0.0")));
}

TEST(Check, RefusesOptionsThatMakeNoSense) {
    const char* const cases[] = {"--ignore z",
                                 "--categorical z",
                                 "--continuous z",
                                 "--weight z=1",
                                 "--weight a",
                                 "--weight a=-1",
                                 "--weight a=nan",
                                 "--weight a=1 --weight a=1",
                                 "--weight a=1 --ignore a",
                                 "--weight a=1e308 --weight b=1e308",
                                 "--categorical a --continuous a",
                                 "--categorical a --ignore a",
                                 "--ignore a --ignore b",
                                 "--fail-below inf",
                                 "--unknown",
                                 "one-file-too-many"};
    for (const char* options : cases) {
        const Outcome outcome = Check("a,b\n1,x\n", "a,b\n1,x\n", options);
        EXPECT_EQ(outcome.status, 2) << options;
        EXPECT_EQ(outcome.out, "") << options;
        EXPECT_THAT(outcome.err, HasSubstr("accredit check --help")) << options;
    }
}

TEST(Check, NamesWhatIsWrongWithAFile) {
    const struct {
        std::string reference;
        std::string newData;
        const char* options;
        const char* complaint;
    } cases[] = {
        {"a\nx\n", "a\nx\n", "--continuous a", ":2: column 1 \"a\": \"x\" is not a number"},
        {"a\n1\n", "b,a\n1,2\n3,x\n", "", ":3: column 2 \"a\": \"x\" is not a number"},
        {"a,b\n,1\n", "a\nx\n", "", "--categorical 'a' when that is read, or --ignore 'a'"},
        {"a\n1\n", "a\n1e999\n", "", ":2: column 1 \"a\": \"1e999\" is not a number"},
        {"a,\n1,2\n", "a\n1\n", "", ":1: column 2 \"\": the heading is empty"},
        {"a\n1\n", "a,a\n1,2\n", "", ":1: column 2 \"a\": an earlier column has this heading"},
        {"a\n1\n", "b\n1,2\n", "", ":2: column 2: the row goes on"},
    };
    for (const auto& c : cases) {
        const Outcome outcome = Check(c.reference, c.newData, c.options);
        EXPECT_EQ(outcome.status, 2) << c.complaint;
        EXPECT_EQ(outcome.out, "") << c.complaint;
        EXPECT_THAT(outcome.err, HasSubstr(c.complaint));
    }
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
    EXPECT_THAT(Gist(outcome), testing::StartsWith("0 0 1 | c0 c 3/3 0 1 | c1 n 3/3 0 1 |"));
    EXPECT_THAT(Gist(outcome), testing::EndsWith("| c9999 n 3/3 0 1"));
}

TEST(Check, AColumnOfKeysIsRefusedBeforeItTakesTheMemory) {
    std::string keys = "key\n";
    for (int i = 0; i <= 1'000'000; ++i) keys += "k" + std::to_string(i) + "\n";
    const Outcome outcome = Check(keys, "key\nk1\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("column 1 \"key\": the categories take more than 128 MiB"));
    EXPECT_EQ(Gist(Check("key\nk1\n", keys)), "1 180020 null | key c 1/1000001 180020 null");
}

TEST(Check, ReadsTheNewFileFromAPipeButNotTheReference) {
    const TempFile file("a\nx\ny\n");
    const std::string pipe = file.Path() + "-pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&pipe] { std::ofstream(pipe) << "a\nx\ny\n"; });
    EXPECT_EQ(Accredit({"check", file.Path(), pipe}).status, 0);
    writer.join();
    EXPECT_THAT(Accredit({"check", pipe, file.Path()}).err, HasSubstr("must be a regular file"));
    EXPECT_THAT(Accredit({"check", "/tmp", file.Path()}).err, HasSubstr("/tmp: is a directory"));
    unlink(pipe.c_str());
    EXPECT_THAT(Accredit({"check", file.Path(), "/tmp"}).err, HasSubstr("/tmp: Is a directory"));
    EXPECT_THAT(Accredit({"check", "/no/file", file.Path()}).err,
                HasSubstr("/no/file: No such file"));
}

// Whenever the query says yes, be it in a read, the first, second or third pass, the run ends.
TEST(Check, CanBeCancelledAtEveryPoll) {
    std::string data = "n,c\n";
    for (int i = 0; i < 100; ++i) data += std::to_string(i) + ",x\n";
    const TempFile file(data);
    app::CheckOptions options;
    options.referencePath = options.newPath = file.Path();
    app::Progress progress(nullptr);
    fakes::Query counting;
    app::Check(options, progress, counting);
    EXPECT_GT(counting.polls, 15);
    for (int poll = 1; poll <= counting.polls; ++poll) {
        fakes::Query query(poll);
        EXPECT_THROW(app::Check(options, progress, query), app::Cancelled) << poll;
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

TEST(Program, NamesTheWordThatIsWrong) {
    const std::pair<Arguments, const char*> cases[] = {
        {{"foo", "a"}, "unknown command 'foo'"},
        {{"check", "--ignor=x", "--format", "xml", "a"}, "unknown option '--ignor'"},
        {{"check", "a", "b", "c"}, "unexpected argument 'c'"},
        {{"check", "--format=text", "--format", "json", "a", "b"}, "--format is given twice"},
        {{"check", "--format", "xml", "a", "b"}, "\"xml\" is neither"},
        {{"check", "", "a"}, "\"\": No such file"},
    };
    for (const auto& [arguments, complaint] : cases) {
        EXPECT_THAT(Accredit(arguments).err, HasSubstr(complaint));
    }
}

TEST(Program, HelpAndVersionAreAnswersAndNoCommandIsNot) {
    EXPECT_THAT(Accredit({"--version"}).out, testing::MatchesRegex("accredit [0-9.]+\n"));
    EXPECT_EQ(Accredit({"--help"}).status, 0);
    const Outcome help = Accredit({"check", "--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* option : {"--missing", "--ignore", "--categorical", "--continuous", "--weight",
                               "--fail-below", "--format", "--help", "--version"}) {
        EXPECT_THAT(help.out, HasSubstr(option));
    }
    EXPECT_EQ(Accredit({}).status, 2);
    EXPECT_EQ(Accredit({"check"}).status, 2);
}

TEST(Program, AReportThatCannotBeWrittenIsAFailure) {
    const TempFile file("a\n1\n2\n");
    const char* argv[] = {"accredit", "check", file.Path().c_str(), file.Path().c_str()};
    std::ofstream full("/dev/full");
    std::ostringstream err;
    EXPECT_EQ(app::RunProgram(4, argv, full, err, false), 2);
    EXPECT_THAT(err.str(), HasSubstr("could not be written"));
}

}  // namespace
