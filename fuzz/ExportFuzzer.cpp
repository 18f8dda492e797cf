// Summaries with any names, categories and numbers: the document, if there is one, is well formed
// and gives back all of them, to another reader and to the library's own, which writes it again as
// the same text; if there is none, something in the summary is to blame.

#include <algorithm>
#include <memory>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "SameSummary.h"
#include "WellFormed.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MAProblems.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"
#include "accredit/host/XMLElement.h"

using fuzz::Input;
using fuzz::Require;
using fuzz::Same;
using fuzz::Slot;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;
using pugi::xml_node;

namespace {

constexpr double kMissing = MCMV::Missing();

MCVarList ListFrom(Input& input) {
    MCVarList list;
    const std::size_t variables = 1 + input.Below(4);
    for (std::size_t i = 0; i < variables; ++i) {
        const std::string name = input.Text();
        const std::size_t kind = input.Below(4);
        if (kind == 0) {
            list.Add(MCVariable::Continuous(name));
        } else if (kind == 1) {
            MCNumberEncoder numbers(input.Numbers());
            list.Add(MCVariable::Categorical(name, numbers.GetNumCategories()), numbers);
        } else {
            MCStringEncoder texts;
            for (std::size_t n = input.Below(8); n > 0; --n) texts.AddCategory(input.Text());
            list.Add(MCVariable(name, static_cast<int>(kind), IMCVariable::VariableRoleInput,
                                texts.GetNumCategories()),
                     texts);
        }
    }
    return list;
}

void Load(Input& input, MADistStatsImp& stats) {
    while (!input.Empty()) {
        const auto slot = static_cast<unsigned int>(input.Below(4));
        const std::vector<double> frequencies = input.Numbers();
        if (stats.IsCategorical(slot)) {
            stats.SetFreqs(slot, frequencies);
        } else {
            stats.SetFreqs(slot, frequencies, input.Numbers());
        }
        const unsigned long count = input.Flag() ? ~0UL - input.Below(4) : input.Below(256);
        const double min = input.Number();
        const double max = input.Number();
        const double mean = input.Number();
        stats.SetSummStats(slot, count, min, max, mean, input.Number());
    }
}

bool IsText(const std::string& text) {
    return std::unique_ptr<MCXML_NAMESPACE::XMLElement>(MCXML_NAMESPACE::XMLElement::Create("a"))
        ->SetText(text);
}

bool AreFinite(const std::vector<double>& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double n) { return std::isfinite(n); });
}

// Without a name the version is not written.
bool CanBeHeld(const MCApplicInfo4XML& info) {
    return IsText(info.name) && IsText(info.timestamp) &&
           (info.name.empty() || IsText(info.version));
}

bool CanBeHeld(const MCVarList& list, const MADistStatsImp& stats) {
    std::set<std::string> names;
    for (unsigned int s = 0; s < stats.GetVarCount(); ++s) {
        const int position = static_cast<int>(s);
        const std::string name = list.GetVarAt(position)->GetName();
        if (!IsText(name) || !names.insert(name).second) return false;
        const IMCEncoder& encoder = *list.GetEncoderAt(position);
        for (int code = 0; code < encoder.GetNumCategories(); ++code) {
            if (!IsText(encoder.DecodeString(code))) return false;
            if (!std::isfinite(encoder.DecodeNumber(code))) return false;
        }
        const Slot slot(stats, s);
        if (!AreFinite(slot.frequencies) || !AreFinite(slot.cutPoints) ||
            !AreFinite({slot.min, slot.max, slot.mean, slot.stdDev})) {
            return false;
        }
        // The margin of an open end.
        if (!slot.cutPoints.empty() && slot.cutPoints.front() == kMissing) return false;
    }
    return true;
}

double NumberIn(const char* text) {
    char* end = nullptr;
    const double number = std::strtod(text, &end);
    Require(*text != '\0' && *end == '\0', "a number is nothing but a number");
    return number;
}

double NumberOr(pugi::xml_attribute attribute, double otherwise) {
    return attribute ? NumberIn(attribute.value()) : otherwise;
}

void CompareField(xml_node field, const IMCVariable& variable, const IMCEncoder& encoder) {
    Require(field.attribute("name").value() == variable.GetName(), "the name is kept");
    int code = 0;
    for (const xml_node value : field.children("Value")) {
        const pugi::xml_attribute text = value.attribute("value");
        Require(encoder.GetValueType() == IMCEncoder::ValueTypeNumber
                    ? Same(NumberIn(text.value()), encoder.DecodeNumber(code))
                    : text.value() == encoder.DecodeString(code),
                "the category is kept");
        ++code;
    }
    Require(code == encoder.GetNumCategories(), "all categories are kept");
}

void CompareFrequencies(xml_node bins, const std::vector<double>& expected) {
    const xml_node irregular = bins.child("Extension").child("Array");
    const xml_node array = irregular ? irregular : bins.last_child();
    std::istringstream text(array.child_value());
    std::vector<double> frequencies;
    for (std::string token; text >> token;) frequencies.push_back(NumberIn(token.c_str()));
    Require(array.attribute("n").as_ullong() == frequencies.size(), "the array has its length");
    Require(Same(frequencies, expected), "the frequencies are kept");
}

void CompareStatistics(xml_node node, const MADistStatsImp& stats, unsigned int s) {
    Slot slot(stats, s);
    const int position = stats.GetVarListIndex(s);
    const IMCVariable& variable = *stats.GetVarList().GetVarAt(position);
    Require(node.attribute("field").value() == variable.GetName(), "the statistics have a field");
    Require(NumberIn(node.child("Counts").attribute("totalFreq").value()) ==
                static_cast<double>(slot.count),
            "the number of cases is kept");
    if (stats.IsCategorical(s)) {
        if (slot.frequencies.empty()) {
            slot.frequencies.resize(static_cast<std::size_t>(variable.GetNumCategories()));
        }
        return CompareFrequencies(node.child("DiscrStats"), slot.frequencies);
    }
    const xml_node info = node.child("NumericInfo");
    Require(Same(NumberOr(info.attribute("minimum"), kMissing), slot.min) &&
                Same(NumberOr(info.attribute("maximum"), kMissing), slot.max) &&
                Same(NumberOr(info.attribute("mean"), kMissing), slot.mean) &&
                Same(NumberOr(info.attribute("standardDeviation"), kMissing), slot.stdDev),
            "the summary values are kept");
    const xml_node bins = node.child("ContStats");
    Require(bins.empty() == slot.frequencies.empty(), "bins are written if there are any");
    if (!bins) return;
    std::vector<double> margins{kMissing};
    for (const xml_node interval : bins.children("Interval")) {
        Require(Same(NumberOr(interval.attribute("leftMargin"), kMissing), margins.back()),
                "an interval begins where the one before ends");
        margins.push_back(NumberOr(interval.attribute("rightMargin"), kMissing));
    }
    Require(margins.size() >= 2 && margins.back() == kMissing &&
                Same({margins.begin() + 1, margins.end() - 1}, slot.cutPoints),
            "the cut points are kept");
    CompareFrequencies(bins, slot.frequencies);
}

// A categorical variable comes back with a frequency for each category, and without moments.
void CompareReference(const MADocuments::Reference& read, const MADistStatsImp& stats) {
    Require(read.stats.GetVarCount() == stats.GetVarCount(), "all variables are read");
    for (unsigned int s = 0; s < stats.GetVarCount(); ++s) {
        Slot expected(stats, s);
        const Slot slot(read.stats, s);
        const bool large = expected.count > (1UL << 53U);
        Require(large ? static_cast<double>(slot.count) == static_cast<double>(expected.count)
                      : slot.count == expected.count,
                "the cases are read");
        expected.count = slot.count;
        if (stats.IsCategorical(s)) {
            expected.frequencies.resize(slot.frequencies.size());
            expected.mean = expected.stdDev = kMissing;
        }
        Require(slot == expected, "the numbers are read");
        const IMCEncoder& encoder = *read.stats.GetVarList().GetEncoderAt(static_cast<int>(s));
        const IMCEncoder& written = *stats.GetVarList().GetEncoderAt(static_cast<int>(s));
        if (!stats.IsCategorical(s)) continue;
        Require(encoder.GetNumCategories() == written.GetNumCategories(), "categories are read");
        for (int code = 0; code < encoder.GetNumCategories(); ++code) {
            Require(encoder.DecodeString(code) == written.DecodeString(code) &&
                        Same(encoder.DecodeNumber(code), written.DecodeNumber(code)),
                    "the category is read");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const MCApplicInfo4XML info{input.Text(), input.Text(), input.Text()};
    const MCVarList list = ListFrom(input);
    MADistStatsImp stats(list, nullptr);
    Load(input, stats);

    std::ostringstream out;
    const bool written = stats.ExportAsXML(&info, out).IsOK();
    const std::string document = out.str();
    const bool good = CanBeHeld(list, stats);
    const int culprit = MAFindExportProblem(MADistStats(new MADistStatsImp(stats))).slot;
    Require(good == (culprit < 0), "what cannot be held is found");
    Require(written == (good && CanBeHeld(info)), "what can be held is written");
    Require(written != document.empty(), "nothing is written without success");
    if (!written) return 0;

    Require(fuzz::IsWellFormed(document), "the document is well formed");
    pugi::xml_document parsed;
    Require(parsed.load_buffer(document.data(), document.size(),
                               pugi::parse_default | pugi::parse_ws_pcdata_single),
            "the document is parsed");
    const xml_node root = parsed.child("PMML");
    const xml_node header = root.child("Header");
    const xml_node application = header.child("Application");
    Require(application.attribute("name").value() == info.name &&
                application.attribute("version").value() ==
                    (info.name.empty() ? std::string() : info.version) &&
                header.child_value("Timestamp") == info.timestamp,
            "the application is kept");
    xml_node field = root.child("DataDictionary").first_child();
    xml_node statistics = root.child("Extension").child("ModelStats").first_child();
    for (unsigned int s = 0; s < stats.GetVarCount(); ++s) {
        const int position = static_cast<int>(s);
        CompareField(field, *list.GetVarAt(position), *list.GetEncoderAt(position));
        CompareStatistics(statistics, stats, s);
        field = field.next_sibling();
        statistics = statistics.next_sibling();
    }
    Require(!field && !statistics, "there are no more fields");
    CompareReference(MADocuments::ReadReference(document), stats);
    Require(MADocuments::WriteReference(MADocuments::ReadReference(document)) == document,
            "the same is written again");
    return 0;
}
