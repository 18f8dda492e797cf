#include "accredit/documents/Reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "fakes/Documents.h"
#include "fakes/Summaries.h"

namespace {

using MADocuments::ReadReference;
using MADocuments::Reference;
using MADocuments::WriteReference;
using testing::HasSubstr;

// A document with everything in it that the reader knows.
const std::string& Document() {
    static const std::string document = [] {
        std::ostringstream text;
        text << std::ifstream(ACCREDIT_TABLE_FOLDER "/everything.pmml").rdbuf();
        return text.str();
    }();
    return document;
}

// Why the reader refuses the document, or nothing. A document that it takes comes back as it was
// once it is written and read again.
std::string WhyRefused(const std::string& document) {
    try {
        const std::string written = WriteReference(ReadReference(document));
        EXPECT_EQ(WriteReference(ReadReference(written)), written);
    } catch (const MADocuments::DocumentError& error) {
        return error.what();
    }
    return "";
}

TEST(Reference, ComesBackFromItsDocument) {
    const Reference reference = ReadReference(Document());
    EXPECT_EQ(WriteReference(reference), Document());
    EXPECT_EQ(reference.missing.Texts(), (std::vector<std::string>{"", "NA", "?"}));
    EXPECT_EQ(reference.missingCounts, (std::vector<std::uint64_t>{1, 0, 1}));
    EXPECT_EQ(reference.application.timestamp, "today");
    EXPECT_EQ(fakes::Contents(reference.stats, 1), "4; M M M M; ; 2 2");
    fakes::KeepDocument(Document());

    const Reference ignoring = ReadReference(Document(), {"t", "n"});
    EXPECT_EQ(ignoring.stats.GetVarCount(), 1U);
    EXPECT_EQ(ignoring.missingCounts, (std::vector<std::uint64_t>{1}));
    EXPECT_THROW(ReadReference(Document(), {"t", "n", "k"}), MADocuments::DocumentError);
}

// The document with the first place that has one text having another.
std::string With(const std::string& from, const std::string& to) {
    std::string document = Document();
    const std::size_t place = document.find(from);
    if (place == std::string::npos) fakes::Refuse(from, "is not in the document");
    return document.replace(place, from.size(), to);
}

TABLE_TEST(ReadReference, RefusesWhatItDoesNotUnderstandAndSaysWhere, 3) {
    const std::string why = WhyRefused(With(row.Text(0), row.Text(1)));
    EXPECT_THAT(why, HasSubstr(row.Text(2)));
    EXPECT_THAT(why, testing::MatchesRegex("[0-9]+:[0-9]+: (.|\n)*"));
}

TABLE_TEST(ReadReference, TakesWhatNeedNotBeSo, 2) {
    EXPECT_EQ(WhyRefused(With(row.Text(0), row.Text(1))), "");
}

// "cases; min max mean deviation; cut points; frequencies" of one variable.
TABLE_TEST(ReadReference, RefusesSummariesThatContradictThemselves, 2) {
    const std::vector<std::string> parts = fakes::Split(row.Text(0) + " ", ';');
    ASSERT_EQ(parts.size(), 4U);
    const fakes::Numbers s = fakes::Exactly(4, fakes::ToNumbers(parts[1]));
    MADistStatsImp stats(fakes::List("x"), nullptr);
    const auto cases = static_cast<unsigned long>(fakes::ToNumber(parts[0]));
    ASSERT_TRUE(stats.SetSummStats(0, cases, s[0], s[1], s[2], s[3]));
    ASSERT_TRUE(stats.SetFreqs(0, fakes::ToNumbers(parts[3]), fakes::ToNumbers(parts[2])));
    std::ostringstream out;
    ASSERT_TRUE(stats.ExportAsXML(nullptr, out).IsOK());
    const std::string why = WhyRefused(out.str());
    const std::size_t colon = why.rfind(':');
    EXPECT_EQ(why.empty() ? "taken" : why.substr(colon + 2), row.Text(1));
}

TEST(ReadReference, TakesBoundedTimeForNestedAndLongDocuments) {
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += "<a>";
    EXPECT_EQ(WhyRefused("<PMML>" + deep), "1:100: elements are nested too deep");
    const std::string text(MADocuments::kMaxDocumentSize + 1, ' ');
    EXPECT_EQ(WhyRefused(text), "a document of more than 256 MiB");
}

TEST(ReadReference, TakesWhatTheLibraryAloneWrites) {
    // Fractions, frequencies that do not sum to the cases, bins of equal values and of none, values
    // that vary without bins, variables that nothing was loaded into, and the greatest count.
    MADistStatsImp stats(fakes::List("x y equal none nobins shell many c:a,b shell-c:a,b"),
                         nullptr);
    stats.SetSummStats(0, 9, 1, 2, 1.5, 0.3);
    stats.SetFreqs(0, {4.5, 4.5}, {1.5});
    stats.SetSummStats(1, 9, 1, 2, 1.5, 0.3);
    stats.SetFreqs(1, {4.5, 7}, {1.5});
    stats.SetSummStats(2, 3, 5, 5, 5, 0);
    stats.SetFreqs(2, {0, 3, 0}, {3, 6});
    stats.SetSummStats(3, 0, 0, 0, 0, 0);
    stats.SetFreqs(3, {0, 0}, {3});
    stats.SetSummStats(4, 3, 5, 6, 5.5, 0.6);
    stats.SetSummStats(6, std::numeric_limits<unsigned long>::max(), 1, 2, 1.5, 0.3);
    stats.SetSummStats(7, 10, 0, 0, 0, 0);
    stats.SetFreqs(7, {0.5, 0.5});
    std::ostringstream out;
    ASSERT_TRUE(stats.ExportAsXML(nullptr, out).IsOK());
    fakes::KeepDocument(out.str());
    const Reference reference = ReadReference(out.str());
    // What was never loaded reads back as nothing.
    for (const unsigned int slot : {5U, 8U}) stats.SetSummStats(slot, 0, 0, 0, 0, 0);
    stats.SetFreqs(8, {0, 0});
    EXPECT_EQ(fakes::Contents(reference.stats), fakes::Contents(stats));
    EXPECT_EQ(reference.missing.Texts(), (std::vector<std::string>{"", "NA"}));
}

TEST(WriteReference, RefusesWhatADocumentCannotHold) {
    Reference reference = ReadReference(Document());
    reference.missing = MADocuments::MissingTokens({"\x01"});
    EXPECT_THROW(WriteReference(reference), MADocuments::DocumentError);
    EXPECT_THROW(WriteReference(Reference()), MADocuments::DocumentError);
}

TABLE_TEST(BeginsLikeDocument, KnowsTheFirstBytes, 2) {
    EXPECT_EQ(MADocuments::BeginsLikeDocument(row.Text(0)), row.Is(1, "document", "data"));
}

}  // namespace
