#include "accredit/documents/Reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "accredit/documents/Contradictions.h"
#include "fakes/Documents.h"
#include "fakes/Repeats.h"
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
        const std::string why = (error.Line() == 0 ? ""
                                                   : std::to_string(error.Line()) + ":" +
                                                         std::to_string(error.Column()) + ": ") +
                                error.Problem();
        EXPECT_EQ(error.what(), why + "; " + error.Remedy());
        EXPECT_NE(error.Remedy(), "");
        return why;
    }
    return "";
}

std::vector<std::uint64_t> Missing(const Reference& reference) {
    std::vector<std::uint64_t> counts;
    for (const auto& data : reference.uncounted) counts.push_back(data.missing.value_or(99));
    return counts;
}

TEST(Reference, ComesBackFromItsDocument) {
    const Reference reference = ReadReference(Document());
    EXPECT_EQ(WriteReference(reference), Document());
    EXPECT_EQ(reference.missing.Texts(), (std::vector<std::string>{"", "NA", "?"}));
    EXPECT_EQ(Missing(reference), (std::vector<std::uint64_t>{0, 0, 1, 0}));
    EXPECT_EQ(reference.uncounted[0].unreadable, 1U);
    EXPECT_EQ(reference.uncounted[1].unreadable, std::nullopt);
    EXPECT_EQ(reference.uncounted[0].firstUnreadableLine, 3U);
    EXPECT_EQ(reference.uncounted[0].firstUnreadableText, "n/a");
    EXPECT_EQ(reference.uncounted[3].otherCategories, 1);
    EXPECT_EQ(fakes::Contents(reference.stats, 3), "4; M M M M; ; 1 3");
    EXPECT_EQ(reference.application.timestamp, "today");
    EXPECT_EQ(reference.sources.back(), "hour <12>");
    EXPECT_EQ(fakes::Contents(reference.stats, 1), "4; M M M M; ; 2 2");
    fakes::KeepDocument(Document());

    const Reference ignoring = ReadReference(Document(), {"t", "n", "o"});
    EXPECT_EQ(ignoring.stats.GetVarCount(), 1U);
    EXPECT_EQ(Missing(ignoring), (std::vector<std::uint64_t>{1}));
    EXPECT_THROW(ReadReference(Document(), {"t", "n", "k", "o"}), MADocuments::DocumentError);
}

// The document with the first place that has one text having another.
std::string With(const std::string& from, const std::string& to) {
    std::string document = Document();
    const std::size_t place = document.find(from);
    if (place == std::string::npos) fakes::Refuse(from, "is not in the document");
    return document.replace(place, from.size(), to);
}

TABLE_TEST(ReadReference, RefusesWhatItDoesNotUnderstandAndSaysWhere, 3) {
    const std::string why = WhyRefused(With(row.Text(0), fakes::Repeated(row.Text(1))));
    EXPECT_THAT(why, HasSubstr(fakes::Repeated(row.Text(2))));
    EXPECT_THAT(why, testing::MatchesRegex("[0-9]+:[0-9]+: (.|\n)*"));
}

TABLE_TEST(ReadReference, TakesWhatNeedNotBeSo, 2) {
    EXPECT_EQ(WhyRefused(With(row.Text(0), row.Text(1))), "");
}

// What the library alone writes of variables with these statistics.
std::string Exported(const std::string& list, const std::string& statistics) {
    std::ostringstream out;
    EXPECT_TRUE(fakes::Loaded(list, statistics).ExportAsXML(nullptr, out).IsOK());
    return out.str();
}

TABLE_TEST(ReadReference, TakesSummariesThatContradictThemselves, 2) {
    const Reference reference = ReadReference(Exported("x", row.Text(0)));
    const std::string why = MADocuments::FindContradiction(reference.stats, 0);
    EXPECT_EQ(why.empty() ? "nothing" : why, row.Text(1));
}

TABLE_TEST(ReadReference, RefusesMomentsThatCannotBe, 2) {
    std::string document = Exported("x", "x; 3; 1 3 2 1; ;");
    const std::size_t begin = document.find("<Counts");
    document.replace(begin, document.find("</UnivariateStats>") - begin, row.Text(0));
    const std::string why = WhyRefused(document);
    EXPECT_EQ(why.empty() ? "" : why.substr(why.rfind(':') + 2), row.Text(1));
}

TABLE_TEST(ReadReference, TakesWhatTheLibraryAloneWrites, 3) {
    const std::string document = Exported(row.Text(0), row.Text(1));
    fakes::KeepDocument(document);
    const Reference reference = ReadReference(document);
    EXPECT_EQ(fakes::Contents(reference.stats), row.Text(2));
    EXPECT_EQ(reference.missing.Texts(), MADocuments::MissingTokens().Texts());
}

TABLE_TEST(ReadReference, RefusesWholeDocuments, 2) {
    EXPECT_EQ(WhyRefused(fakes::Repeated(row.Text(0))), row.Text(1));
}

TEST(WriteReference, RefusesWhatADocumentCannotHold) {
    Reference reference = ReadReference(Document());
    reference.missing = MADocuments::MissingTokens({"\x01"});
    EXPECT_THROW(WriteReference(reference), MADocuments::DocumentError);
    EXPECT_THROW(WriteReference(Reference()), MADocuments::DocumentError);
    reference = ReadReference(Document());
    reference.application.version = "\x01";
    EXPECT_THROW(WriteReference(reference), MADocuments::DocumentError);
    reference = ReadReference(Document());
    reference.uncounted[2].missing = 0;
    EXPECT_THROW(WriteReference(reference), MADocuments::DocumentError);
}

TEST(WriteReference, NamesTokensThatAreNoCategories) {
    std::ostringstream out;
    EXPECT_TRUE(fakes::Loaded("c:NULL,b", "c; 3; 1 2").ExportAsXML(nullptr, out).IsOK());
    Reference reference = ReadReference(out.str());
    EXPECT_EQ(WriteReference(reference), out.str());
    EXPECT_FALSE(reference.missing.Contains("NULL"));
    reference.namesMissing = true;
    EXPECT_THAT(WriteReference(reference), HasSubstr(R"(value="nan" property="missing")"));
    EXPECT_EQ(MADocuments::FindMissingCategory(reference.stats, reference.missing), -1);
    reference.missing = MADocuments::MissingTokens::Only({"b"});
    EXPECT_EQ(MADocuments::FindMissingCategory(reference.stats, reference.missing), 0);
    EXPECT_THROW(WriteReference(reference), MADocuments::DocumentError);
}

TABLE_TEST(BeginsLikeDocument, KnowsTheFirstBytes, 2) {
    EXPECT_EQ(MADocuments::BeginsLikeDocument(row.Text(0)), row.Is(1, "document", "data"));
}

}  // namespace
