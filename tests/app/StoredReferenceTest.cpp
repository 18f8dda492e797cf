#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Accredit.h"
#include "accredit/documents/Reference.h"
#include "fakes/Documents.h"

namespace {

using fakes::Accredit;
using fakes::Arguments;
using fakes::Outcome;
using fakes::TempFile;

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
    EXPECT_EQ(MADocuments::WriteReference(MADocuments::ReadReference(learned.out)), learned.out);

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

// The weather that the project carries, and whatever files with headings a user names.
TEST(StoredReference, GivesTheReportsOfTheDataItWasLearnedFrom) {
    const std::string weather = ACCREDIT_WEATHER_FOLDER "/";
    std::vector<std::string> paths;
    for (const char* name : {"seattle-2012-2014.csv", "seattle-2015.csv", "new-york.csv"}) {
        paths.push_back(weather + name);
    }
    const std::string more = ACCREDIT_TEST_DATA;
    if (!more.empty()) {
        for (const auto& entry : std::filesystem::directory_iterator(more)) {
            if (entry.path().extension() == ".csv") paths.push_back(entry.path().string());
        }
    }
    for (const std::string& path : paths) {
        fakes::KeepDocument(ExpectStoredLikeData(path, paths, {"--missing=?"}));
    }
    ExpectStoredLikeData(paths[0], {paths[1]}, {}, {"--ignore=wind", "--weight=temp_max=0.3"});
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

}  // namespace
