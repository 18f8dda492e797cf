// A document as a reference. Every element is read where the format has it, and what is left over
// is refused, so that nothing is passed over that could mean something.

#include <algorithm>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/documents/NumberText.h"
#include "accredit/documents/Reference.h"
#include "accredit/documents/internal/Element.h"
#include "accredit/documents/internal/EncoderWithOthers.h"
#include "accredit/documents/internal/StatisticsReader.h"
#include "accredit/documents/internal/XmlTree.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCUniStats;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace MADocuments {

using namespace std::string_view_literals;

namespace {

constexpr std::string_view kNamespace = "http://www.dmg.org/PMML-3_1";
constexpr std::string_view kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

// For documents of other programs.
constexpr const char* kOtherMaker = "write the reference with this library";

struct Field {
    explicit Field(const Element& source) : element(source), name(source.Text("name")) {}

    Element element;
    std::string name;
    int measureLevel = IMCVariable::MeasureLevelContinuous;
    std::shared_ptr<MCStringEncoder> texts;
    std::shared_ptr<MCNumberEncoder> numbers;
    std::vector<std::string> missing;
    std::optional<Element> statistics;
    StoredStatistics stored;
    UncountedData uncounted;
    double otherCases = 0.0;  // of categories without a name

    std::shared_ptr<IMCEncoder> Encoder() const {
        if (texts) return texts;
        return numbers;
    }
};

Element RootOf(const XmlTree& tree) {
    const Element root(tree, &tree.Root());
    if (root.Name() != "PMML") {
        root.Refuse("the document must be one element \"PMML\"",
                    "give a document that holds a reference");
    }
    root.AllowAttributes({"version", "xmlns", "xmlns:xsi", "xsi:schemaLocation"});
    const std::string version = root.Text("version");
    if (version != "3.1") {
        root.Refuse("PMML version \"" + Shortened(version) + "\", only 3.1 is understood",
                    kOtherMaker);
    }
    if (root.Text("xmlns") != kNamespace) {
        root.Refuse("the namespace is not that of PMML 3.1", kOtherMaker);
    }
    if (root.Has("xmlns:xsi") ? root.Text("xmlns:xsi") != kSchemaInstance
                              : root.Has("xsi:schemaLocation")) {
        root.Refuse("the prefix xsi does not stand for instances of XML schemas");
    }
    return root;
}

MCApplicInfo4XML ReadHeader(const Element& header) {
    header.AllowAttributes({"copyright", "description"});
    MCApplicInfo4XML info;
    Children children(header);
    if (const Element application = children.Take("Application")) {
        application.AllowAttributes({"name", "version"});
        application.RequireEmpty();
        info.name = application.Text("name");
        info.version = application.OptionalText("version");
    }
    if (const Element timestamp = children.Take("Timestamp")) {
        timestamp.AllowAttributes({});
        info.timestamp = std::string(timestamp.Content());
    }
    children.End();
    return info;
}

void ReadKind(Field& field) {
    const std::string optype = field.element.Text("optype");
    const std::string dataType = field.element.Text("dataType");
    if (dataType != "double" && dataType != "string") {
        field.element.Refuse("the dataType must be double or string");
    }
    if (optype == "continuous") {
        if (dataType != "double")
            field.element.Refuse("a continuous field must be of dataType double");
        return;
    }
    if (optype != "categorical" && optype != "ordinal") {
        field.element.Refuse("the optype must be continuous, categorical or ordinal");
    }
    field.measureLevel =
        optype == "ordinal" ? IMCVariable::MeasureLevelOrdinal : IMCVariable::MeasureLevelNominal;
    if (dataType == "string") {
        field.texts = std::make_shared<MCStringEncoder>();
    } else {
        field.numbers = std::make_shared<MCNumberEncoder>();
    }
}

void ReadValue(const Element& element, Field& field) {
    element.AllowAttributes({"value", "property"});
    element.RequireEmpty();
    const std::string value = element.Text("value");
    const std::string property = element.OptionalText("property");
    if (property == "missing") {
        field.missing.push_back(value);
        return;
    }
    if (element.Has("property") && property != "valid") {
        element.Refuse("the property must be valid or missing");
    }
    const std::shared_ptr<IMCEncoder> encoder = field.Encoder();
    if (!encoder) element.Refuse("a continuous field has no values");
    const int code = encoder->GetNumCategories();
    const int given = field.texts ? field.texts->AddCategory(value)
                                  : field.numbers->AddCategory(element.ToCategory(value));
    if (given != code) element.Refuse("the value \"" + Shortened(value) + "\" stands twice");
}

Field ReadField(const Element& element) {
    element.AllowAttributes({"name", "optype", "dataType"});
    Field field(element);
    ReadKind(field);
    Children children(element);
    while (const Element value = children.Take("Value")) ReadValue(value, field);
    children.End();
    return field;
}

std::vector<Field> ReadDictionary(const Element& dictionary) {
    dictionary.AllowAttributes({"numberOfFields"});
    std::vector<Field> fields;
    std::set<std::string, std::less<>> names;
    Children children(dictionary);
    while (const Element element = children.Take("DataField")) {
        fields.push_back(ReadField(element));
        if (!names.insert(fields.back().name).second) {
            element.Refuse("two fields \"" + Shortened(fields.back().name) + "\"");
        }
    }
    children.End();
    if (fields.empty()) dictionary.Refuse("there are no fields");
    if (dictionary.Has("numberOfFields") && dictionary.Count("numberOfFields") != fields.size()) {
        dictionary.Refuse("there are " + std::to_string(fields.size()) + " fields");
    }
    return fields;
}

// The categories that are tokens, with the blanks around them.
std::vector<std::string> TokensAmong(const IMCEncoder& texts, const MissingTokens& missing) {
    std::vector<std::string> tokens;
    for (int code = 0; code < texts.GetNumCategories(); ++code) {
        std::string category = texts.DecodeString(code);
        // A code that no value has decodes to the empty text, too.
        if (missing.Contains(TrimBlanks(category)) && texts.EncodeString(category) == code) {
            tokens.push_back(std::move(category));
        }
    }
    return tokens;
}

// Those of a document without any: an application has written it, whose categories are none.
MissingTokens UsualTokens(const std::vector<Field>& fields) {
    const MissingTokens usual;
    std::set<std::string, std::less<>> categories;
    for (const Field& field : fields) {
        if (!field.texts) continue;
        for (const std::string& category : TokensAmong(*field.texts, usual)) {
            categories.emplace(TrimBlanks(category));
        }
    }
    std::vector<std::string> texts;
    for (const std::string& text : usual.Texts()) {
        if (categories.count(text) == 0) texts.push_back(text);
    }
    return MissingTokens::Only(texts);
}

// The tokens are those of the file that was learned, so all fields have the same.
MissingTokens MissingTokensOf(const std::vector<Field>& fields) {
    const std::vector<std::string>& texts = fields.front().missing;
    MissingTokens missing = texts.empty() ? UsualTokens(fields) : MissingTokens::Only(texts);
    for (const Field& field : fields) {
        if (field.missing != texts) {
            field.element.Refuse("the fields differ in their missing values",
                                 "give all fields the same ones in the same order");
        }
        if (!field.missing.empty() && field.missing != missing.Texts()) {
            field.element.Refuse(
                "the missing values must begin with the empty text, and each may stand only once "
                "and without blanks around it",
                "write them so, in all fields");
        }
        if (!field.texts || texts.empty()) continue;
        const std::vector<std::string> tokens = TokensAmong(*field.texts, missing);
        if (!tokens.empty()) {
            field.element.Refuse(
                "the value \"" + Shortened(tokens.front()) + "\" is also a missing value",
                "give the category another text, or the fields other missing values");
        }
    }
    return missing;
}

std::string NameOf(const Element& extension) {
    extension.AllowAttributes({"extender", "name", "value"});
    return extension.Text("name");
}

// One fact about a field, which stands there once. Later ones of a name would hide the first.
void ReadFact(const Element& fact, Field& field) {
    fact.RequireEmpty();
    const std::string name = NameOf(fact);
    UncountedData& uncounted = field.uncounted;
    if (name == "firstUnreadableLine" && !field.texts && uncounted.firstUnreadableLine == 0) {
        uncounted.firstUnreadableLine = fact.Count("value");
    } else if (name == "firstUnreadableText" && !field.texts &&
               uncounted.firstUnreadableText.empty()) {
        uncounted.firstUnreadableText = fact.Text("value");
    } else if (name == "otherCategories" && field.Encoder() && field.otherCases == 0.0) {
        field.otherCases = static_cast<double>(fact.Count("value"));
        if (field.otherCases == 0.0) fact.Refuse("an extension that says nothing");
    } else {
        fact.Refuse("this extension is not understood here");
    }
}

// What the statistics of PMML have no place for, of the fields that have it, in their order.
void ReadNewData(const Element& newData, std::vector<Field>& fields) {
    if (NameOf(newData) != "newData") newData.Refuse("this extension is not understood");
    newData.AllowAttributes({"extender", "name"});
    auto field = fields.begin();
    Children children(newData);
    while (const Element element = children.Take("Extension")) {
        if (NameOf(element) != "field") element.Refuse("this extension is not understood");
        const std::string name = element.OptionalText("value");
        field = std::find_if(field, fields.end(),
                             [&name](const Field& each) { return each.name == name; });
        if (field == fields.end()) element.Refuse("there is no such field behind the one before");
        Children facts(element);
        while (const Element fact = facts.Take("Extension")) ReadFact(fact, *field);
        facts.End();
        const bool hasLine = field->uncounted.firstUnreadableLine > 0;
        if (hasLine == field->uncounted.firstUnreadableText.empty()) {
            element.Refuse("the first unreadable datum has a line and a text");
        }
        if (!hasLine && field->otherCases == 0.0) element.Refuse("an extension that says nothing");
        ++field;
    }
    children.End();
}

std::vector<std::string> ReadSources(const Element& extension) {
    extension.AllowAttributes({"extender", "name"});
    std::vector<std::string> sources;
    std::set<std::string> seen;
    Children children(extension);
    while (const Element element = children.Take("Extension")) {
        if (NameOf(element) != "source") element.Refuse("this extension is not understood");
        element.RequireEmpty();
        sources.push_back(element.Text("value"));
        if (sources.back().empty()) element.Refuse("a source without a text");
        if (!seen.insert(sources.back()).second) element.Refuse("this source stands twice");
    }
    children.End();
    if (sources.empty()) extension.Refuse("an extension that says nothing");
    return sources;
}

MCVarList ListOf(const std::vector<Field>& fields, const std::vector<std::string>& ignored) {
    const std::set<std::string_view> left(ignored.begin(), ignored.end());
    MCVarList list;
    for (const Field& field : fields) {
        std::shared_ptr<IMCEncoder> encoder = field.Encoder();
        if (field.otherCases > 0.0) encoder = std::make_shared<EncoderWithOthers>(encoder);
        const auto categories =
            encoder ? static_cast<int>(field.stored.stats.GetFrequencies().size()) : 0;
        const auto role = left.count(field.name) != 0 ? IMCVariable::VariableRoleNone
                                                      : IMCVariable::VariableRoleInput;
        list.AddShared(
            std::make_shared<MCVariable>(field.name, field.measureLevel, role, categories),
            encoder);
    }
    if (list.GetNumInputVars() == 0) throw DocumentError("every column is ignored", "ignore fewer");
    return list;
}

// Adds the cases of the category that has no name, which come last.
void TakeOthers(const Element& element, Field& field) {
    MCUniStats& stats = field.stored.stats;
    std::vector<double> frequencies = stats.GetFrequencies();
    field.uncounted.otherCategories = field.Encoder()->GetNumCategories();
    if (frequencies.size() != static_cast<std::size_t>(field.uncounted.otherCategories)) {
        element.Refuse("other categories beside frequencies that have no value");
    }
    frequencies.push_back(field.otherCases);
    if (std::accumulate(frequencies.begin(), frequencies.end(), 0.0) != stats.GetNumberOfCases()) {
        element.Refuse("the frequencies and the other categories do not sum to the cases");
    }
    stats = MCUniStats(stats.GetVarName(), stats.GetNumberOfCases(), frequencies);
}

void TakeCounts(const Element& element, Field& field) {
    const StoredStatistics& stored = field.stored;
    UncountedData& uncounted = field.uncounted;
    uncounted.missing = stored.missing;
    if (stored.missing && !field.texts) uncounted.unreadable = stored.invalid;
    if (uncounted.firstUnreadableLine > 0 && stored.invalid == 0) {
        element.Refuse("a first unreadable datum, but none is counted");
    }
    if (field.otherCases > 0.0) TakeOthers(element, field);
}

// The statistics of every field, each once, in any order.
void ReadModelStats(const Element& modelStats, std::vector<Field>& fields) {
    modelStats.AllowAttributes({});
    std::map<std::string_view, Field*> byName;
    for (Field& field : fields) byName.emplace(field.name, &field);
    std::optional<std::uint64_t> total;
    Children children(modelStats);
    while (const Element element = children.Take("UnivariateStats")) {
        element.AllowAttributes({"field"});
        const std::string name = element.Text("field");
        const auto found = byName.find(name);
        if (found == byName.end()) element.Refuse("there is no field \"" + Shortened(name) + "\"");
        Field& field = *found->second;
        if (field.statistics) {
            element.Refuse("two statistics of the field \"" + Shortened(name) + "\"");
        }
        field.statistics = element;
        field.stored = ReadStatistics(element, name, field.Encoder().get());
        const StoredStatistics& stored = field.stored;
        if (stored.missing && total.value_or(stored.total) != stored.total) {
            element.Refuse("totalFreq differs from that of the fields before");
        }
        if (stored.missing) total = stored.total;
        TakeCounts(element, field);
    }
    children.End();
    for (const Field& field : fields) {
        if (!field.statistics) field.element.Refuse("there are no statistics of this field");
    }
}

// False if the summary does not take it.
bool Load(const MCUniStats& stored, unsigned int slot, MADistStatsImp& stats) {
    if (stored.IsCategorical() || !IsUntouched(stored.GetNumberOfCases(), stored.GetSummStats())) {
        return stats.SetAllStats(stored);
    }
    // The summary values of a slot that nothing was loaded into cannot be loaded, but its bins can.
    const std::vector<double>& margins = stored.GetCutPoints();
    std::vector<double> cutPoints;
    if (!margins.empty()) cutPoints.assign(margins.begin() + 1, margins.end() - 1);
    return stats.SetFreqs(slot, stored.GetFrequencies(), cutPoints);
}

}  // namespace

bool operator==(const UncountedData& left, const UncountedData& right) {
    const auto tie = [](const UncountedData& data) {
        return std::tie(data.missing, data.unreadable, data.firstUnreadableLine,
                        data.firstUnreadableText, data.otherCategories);
    };
    return tie(left) == tie(right);
}

int FindMissingCategory(const MADistStats& stats, const MissingTokens& missing) {
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const int position = stats.GetVarListIndex(slot);
        const IMCEncoder& encoder = *stats.GetVarList().GetEncoderAt(position);
        if (stats.IsCategorical(slot) && encoder.GetValueType() == IMCEncoder::ValueTypeString &&
            !TokensAmong(encoder, missing).empty()) {
            return static_cast<int>(slot);
        }
    }
    return -1;
}

bool BeginsLikeDocument(std::string_view beginning) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    struct Start {
        std::string_view text;
        std::string_view next;  // one of these bytes follows, any if there are none
    };
    constexpr std::array<Start, 4> kStarts = {
        {{"<?xml", kWhiteSpace}, {"<!--", ""}, {"<!DOCTYPE", ""}, {"<PMML", " \t\r\n>/"}}};

    const std::string_view wide = beginning.substr(0, 4);
    if (wide == "\xFF\xFE<\0"sv || wide == "\xFE\xFF\0<"sv) return true;
    if (beginning.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        beginning.remove_prefix(kByteOrderMark.size());
    }
    beginning.remove_prefix(std::min(beginning.find_first_not_of(kWhiteSpace), beginning.size()));
    if (beginning.empty()) return false;
    return std::any_of(kStarts.begin(), kStarts.end(), [beginning](const Start& start) {
        const std::size_t length = std::min(start.text.size(), beginning.size());
        if (beginning.substr(0, length) != start.text.substr(0, length)) return false;
        return beginning.size() == length || start.next.empty() ||
               start.next.find(beginning[length]) != std::string_view::npos;
    });
}

Reference ReadReference(std::string_view document, const std::vector<std::string>& ignored) {
    const XmlTree tree(document);
    Children children(RootOf(tree));
    Reference reference;
    reference.application = ReadHeader(children.Require("Header"));
    std::vector<Field> fields = ReadDictionary(children.Require("DataDictionary"));
    reference.missing = MissingTokensOf(fields);
    reference.namesMissing = !fields.front().missing.empty();

    const Element extension = children.Require("Extension");
    extension.AllowAttributes({"extender", "name"});
    if (extension.Text("name") != "containerModel") {
        extension.Refuse("this extension is not understood");
    }
    Element further = children.Take("Extension");
    if (further && NameOf(further) != "sources") {
        ReadNewData(further, fields);
        further = children.Take("Extension");
    }
    if (further) {
        if (NameOf(further) != "sources") further.Refuse("this extension is not understood");
        reference.sources = ReadSources(further);
    }
    children.End();
    Children content(extension);
    ReadModelStats(content.Require("ModelStats"), fields);
    content.End();
    auto stats = std::make_unique<MADistStatsImp>(ListOf(fields, ignored), nullptr);
    for (unsigned int slot = 0; slot < stats->GetVarCount(); ++slot) {
        const Field& field = fields[static_cast<std::size_t>(stats->GetVarListIndex(slot))];
        if (!Load(field.stored.stats, slot, *stats)) {
            field.statistics->Refuse("the number of cases and the summary contradict each other");
        }
        reference.uncounted.push_back(field.uncounted);
    }
    reference.stats = MADistStats(stats.release());
    return reference;
}

}  // namespace MADocuments
