#include "accredit/documents/internal/StatisticsReader.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "accredit/host/MCMV.h"
#include "accredit/host/MCSummaryStatistics.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::kMCSummaryStatistics;
using MCMTD_NAMESPACE::MCSummaryStatistic;
using MCMTD_NAMESPACE::MCUniStats;

namespace MADocuments {

namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

// The bins of a continuous variable as a document holds them: see MCUniStats.
struct Bins {
    std::vector<double> margins;
    std::vector<double> frequencies;
};

// A token that begins with a quote ends at the next quote that has no backslash before it.
std::string TakeQuoted(std::string_view& text, const Element& element) {
    std::string token;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return token;
        }
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == '"') ++i;
        token += text[i];
    }
    element.Refuse("a quote in the array is not closed");
}

// How many entries an array has.
struct Size {
    std::size_t least;
    std::size_t most;
};

// Calls `use` with every entry of an array, of which there are so many.
template <class Use>
void ReadArray(const Element& element, const Size& size, Use use) {
    element.AllowAttributes({"n", "type"});
    const bool strings = element.Text("type") == "string";
    std::string_view text = element.Content();
    std::size_t count = 0;
    for (;; ++count) {
        text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
        if (text.empty()) break;
        std::string token;
        if (strings && text.front() == '"') {
            token = TakeQuoted(text, element);
        } else {
            const std::size_t end = std::min(text.find_first_of(kWhiteSpace), text.size());
            token = text.substr(0, end);
            text.remove_prefix(end);
        }
        if (count < size.most) use(count, token);
    }
    if (element.Count("n") != count) {
        element.Refuse("the array has " + std::to_string(count) + " entries");
    }
    if (count < size.least || count > size.most) {
        element.Refuse("the array has " + std::to_string(count) + " entries, but " +
                       std::to_string(size.least) + " belong there");
    }
}

std::vector<double> ReadFrequencies(const Element& element, const Size& size) {
    const std::string type = element.Text("type");
    const bool counts = type == "int";
    if (!counts && type != "real") element.Refuse("frequencies are numbers");
    std::vector<double> frequencies;
    ReadArray(element, size, [&](std::size_t /*index*/, const std::string& token) {
        frequencies.push_back(counts ? static_cast<double>(element.ToCount(token))
                                     : element.ToNumber(token));
        if (frequencies.back() < 0.0) element.Refuse("a frequency is negative");
    });
    return frequencies;
}

// Frequencies in their usual place, where they sum to the number of cases.
std::vector<double> ReadRegular(const Element& element, const Size& size, double cases) {
    std::vector<double> frequencies = ReadFrequencies(element, size);
    double sum = 0.0;
    for (const double frequency : frequencies) sum += frequency;
    if (sum != cases) {
        element.Refuse("the frequencies do not sum to the number of cases");
    }
    return frequencies;
}

// Frequencies in the library's extension for those that do not.
std::vector<double> ReadIrregular(const Element& extension, const Size& size) {
    extension.AllowAttributes({"extender", "name"});
    if (extension.Text("name") != "frequencies") {
        extension.Refuse("this extension is not understood");
    }
    Children children(extension);
    std::vector<double> frequencies = ReadFrequencies(children.Require("Array"), size);
    children.End();
    return frequencies;
}

bool IsCategory(const Element& element, const IMCEncoder& encoder, std::size_t code,
                const std::string& token) {
    const int c = static_cast<int>(code);
    return encoder.GetValueType() == IMCEncoder::ValueTypeNumber
               ? encoder.DecodeNumber(c) == element.ToCategory(token)
               : encoder.DecodeString(c) == token;
}

void CheckCategories(const Element& element, const IMCEncoder& encoder) {
    const auto categories = static_cast<std::size_t>(encoder.GetNumCategories());
    if (element.Text("type") != "string") {
        element.Refuse("the values of the categories are an array of strings");
    }
    ReadArray(element, {categories, categories}, [&](std::size_t code, const std::string& token) {
        if (!IsCategory(element, encoder, code, token)) {
            element.Refuse("entry " + std::to_string(code + 1) + " is not the value of the field");
        }
    });
}

std::vector<double> ReadDiscrStats(const Element& element, const IMCEncoder& encoder,
                                   double cases) {
    element.AllowAttributes({});
    const auto categories = static_cast<std::size_t>(encoder.GetNumCategories());
    // Codes that no value has are counted, too.
    const Size size{categories, std::numeric_limits<std::size_t>::max()};
    Children children(element);
    std::vector<double> frequencies;
    if (const Element extension = children.Take("Extension")) {
        frequencies = ReadIrregular(extension, size);
    } else {
        const Element first = children.Require("Array");
        if (const Element second = children.Take("Array")) {
            CheckCategories(first, encoder);
            frequencies = ReadRegular(second, {categories, categories}, cases);
        } else {
            frequencies = ReadRegular(first, size, cases);
        }
    }
    children.End();
    return frequencies;
}

MCUniStats::SummStats ReadNumericInfo(const Element& element) {
    std::vector<std::string_view> names;
    MCUniStats::SummStats summary;
    for (const MCSummaryStatistic& statistic : kMCSummaryStatistics) {
        names.emplace_back(statistic.attribute);
        if (element.Has(statistic.attribute)) {
            summary.*statistic.value = element.Number(statistic.attribute);
        }
    }
    element.AllowAttributes(names);
    element.RequireEmpty();
    return summary;
}

// Appends the right margin, which the next interval must have as its left one.
void ReadInterval(const Element& element, std::vector<double>& margins) {
    element.AllowAttributes({"closure", "leftMargin", "rightMargin"});
    element.RequireEmpty();
    if (element.Text("closure") != "openClosed") {
        element.Refuse("only intervals with the closure openClosed can be compared",
                       "count the data again in bins that hold their upper margin");
    }
    if (margins.empty()) margins.push_back(MCMV::Missing());
    const double left = element.Has("leftMargin") ? element.Number("leftMargin") : MCMV::Missing();
    if (left != margins.back() || (margins.size() > 1 && MCMV::IsMissing(left))) {
        element.Refuse(margins.size() == 1
                           ? "the first interval has a left margin"
                           : "the interval does not begin where the one before ends");
    }
    margins.push_back(element.Has("rightMargin") ? element.Number("rightMargin") : MCMV::Missing());
    if (element.Has("rightMargin") && margins.back() <= left) {
        element.Refuse("the margins do not ascend");
    }
}

Bins ReadContStats(const Element& element, double cases) {
    element.AllowAttributes({});
    Children children(element);
    Bins bins;
    const Element extension = children.Take("Extension");
    while (const Element interval = children.Take("Interval")) ReadInterval(interval, bins.margins);
    if (bins.margins.size() < 3) element.Refuse("two intervals are the fewest");
    if (!MCMV::IsMissing(bins.margins.back()))
        element.Refuse("the last interval has a right margin");
    const Size size{bins.margins.size() - 1, bins.margins.size() - 1};
    bins.frequencies = extension ? ReadIrregular(extension, size)
                                 : ReadRegular(children.Require("Array"), size, cases);
    children.End();
    return bins;
}

// Refuses what no summary can hold. What its loading looks at besides is left to that.
void RequireSummary(const Element& element, double cases, const MCUniStats::SummStats& summary) {
    const auto& [min, max, mean, stdDev] = summary;
    const bool hasMin = !MCMV::IsMissing(min);
    const bool hasMax = !MCMV::IsMissing(max);
    if (cases == 0.0) {
        const bool none = MCMV::IsMissing(mean) && MCMV::IsMissing(stdDev);
        if (hasMin || hasMax || (!none && !IsUntouched(cases, summary))) {
            element.Refuse("a summary of no cases");
        }
        return;
    }
    if (MCMV::IsMissing(mean) || (cases > 1.0 && !(hasMin && hasMax))) {
        element.Refuse("minimum, maximum and mean are there if there are cases");
    }
    if (cases == 1.0 && !MCMV::IsMissing(stdDev)) {
        element.Refuse("a standard deviation of one case");
    }
}

// Gives the number of cases.
double ReadCounts(const Element& element, StoredStatistics& stored) {
    element.AllowAttributes({"totalFreq", "missingFreq", "invalidFreq"});
    element.RequireEmpty();
    stored.total = element.Count("totalFreq");
    if (element.Has("missingFreq")) stored.missing = element.Count("missingFreq");
    stored.invalid = element.Has("invalidFreq") ? element.Count("invalidFreq") : 0;
    const std::uint64_t missing = stored.missing.value_or(0);
    if (missing > stored.total || stored.invalid > stored.total - missing) {
        element.Refuse("more missing and invalid data than data");
    }
    const auto cases = static_cast<double>(stored.total - missing - stored.invalid);
    const auto uncounted = static_cast<double>(missing + stored.invalid);
    if (cases + uncounted - uncounted != cases) {
        element.Refuse("counts too large to be told apart");
    }
    return cases;
}

}  // namespace

bool IsUntouched(double cases, const MCUniStats::SummStats& summary) {
    return cases == 0.0 && summary.mean == 0.0 && summary.stdDev == 0.0;
}

StoredStatistics ReadStatistics(const Element& element, const std::string& name,
                                const IMCEncoder* encoder) {
    StoredStatistics result;
    Children children(element);
    const Element counts = children.Require("Counts");
    const double cases = ReadCounts(counts, result);
    if (result.invalid > 0 && encoder && encoder->GetValueType() == IMCEncoder::ValueTypeString) {
        counts.Refuse("a field of texts has no invalid data");
    }
    if (result.invalid > 0 && !result.missing) {
        counts.Refuse("invalid data, but nothing about missing ones");
    }
    if (encoder) {
        const Element discrStats = children.Require("DiscrStats");
        result.stats = MCUniStats(name, cases, ReadDiscrStats(discrStats, *encoder, cases));
    } else {
        const Element info = children.Take("NumericInfo");
        const MCUniStats::SummStats summary =
            info ? ReadNumericInfo(info) : MCUniStats::SummStats();
        const Element contStats = children.Take("ContStats");
        const Bins bins = contStats ? ReadContStats(contStats, cases) : Bins();
        RequireSummary(element, cases, summary);
        result.stats = MCUniStats(name, cases, summary, bins.margins, bins.frequencies);
    }
    children.End();
    return result;
}

}  // namespace MADocuments
