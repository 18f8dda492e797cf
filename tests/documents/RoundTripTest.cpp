// Summaries of any names, categories and numbers: what is exported comes back, and is written again
// as the same text.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "accredit/documents/Contradictions.h"
#include "accredit/documents/Reference.h"
#include "fakes/Documents.h"
#include "fakes/Summaries.h"

namespace {

using MADocuments::Reference;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

using Limits = std::numeric_limits<double>;

class Random {
public:
    explicit Random(unsigned int seed) : mBits(seed) {}

    std::size_t Below(std::size_t n) { return mBits() % n; }

    std::string Text() {
        static const std::vector<std::string> texts{
            "",     " ",         "\t",       "\n",       "\r\n", " a",          "a ", "a\nb",
            "a",    "b",         "NA",       " NA ",     "NULL", "<NA>",        "\"", "a\"b",
            "\\",   "a \\",      "\\\"",     "a  b",     "&lt;", "]]>",         "-0", "1",
            "\xC3", "\xC3\xA4 ", "\xC2\xA0", "\xE2\x80", "\x01", "\xEF\xBB\xBF"};
        return texts[Below(texts.size())];
    }

    double Number() {
        static const fakes::Numbers numbers{-0.0,
                                            1.0,
                                            2.0,
                                            3.0,
                                            -1.0,
                                            0.5,
                                            0.1,
                                            7.0,
                                            1e16,
                                            -1e-300,
                                            1e150,
                                            Limits::denorm_min(),
                                            Limits::min(),
                                            Limits::max(),
                                            1e-151,
                                            -1e139,
                                            -0.1,
                                            18446744073709551616.0,
                                            fakes::kMissing,
                                            std::nextafter(Limits::lowest(), 0.0)};
        // Most are small, so that they sum to something and some are equal.
        if (Below(3) > 0) return static_cast<double>(Below(4));
        return Below(60) == 0 ? Limits::infinity() : numbers[Below(numbers.size())];
    }

    fakes::Numbers Numbers(std::size_t count) {
        fakes::Numbers numbers(count);
        for (double& number : numbers) number = Number();
        return numbers;
    }

    fakes::Numbers CutPoints() {
        fakes::Numbers cuts = Numbers(Below(6));
        std::sort(cuts.begin(), cuts.end());
        cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
        return cuts;
    }

private:
    std::mt19937 mBits;
};

std::shared_ptr<IMCEncoder> MakeEncoder(Random& random) {
    if (random.Below(8) == 0) return nullptr;
    if (random.Below(2) == 0) {
        return std::make_shared<MCMTD_NAMESPACE::MCNumberEncoder>(random.Numbers(random.Below(5)));
    }
    auto texts = std::make_shared<MCMTD_NAMESPACE::MCStringEncoder>();
    for (std::size_t n = random.Below(5); n > 0; --n) texts->AddCategory(random.Text());
    return texts;
}

// Measure levels are those of the host, and others.
MCVarList MakeList(Random& random) {
    MCVarList list;
    for (std::size_t n = 1 + random.Below(4); n > 0; --n) {
        const auto encoder = MakeEncoder(random);
        const int own = encoder ? encoder->GetNumCategories() : 0;
        const int other = static_cast<int>(random.Below(6));
        list.AddShared(
            std::make_shared<MCVariable>(random.Text(), static_cast<int>(random.Below(6)) - 1,
                                         random.Below(9) > 0 ? IMCVariable::VariableRoleInput
                                                             : IMCVariable::VariableRoleNone,
                                         random.Below(3) > 0 ? own : other),
            encoder);
    }
    list.Add(MCVariable::Continuous("last"));
    return list;
}

MADistStats Loaded(Random& random, const MCVarList& list) {
    constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();
    constexpr unsigned long kCounts[] = {0, 1, 2, 3, 9, 1UL << 53U, kMost};
    auto stats = std::make_unique<MADistStatsImp>(list, nullptr);
    for (unsigned int slot = 0; slot < stats->GetVarCount(); ++slot) {
        const fakes::Numbers cuts = random.CutPoints();
        stats->SetFreqs(slot, random.Numbers(cuts.empty() ? 0 : cuts.size() + 1), cuts);
        stats->SetFreqs(slot, random.Numbers(random.Below(6)));
        if (random.Below(5) == 0) continue;
        const fakes::Numbers values = random.Numbers(4);
        const double max = random.Below(2) == 0 ? values[0] : values[1];
        stats->SetSummStats(slot, kCounts[random.Below(std::size(kCounts))], values[0], max,
                            values[2], values[3]);
    }
    return MADistStats(stats.release());
}

MADistStats Passed(Random& random, const MCVarList& list) {
    std::vector<fakes::Numbers> records;
    for (std::size_t n = random.Below(9); n > 0; --n) {
        records.push_back(random.Numbers(list.Size()));
        // Codes are given memory up to the highest.
        for (double& value : records.back()) {
            if (value > 1e6) value = 6.0;
        }
    }
    std::vector<fakes::Numbers> cutPoints;
    const bool given = random.Below(2) == 0;
    for (unsigned int i = 0; given && i < list.Size(); ++i) {
        const IMCVariable& variable = *list.GetVarAt(static_cast<int>(i));
        if (variable.GetRole() != IMCVariable::VariableRoleInput) continue;
        const bool categorical = MCMTD_NAMESPACE::IsCategoricalLevel(variable.GetMeasureLevel());
        cutPoints.push_back(categorical ? fakes::Numbers() : random.CutPoints());
    }
    return fakes::Summary(list, records, cutPoints);
}

// The contents that a document gives back: of a categorical variable a frequency for each category.
std::string Expected(const MADistStats& stats, unsigned int slot) {
    if (!stats.IsCategorical(slot)) return fakes::Contents(stats, slot);
    const IMCEncoder& encoder = *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
    fakes::Numbers frequencies = stats.GetFrequencies(slot);
    const auto categories = static_cast<std::size_t>(encoder.GetNumCategories());
    frequencies.resize(std::max(frequencies.size(), categories), 0.0);
    return fakes::Trimmed(std::to_string(stats.GetNumberOfCases(slot)) + "; M M M M; ; " +
                          fakes::ToText(frequencies));
}

std::string Categories(const MADistStats& stats, unsigned int slot) {
    const IMCEncoder& encoder = *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
    std::string categories = std::to_string(encoder.GetValueType());
    for (int code = 0; stats.IsCategorical(slot) && code < encoder.GetNumCategories(); ++code) {
        categories +=
            "|" + encoder.DecodeString(code) + fakes::ToText({encoder.DecodeNumber(code)});
    }
    return stats.IsCategorical(slot) ? categories : "";
}

void ExpectSame(const MADistStats& read, const MADistStats& written) {
    ASSERT_EQ(read.GetVarCount(), written.GetVarCount());
    for (unsigned int slot = 0; slot < read.GetVarCount(); ++slot) {
        const auto variable = [slot](const MADistStats& of) {
            return of.GetVarList().GetVarAt(of.GetVarListIndex(slot));
        };
        EXPECT_EQ(variable(read)->GetName(), variable(written)->GetName());
        EXPECT_EQ(fakes::Contents(read, slot), Expected(written, slot));
        EXPECT_EQ(Categories(read, slot), Categories(written, slot));
        if (read.IsCategorical(slot)) {
            EXPECT_EQ(variable(read)->GetNumCategories(), read.GetFrequencies(slot).size());
        }
        EXPECT_EQ(MADocuments::FindContradiction(read, slot),
                  MADocuments::FindContradiction(written, slot));
    }
}

TEST(RoundTrip, GivesBackAllThatIsExported) {
    constexpr unsigned int kSummaries = 4000;
    unsigned int exported = 0;
    for (unsigned int seed = 0; seed < kSummaries && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const MCVarList list = MakeList(random);
        const bool passes = random.Below(2) == 0;
        const MADistStats stats = passes ? Passed(random, list) : Loaded(random, list);
        const MCApplicInfo4XML info{random.Text(), random.Text(), random.Text()};
        std::ostringstream out;
        if (!stats.ExportAsXML(&info, out).IsOK()) continue;
        if (++exported <= 50) fakes::KeepDocument(out.str());
        const Reference reference = MADocuments::ReadReference(out.str());
        ExpectSame(reference.stats, stats);
        EXPECT_EQ(reference.application.timestamp, info.timestamp);
        EXPECT_EQ(MADocuments::WriteReference(reference), out.str());
    }
    EXPECT_GT(exported, kSummaries / 5);
}

}  // namespace
