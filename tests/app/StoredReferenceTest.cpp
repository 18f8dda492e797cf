#include "accredit/documents/StoredReference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "Accredit.h"
#include "TempFile.h"
#include "app/base/Errors.h"
#include "app/commands/Learn.h"
#include "fakes/Documents.h"
#include "fakes/Summaries.h"

namespace {

using fakes::Accredit;
using fakes::Arguments;
using fakes::Outcome;
using fakes::TempFile;
using testing::HasSubstr;
using testing::StartsWith;

Arguments operator+(Arguments left, const Arguments& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// Learns the file, and checks that every comparison with what was stored gives the report that a
// comparison with the file gives, and that storing it again changes nothing. Gives the document.
std::string ExpectStoredLikeData(const std::string& path, const std::vector<std::string>& newPaths,
                                 const Arguments& options = {},
                                 const Arguments& checkOptions = {}) {
    SCOPED_TRACE(path);
    const Outcome learned = Accredit(Arguments{"learn", path, "--output", "-"} + options);
    EXPECT_EQ(learned.status, 0) << learned.err;
    if (learned.status != 0) return "";
    const app::SourceText document("stored", learned.out);
    EXPECT_EQ(app::WriteReference(app::ReadReference(document), path), learned.out);

    const TempFile stored(learned.out);
    for (const std::string& newPath : newPaths) {
        const Arguments check = Arguments{"check", "--format=json"} + checkOptions;
        const Outcome fromData = Accredit(check + options + Arguments{path, newPath});
        const Outcome fromStored = Accredit(check + Arguments{stored.Path(), newPath});
        EXPECT_LT(fromData.status, 2) << fromData.err;
        EXPECT_EQ(fromStored.status, fromData.status) << fromStored.err;
        EXPECT_EQ(fromStored.out, fromData.out);
    }
    return learned.out;
}

TEST(StoredReference, GivesTheReportsOfTheDataItWasLearnedFrom) {
    const std::string folder = ACCREDIT_SHARED_DATA "/";
    if (!std::filesystem::exists(folder)) GTEST_SKIP();
    const std::string train = folder + "adult-train.csv";
    const std::string test = folder + "adult-test.csv";
    fakes::KeepDocument(
        ExpectStoredLikeData(train, {train, test, folder + "weather.csv"}, {"--missing=?"}));
    ExpectStoredLikeData(test, {train}, {"--missing=?"}, {"--ignore=fnlwgt", "--weight=age=0.3"});
    for (const char* name : {"weather.csv", "birdstrikes.csv"}) {
        fakes::KeepDocument(ExpectStoredLikeData(folder + name, {folder + name}));
    }
}

TEST(StoredReference, KeepsAwkwardNamesAndValues) {
    const TempFile reference(
        "\"a \"\"<&>\",\"tab\tand\nline\",code,constant,one,none, \xE2\x82\xAC\n"
        "0.1,\"x \"\"y\",1,7,,,a\\\n"
        "1e150,  x ,-0,7,-,,b b\\\n"
        "-3,\"x\ny\",2.5e-300,7,3.25,NA,\xF0\x9F\x98\x80\n"
        "4, - ,0,7,,,\" \tNA\t\"\n");
    const TempFile other(
        "code,constant,\"a \"\"<&>\",\"tab\tand\nline\",one,none, \xE2\x82\xAC\n"
        "0,7,1,  x ,1,,a\\\n0,7,2,\"x \"\"y\",1,,b b\\\n");
    const Arguments options = {"--missing= - ", "--missing=NA", "--categorical=code"};
    const std::vector<std::string> newPaths = {reference.Path(), other.Path()};
    fakes::KeepDocument(ExpectStoredLikeData(reference.Path(), newPaths, options));
    // What was ignored when the reference was learned may be ignored again.
    ExpectStoredLikeData(reference.Path(), newPaths, options + Arguments{"--ignore=none"},
                         {"--ignore=none", "--ignore=one", "--weight=code=3"});
}

TEST(StoredReference, RandomBytesComeBackOrAreRefused) {
    std::mt19937 random(20240229);
    // The first 17 a document must hold, the last 3 it cannot hold.
    const std::string bytes =
        "abc<>&';]= \t\\|!?/\x7F\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\x01\x1F\xFF";
    for (int i = 0; i < 300; ++i) {
        std::string data;
        for (const char* row : {"h,", "1,", "2,", "3,"}) {
            std::string text;
            for (auto n = random() % 4 + 1; n > 0; --n) {
                text += bytes[random() % (i % 3 == 0 ? 17 : bytes.size())];
            }
            data += row + text + "z\n";
        }
        const TempFile file(data);
        const Outcome learned = Accredit({"learn", file.Path(), "--output", "-"});
        const bool mustBeRefused = data.find_first_of("\x01\x1F\xFF") != std::string::npos;
        EXPECT_FALSE(learned.status == 0 ? mustBeRefused : i % 3 == 0) << learned.err;
        if (learned.status == 0) {
            const std::string document = ExpectStoredLikeData(file.Path(), {file.Path()});
            if (i % 15 == 0) fakes::KeepDocument(document);
        } else {
            EXPECT_THAT(learned.err, HasSubstr("a PMML document cannot hold the column"));
            EXPECT_EQ(learned.out, "");
        }
    }
}

// A document with everything in it that the reader knows.
const std::string& Document() {
    static const std::string document = [] {
        const TempFile data("n,t,k\n1,a,1\n2,b b,2\n4,a,?\n?,b b,1\n");
        std::string text =
            Accredit({"learn", data.Path(), "--missing=?", "--categorical=k", "--output=-"}).out;
        const std::size_t time = text.find("<Timestamp>") + 11;
        return text.replace(time, text.find("</Timestamp>") - time, "today");
    }();
    return document;
}

std::string WhyRefused(const std::string& document) {
    try {
        app::ReadReference(app::SourceText("f", document));
    } catch (const std::exception& error) {
        return error.what();
    }
    return "";
}

TEST(StoredReference, RefusesWhatItDoesNotUnderstandAndSaysWhere) {
    ASSERT_EQ(WhyRefused(Document()), "");
    for (const fakes::Row& row : fakes::Rows(3)) {
        std::string document = Document();
        const std::string from = row.Text(0);
        const std::size_t place = document.find(from);
        ASSERT_NE(place, std::string::npos) << row.Label();
        document.replace(place, from.size(), row.Text(1));
        if (row.Label() == "nothing") document.clear();
        EXPECT_THAT(WhyRefused(document), StartsWith("f:")) << row.Label();
        EXPECT_THAT(WhyRefused(document), HasSubstr(row.Text(2))) << row.Label();
    }
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>";
    EXPECT_EQ(WhyRefused("<PMML>" + deep), "f:1:100: elements are nested too deep");
}

TEST(StoredReference, SurvivesAnyChangeOfADocument) {
    std::mt19937 random(3);
    const std::string& document = Document();
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        std::string changed = document;
        for (auto n = random() % 3 + 1; n > 0 && !changed.empty(); --n) {
            const std::size_t at = random() % changed.size();
            const std::size_t length = random() % 40;
            switch (random() % 5) {
                case 0:
                    changed[at] = static_cast<char>(random() % 256);
                    break;
                case 1:
                    changed[at] = "<>&\"'/= 0-9.e?!#;"[random() % 17];
                    break;
                case 2:
                    changed.erase(at, length);
                    break;
                case 3:
                    changed.insert(at, changed.substr(random() % changed.size(), length));
                    break;
                default:
                    changed.resize(i % 10 == 0 ? at : changed.size());
            }
        }
        const std::string why = WhyRefused(changed);
        refused += why.empty() ? 0 : 1;
        EXPECT_TRUE(why.empty() || why.rfind("f:", 0) == 0) << why;
    }
    EXPECT_GT(refused, 1000);
}

TEST(StoredReference, ReadsWhatTheLibraryAloneWrites) {
    // Fractions, frequencies that do not sum to the cases, bins of equal values and of none, values
    // that vary without bins, and variables that nothing was loaded into.
    MADistStatsImp stats(fakes::List("x y equal none nobins shell c:a,b shell-c:a,b"), nullptr);
    stats.SetSummStats(0, 9, 1, 2, 1.5, 0.1);
    stats.SetFreqs(0, {4.5, 4.5}, {1.5});
    stats.SetSummStats(1, 9, 1, 2, 1.5, 0.1);
    stats.SetFreqs(1, {4.5, 7}, {1.5});
    stats.SetSummStats(2, 3, 5, 5, 5, 0);
    stats.SetFreqs(2, {0, 3, 0}, {3, 6});
    stats.SetSummStats(3, 0, 0, 0, 0, 0);
    stats.SetFreqs(3, {0, 0}, {3});
    stats.SetSummStats(4, 3, 5, 6, 5.5, 1);
    stats.SetSummStats(6, 10, 0, 0, 0, 0);
    stats.SetFreqs(6, {0.5, 0.5});
    std::ostringstream out;
    ASSERT_TRUE(stats.ExportAsXML(nullptr, out).IsOK());
    fakes::KeepDocument(out.str());
    const auto reference = app::ReadReference(app::SourceText("f", out.str()));
    // What was never loaded reads back as nothing.
    for (const unsigned int slot : {5U, 7U}) stats.SetSummStats(slot, 0, 0, 0, 0, 0);
    stats.SetFreqs(7, {0, 0});
    EXPECT_EQ(fakes::Contents(reference.stats), fakes::Contents(stats));
    EXPECT_EQ(reference.missing.Texts(), (std::vector<std::string>{"", "NA"}));
}

TEST(StoredReference, OfAnOrdinalVariableCanBeChecked) {
    fakes::RecordSource source(fakes::Column({0, 1, 0}));
    MCMTD_NAMESPACE::MCVarList list;
    list.Add(
        MCMTD_NAMESPACE::MCVariable("s", 3, MCMTD_NAMESPACE::IMCVariable::VariableRoleInput, 2),
        MCMTD_NAMESPACE::MCStringEncoder({"S", "L"}));
    std::ostringstream out;
    ASSERT_TRUE(MADistStatsImp(list, source, {}, nullptr).ExportAsXML(nullptr, out).IsOK());
    const TempFile stored(out.str());
    const TempFile data("s\nS\nL\nS\n");
    EXPECT_THAT(Accredit({"check", stored.Path(), data.Path()}).out, HasSubstr("Accreditation 1"));
    const Outcome ignoring = Accredit({"check", "--ignore=S", stored.Path(), data.Path()});
    EXPECT_THAT(ignoring.err, HasSubstr("neither file has a column \"S\""));
}

TEST(Show, PrintsTheListingOrJson) {
    const TempFile stored(Document());
    const Outcome text = Accredit({"show", stored.Path()});
    EXPECT_EQ(text.status, 0);
    EXPECT_THAT(text.out, StartsWith("\n\nMADistStats: " + stored.Path() +
                                     "\n\nVariable name: n\nCase count: 3\nCut points: "));
    const auto json = nlohmann::json::parse(Accredit({"show", "--format=json", stored.Path()}).out);
    EXPECT_EQ(json["missing"], (std::vector<std::string>{"", "NA", "?"}));
    EXPECT_EQ(json["variables"][0]["missing"], 1);
    EXPECT_EQ(json["variables"][0]["maximum"], 4.0);
    EXPECT_EQ(json["variables"][1]["categories"][1]["value"], "b b");
    EXPECT_EQ(json["variables"][2]["categories"][0],
              (nlohmann::json{{"value", 1.0}, {"frequency", 2.0}}));

    const TempFile forged(std::regex_replace(Document(), std::regex("name=\"t|field=\"t"),
                                             "$&&#10;Variable name: n&#10;Case count: 9"));
    EXPECT_THAT(
        Accredit({"show", forged.Path()}).out,
        HasSubstr("\nVariable name: t\\nVariable name: n\\nCase count: 9\nCase count: 4\n"));

    const TempFile data("a\n1\n");
    EXPECT_THAT(Accredit({"show", data.Path()}).err, HasSubstr("this is not a stored reference"));
    for (const char* option : {"--missing=x", "--categorical=n", "--continuous=n"}) {
        const Outcome check = Accredit({"check", option, stored.Path(), data.Path()});
        EXPECT_EQ(check.status, 2);
        EXPECT_THAT(check.err, HasSubstr("settled when the reference was learned")) << option;
    }
}

TEST(Learn, RefusesWhatADocumentCannotHold) {
    for (const fakes::Row& row : fakes::Rows(3)) {
        const TempFile data(row.Text(0));
        const TempFile output("before");
        const Arguments options = row.Text(1).empty() ? Arguments() : Arguments{row.Text(1)};
        const Outcome outcome =
            Accredit(Arguments{"learn", data.Path(), "--output", output.Path()} + options);
        EXPECT_EQ(outcome.status, 2) << row.Label();
        const std::string where = row.Text(1) == "--missing=\x02" ? "" : data.Path() + ":";
        EXPECT_THAT(outcome.err, StartsWith("accredit: " + where)) << row.Label();
        EXPECT_THAT(outcome.err, HasSubstr(row.Text(2))) << row.Label();
        EXPECT_EQ(output.Read(), "before") << row.Label();
    }
}

TEST(Learn, CanBeCancelledAtEveryPoll) {
    std::string data = "n,c\n";
    for (int i = 0; i < 100; ++i) data += std::to_string(i) + ",x\n";
    const TempFile file(data);
    app::LearnOptions options;
    options.dataPath = file.Path();
    app::Progress progress(nullptr);
    fakes::Query all;
    app::Learn(options, progress, all);
    EXPECT_GT(all.polls, 10);
    for (int poll = 1; poll <= all.polls; ++poll) {
        fakes::Query query(poll);
        EXPECT_THROW(app::Learn(options, progress, query), app::Cancelled) << poll;
    }
}

}  // namespace
