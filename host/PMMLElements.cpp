#include "accredit/host/internal/PMMLElements.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "accredit/host/MCMV.h"
#include "accredit/host/MCSummaryStatistics.h"
#include "accredit/host/internal/PMMLVocabulary.h"
#include "accredit/host/internal/StrictlyAscending.h"
#include "accredit/host/internal/XMLText.h"

using MCMTD_NAMESPACE::kMCSummaryStatistics;
using MCMTD_NAMESPACE::MCSummaryStatistic;
using MCMTD_NAMESPACE::MCUniStats;
using MCXML_NAMESPACE::XMLElement;

namespace MCDetail {

namespace {

// Up to here every whole number is a double, and sums of them are exact.
constexpr double kExactLimit = 9007199254740992.0;

bool IsCount(double value) {
    return std::isfinite(value) && value >= 0.0 && value == std::floor(value);
}

// A negative zero is left to the real numbers, which keep its sign.
bool IsExactCount(double value) {
    return IsCount(value) && value <= kExactLimit && !std::signbit(value);
}

bool AreFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(),
                       [](double value) { return std::isfinite(value); });
}

double Sum(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    return sum;
}

// A missing number is left out.
void SetNumber(XMLElement& element, const std::string& name, double value) {
    if (!MCMV::IsMissing(value)) element.SetAttribute(name, FormatNumber(value));
}

ElementPtr MakeArray(std::size_t size, const std::string& type, const std::string& text) {
    ElementPtr array = NewElement(gArray);
    array->SetAttribute(gArraySize, std::to_string(size));
    array->SetAttribute(gType, type);
    array->SetText(text);
    return array;
}

// The values, and zeros behind them where they are fewer than that.
std::vector<double> AtLeast(std::size_t minimum, std::vector<double> values) {
    if (values.size() < minimum) values.resize(minimum, 0.0);
    return values;
}

// What is common to the frequencies of both kinds of variable.
class Frequencies {
public:
    Frequencies(const MCUniStats& stats, std::size_t minimum)
        : mValues(AtLeast(minimum, stats.GetFrequencies())),
          mCounts(std::all_of(mValues.begin(), mValues.end(), IsExactCount)),
          mRegular(Sum(mValues) == stats.GetNumberOfCases() &&
                   (!mCounts || stats.GetNumberOfCases() <= kExactLimit)) {}

    std::size_t Size() const { return mValues.size(); }
    bool AreCounts() const { return mCounts; }

    // Whether they sum to the number of cases, as other readers expect.
    bool AreRegular() const { return mRegular; }

    void AddTo(XMLElement& parent) const {
        std::string text;
        for (const double value : mValues) {
            if (!text.empty()) text += ' ';
            text += mCounts ? FormatWhole(value) : FormatNumber(value);
        }
        Adopt(parent, MakeArray(mValues.size(), mCounts ? gInt : gReal, text));
    }

    // Irregular ones, in an extension, which comes before all other content.
    void AddExtensionTo(XMLElement& parent) const {
        ElementPtr extension = MakeExtension("frequencies", "");
        AddTo(*extension);
        Adopt(parent, std::move(extension));
    }

private:
    std::vector<double> mValues;
    bool mCounts;
    bool mRegular;
};

double MissingOf(const MCUniStats& stats) { return stats.HasMissing() ? stats.GetMissing() : 0.0; }
double InvalidOf(const MCUniStats& stats) { return stats.HasInvalid() ? stats.GetInvalid() : 0.0; }

// The total includes missing and invalid data, and must give the cases back.
bool CountsAreGood(const MCUniStats& stats) {
    const double cases = stats.GetNumberOfCases();
    const double missing = MissingOf(stats);
    const double invalid = InvalidOf(stats);
    return IsCount(cases) && IsCount(missing) && IsCount(invalid) &&
           cases + missing + invalid - invalid - missing == cases;
}

ElementPtr MakeCounts(const MCUniStats& stats) {
    const double missing = MissingOf(stats);
    const double invalid = InvalidOf(stats);
    ElementPtr counts = NewElement(gCounts);
    counts->SetAttribute(gTotalFreq,
                         FormatWhole(std::abs(stats.GetNumberOfCases() + missing + invalid)));
    if (stats.HasMissing()) counts->SetAttribute(gMissingFreq, FormatWhole(std::abs(missing)));
    if (stats.HasInvalid()) counts->SetAttribute(gInvalidFreq, FormatWhole(std::abs(invalid)));
    return counts;
}

ElementPtr MakeNumericInfo(const MCUniStats::SummStats& summStats) {
    ElementPtr info = NewElement(gNumericInfo);
    for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
        SetNumber(*info, statistic.attribute, summStats.*statistic.value);
    }
    return info;
}

bool HasAny(const MCUniStats::SummStats& summStats) {
    return std::any_of(kMCSummaryStatistics.begin(), kMCSummaryStatistics.end(),
                       [&summStats](const MCSummaryStatistic& statistic) {
                           return !MCMV::IsMissing(summStats.*statistic.value);
                       });
}

ElementPtr MakeDiscrStats(const MCUniStats& stats, std::size_t valueCount,
                          const std::string* valueArray) {
    const Frequencies frequencies(stats, valueCount);
    ElementPtr discrStats = NewElement(gDiscrStats);
    if (!frequencies.AreRegular()) {
        frequencies.AddExtensionTo(*discrStats);
        return discrStats;
    }
    if (valueArray && frequencies.AreCounts() && frequencies.Size() == valueCount) {
        Adopt(*discrStats, MakeArray(valueCount, gString, *valueArray));
    }
    frequencies.AddTo(*discrStats);
    return discrStats;
}

ElementPtr MakeContStats(const MCUniStats& stats) {
    const Frequencies frequencies(stats, 0);
    const std::vector<double>& margins = stats.GetCutPoints();
    ElementPtr contStats = NewElement(gContStats);
    if (!frequencies.AreRegular()) frequencies.AddExtensionTo(*contStats);
    for (std::size_t bin = 0; bin < frequencies.Size(); ++bin) {
        ElementPtr interval = NewElement(gInterval);
        interval->SetAttribute(gClosure, stats.AreIntervalsOpenLeft() ? gOpenClosed : gClosedOpen);
        SetNumber(*interval, gLeftMargin, margins[bin]);
        SetNumber(*interval, gRightMargin, margins[bin + 1]);
        Adopt(*contStats, std::move(interval));
    }
    if (frequencies.AreRegular()) frequencies.AddTo(*contStats);
    return contStats;
}

}  // namespace

bool SummaryIsGood(const MCUniStats& stats) {
    const MCUniStats::SummStats& summStats = stats.GetSummStats();
    return std::all_of(kMCSummaryStatistics.begin(), kMCSummaryStatistics.end(),
                       [&summStats](const MCSummaryStatistic& statistic) {
                           return std::isfinite(summStats.*statistic.value);
                       });
}

// A margin may be missing at either end of the list only. The missing value is finite and lies
// below all others, so an open start needs no care.
bool MarginsAreGood(const MCUniStats& stats) {
    const std::vector<double>& margins = stats.GetCutPoints();
    const std::size_t bins = stats.GetFrequencies().size();
    if (stats.IsCategorical() || (margins.empty() && bins == 0)) return true;
    if (bins == 0 || margins.size() != bins + 1) return false;
    const bool openEnd = MCMV::IsMissing(margins.back());
    return AreFinite(margins) &&
           IsStrictlyAscending(margins.begin(), openEnd ? margins.end() - 1 : margins.end());
}

bool FrequenciesAreGood(const MCUniStats& stats) { return AreFinite(stats.GetFrequencies()); }

ElementPtr MakeExtension(const std::string& name, const std::string& value) {
    ElementPtr extension = NewElement(gExtension);
    extension->SetAttribute(gExtender, gExtenderId);
    extension->SetAttribute(gName, name);
    if (!value.empty()) extension->SetAttribute(gValueAttribute, value);
    return extension;
}

std::optional<std::string> ArrayToken(const std::string& value) {
    // An array stands on one line.
    if (value.find_first_of("\n\r") != std::string::npos) return std::nullopt;
    // Quotes do no harm, and every white space of Unicode needs them, so all beyond ASCII gets
    // them.
    const bool quoted = value.empty() || std::any_of(value.begin(), value.end(), [](char c) {
                            return c <= ' ' || c == '"' || c > '~';
                        });
    if (!quoted) return value;
    std::string token = "\"";
    for (const char c : value) {
        // Between quotes a backslash could be taken for the beginning of an escape.
        if (c == '\\') return std::nullopt;
        if (c == '"') token += '\\';
        token += c;
    }
    return token += '"';
}

ElementPtr MakeUnivariateStats(const MCUniStats& stats, std::size_t valueCount,
                               const std::string* valueArray) {
    ElementPtr result = NewElement(gUnivariateStats);
    if (!result->SetAttribute(gField, stats.GetVarName()) || !CountsAreGood(stats) ||
        !SummaryIsGood(stats) || !MarginsAreGood(stats) || !FrequenciesAreGood(stats)) {
        return nullptr;
    }
    Adopt(*result, MakeCounts(stats));
    if (stats.IsCategorical()) {
        Adopt(*result, MakeDiscrStats(stats, valueCount, valueArray));
        return result;
    }
    if (HasAny(stats.GetSummStats())) Adopt(*result, MakeNumericInfo(stats.GetSummStats()));
    if (!stats.GetFrequencies().empty()) Adopt(*result, MakeContStats(stats));
    return result;
}

}  // namespace MCDetail
