#include "accredit/documents/Comparison.h"
#include "accredit/documents/Merge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "accredit/documents/NewRecords.h"
#include "fakes/Documents.h"
#include "fakes/Summaries.h"

namespace {

using MADocuments::Merge;
using MADocuments::Reference;
using MADocuments::UncountedData;
using testing::HasSubstr;

// "missing unreadable line code", and a minus where nothing is known.
UncountedData Uncounted(const fakes::Numbers& numbers) {
    UncountedData data;
    fakes::Exactly(4, numbers);
    if (numbers[0] >= 0) data.missing = static_cast<std::uint64_t>(numbers[0]);
    if (numbers[1] >= 0) data.unreadable = static_cast<std::uint64_t>(numbers[1]);
    data.firstUnreadableLine = static_cast<std::uint64_t>(numbers[2]);
    if (numbers[2] > 0) data.firstUnreadableText = fakes::ToText({numbers[2]});
    data.otherCategories = static_cast<int>(numbers[3]);
    return data;
}

std::string Said(const UncountedData& data) {
    const auto known = [](const std::optional<std::uint64_t>& count) {
        return count ? static_cast<double>(*count) : -1.0;
    };
    const auto line = static_cast<double>(data.firstUnreadableLine);
    EXPECT_EQ(data.firstUnreadableText, line > 0 ? fakes::ToText({line}) : "");
    return fakes::ToText(
        {known(data.missing), known(data.unreadable), line, 1.0 * data.otherCategories});
}

// One side of a row: a list, statistics, what is known besides, sources and missing tokens.
Reference Side(const fakes::Row& row, std::size_t cell) {
    Reference side;
    if (row.Text(cell).empty()) return side;
    side.stats = MADistStats(new MADistStatsImp(fakes::Loaded(row.Text(cell), row.Text(cell + 1))));
    for (const auto& numbers : row.Lists(cell + 2)) side.uncounted.push_back(Uncounted(numbers));
    side.sources = fakes::Split(row.Text(cell + 3), ' ');
    side.namesMissing = row.Text(cell + 4) != "none";
    if (side.namesMissing) {
        side.missing = MADocuments::MissingTokens::Only(fakes::Split(row.Text(cell + 4), ' '));
    }
    side.application.name = cell == 0 ? "first" : "second";
    return side;
}

TABLE_TEST(Merge, AddsWhatIsKnownOrRefuses, 12) {
    std::string got;
    try {
        const Reference merged = Merge(Side(row, 0), Side(row, 5));
        for (unsigned int slot = 0; slot < merged.stats.GetVarCount(); ++slot) {
            got += (slot == 0 ? "" : "; ") + Said(MADocuments::UncountedAt(merged, slot));
        }
        std::string sources;
        for (const std::string& source : merged.sources) sources += ' ' + source;
        EXPECT_EQ(fakes::Trimmed(sources), row.Text(11));
        EXPECT_EQ(merged.application.name, row.Text(0).empty() ? "second" : "first");
        fakes::KeepDocument(WriteReference(merged));
    } catch (const MADocuments::DocumentError& error) {
        got = error.Problem();
    }
    EXPECT_EQ(got, row.Text(10));
}

TEST(NewRecords, KeepNamesAsLongAsThereIsRoom) {
    Reference reference;
    reference.stats =
        MADistStats(new MADistStatsImp(fakes::Loaded("c:a,b n#1", "c; 3; 1 2 / n; 1; 1")));
    const std::size_t room = 5 * MADocuments::kCategorySize + 2 + 1;
    MADocuments::NewRecords records(reference, room);
    for (int time = 0; time < 2; ++time) {
        // A name, a number, no room for two letters, and after that for nothing else.
        const std::vector<std::vector<MADocuments::RecordValue>> rows = {
            {"x", 2}, {"yz", 3}, {"w", 2}, {"b", 1}, {"x", 4}, {"yz", "?"}};
        for (const auto& row : rows) EXPECT_TRUE(records.Add(row).IsOK());
        const Reference summary = records.Summary();
        EXPECT_EQ(fakes::Contents(summary.stats), "6; M M M M; ; 2 1 3 / 5; M M M M; ; 2 1 2");
        EXPECT_EQ(Said(summary.uncounted[0]), "0 -1 0 2");
        EXPECT_EQ(summary.uncounted[1], (UncountedData{0, 1, 6, "?", 2}));
        EXPECT_EQ(fakes::Contents(MADocuments::ReadReference(WriteReference(summary)).stats),
                  fakes::Contents(summary.stats));
        records.Clear();
        EXPECT_EQ(fakes::Contents(records.Summary().stats), "0; M M M M; ; / 0; M M M M; ;");
    }
    EXPECT_THROW(MADocuments::NewRecords{Reference()}, MADocuments::DocumentError);
}

TEST(UnknownCategories, AreThoseOfTheNewDataAlone) {
    Reference reference;
    reference.stats =
        MADistStats(new MADistStatsImp(fakes::Loaded("c:a,b x n#1", "c; 3; 1 2 / n; 1; 1")));
    MADocuments::NewRecords records(reference, 6 * MADocuments::kCategorySize);
    for (const auto& row : std::vector<std::vector<MADocuments::RecordValue>>{
             {"new", 1, 2.5}, {"b", 1, 1}, {"", 1, 1}, {"new", 1, 3}, {"more", 1, "?"}}) {
        EXPECT_TRUE(records.Add(row).IsOK());
    }
    std::string found;
    for (unsigned int slot = 0; slot < 4; ++slot) {
        for (const auto& [text, cases, isNamed] :
             UnknownCategories(reference, records.Summary(), slot)) {
            found += (isNamed ? text : "others") + ' ' + fakes::ToText({cases}) + "; ";
        }
    }
    EXPECT_EQ(found, "new 2; others 1; 2.5 1; others 1; ");
    // Codes beyond the categories of an encoder have no name either.
    Reference beyond;
    beyond.stats = fakes::Summary(fakes::List("c:a,b x n#1"), {{3, 1, 0}, {0, 1, 0}});
    ASSERT_EQ(UnknownCategories(reference, beyond, 0).size(), 1U);
    EXPECT_FALSE(UnknownCategories(reference, beyond, 0)[0].isNamed);
    EXPECT_TRUE(UnknownCategories(reference, reference, 0).empty());
    EXPECT_TRUE(UnknownCategories(reference, Reference(), 0).empty());
}

// One request with such a text must not keep a service from storing what it has seen.
TEST(NewRecords, CountTextsThatNoDocumentHoldsAsOneCategory) {
    Reference reference;
    reference.stats = MADistStats(new MADistStatsImp(fakes::Loaded("c:a,b", "c; 3; 1 2")));
    MADocuments::NewRecords records(reference);
    for (const char* text : {"x", "\xFF", "a\x01", "\xEF\xBF\xBF", "y", "\xFF"}) {
        EXPECT_TRUE(records.Add({text}).IsOK());
    }
    const Reference stored = MADocuments::ReadReference(WriteReference(records.Summary()));
    EXPECT_EQ(fakes::Contents(stored.stats), "6; M M M M; ; 1 1 4");
    EXPECT_EQ(stored.uncounted[0].otherCategories, 2);
}

}  // namespace
