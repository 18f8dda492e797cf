#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "Accredit.h"
#include "accredit/documents/Reference.h"
#include "fakes/Documents.h"

namespace {

using fakes::Outcome;

// Learns the file A, and checks that every comparison with what was stored gives the report that a
// comparison with the file gives, and that storing it again changes nothing.
void ExpectStoredLikeData(const std::string& newFile, const std::string& options,
                          const std::string& checkOptions) {
    const Outcome learned = fakes::Run("learn A --output R " + options);
    ASSERT_EQ(learned.status, 0) << learned.err;
    const std::string document = fakes::ReadFile("R");
    EXPECT_EQ(MADocuments::WriteReference(MADocuments::ReadReference(document)), document);
    fakes::KeepDocument(document);

    const std::string check = "check --format=json " + checkOptions;
    const Outcome fromData = fakes::Run(check + " " + options + " A " + newFile);
    const Outcome fromStored = fakes::Run(check + " R " + newFile);
    EXPECT_LT(fromData.status, 2) << fromData.err;
    EXPECT_EQ(fromStored.status, fromData.status) << fromStored.err;
    EXPECT_EQ(fromStored.out, fromData.out);

    // So it is with the summary of the new file.
    const Outcome summarised = fakes::Run("learn --bins-of R " + newFile + " --output N");
    if (summarised.status != 0) {
        EXPECT_THAT(summarised.err, testing::HasSubstr("no column of the reference"));
        return;
    }
    const std::string summary = fakes::ReadFile("N");
    EXPECT_EQ(MADocuments::WriteReference(MADocuments::ReadReference(summary)), summary);
    fakes::KeepDocument(summary);
    for (const std::string& command : {check, "check --all " + checkOptions}) {
        EXPECT_EQ(fakes::Run(command + " R N").out, fakes::Run(command + " R " + newFile).out);
    }
}

TABLE_TEST(StoredReference, GivesTheReportsOfTheDataItWasLearnedFrom, 4) {
    const fakes::Files files(row.Text(0), row.Text(1));
    ExpectStoredLikeData("A", row.Text(2), row.Text(3));
    ExpectStoredLikeData("B", row.Text(2), row.Text(3));
}

// The weather that the project carries, and whatever files with headings a user names.
TEST(StoredReference, GivesTheReportsOfRealData) {
    const std::string more = ACCREDIT_TEST_DATA;
    for (const std::string& from : {std::string(ACCREDIT_WEATHER_FOLDER), more}) {
        if (from.empty()) continue;
        for (const auto& entry : std::filesystem::directory_iterator(from)) {
            if (entry.path().extension() != ".csv") continue;
            SCOPED_TRACE(entry.path());
            const fakes::Folder folder;
            std::filesystem::create_symlink(entry, "A");
            for (const char* name : {"new-york.csv", "seattle-2012-2014.csv", "seattle-2015.csv"}) {
                std::filesystem::remove("B");
                std::filesystem::create_symlink(
                    std::filesystem::path(ACCREDIT_WEATHER_FOLDER) / name, "B");
                ExpectStoredLikeData("B", "--missing=?", "");
            }
            ExpectStoredLikeData("A", "", "");
        }
    }
}

}  // namespace
