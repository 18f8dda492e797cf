// A document as a reference. Every element is read where the format has it, and what is left over
// is refused, so that nothing is passed over that could mean something.

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <pugixml.hpp>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "accredit/documents/NumberText.h"
#include "accredit/documents/StatisticsReader.h"
#include "accredit/documents/StoredReference.h"
#include "accredit/documents/StrictXml.h"
#include "accredit/documents/XmlScan.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"
#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

constexpr std::string_view kNamespace = "http://www.dmg.org/PMML-3_1";
constexpr std::string_view kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";

struct Field {
    explicit Field(const Element& source) : element(source), name(source.Text("name")) {}

    Element element;
    std::string name;
    int measureLevel = IMCVariable::MeasureLevelContinuous;
    std::shared_ptr<MCStringEncoder> texts;
    std::shared_ptr<MCNumberEncoder> numbers;
    std::vector<std::string> missing;

    std::shared_ptr<IMCEncoder> Encoder() const {
        if (texts) return texts;
        return numbers;
    }
};

void RequireLength(const std::string& name, std::size_t length) {
    if (length > kMaxDocumentSize) {
        throw InputError(fmt::format("{}: a document of more than {} MiB", name, kMaxDocumentMiB));
    }
}

void Parse(const SourceText& source, pugi::xml_document& document) {
    RequireLength(source.Name(), source.Text().size());
    ScanXml(source);
    const pugi::xml_parse_result result =
        document.load_buffer(source.Text().data(), source.Text().size(),
                             pugi::parse_default | pugi::parse_declaration, pugi::encoding_utf8);
    if (!result) {
        source.Refuse(static_cast<std::size_t>(result.offset),
                      std::string("not a well-formed XML document: ") + result.description());
    }
}

// The order of the attributes is fixed.
void CheckDeclaration(const Element& declaration) {
    declaration.AllowAttributes({"version", "encoding", "standalone"});
    const pugi::xml_node node = declaration.Node();
    const pugi::xml_attribute standalone = node.attribute("standalone");
    if (declaration.Text("version") != "1.0" ||
        node.first_attribute() != node.attribute("version") ||
        (standalone && standalone != node.last_attribute())) {
        declaration.Refuse("not a declaration of XML 1.0");
    }
    if (standalone && declaration.Text("standalone") != "yes" &&
        declaration.Text("standalone") != "no") {
        declaration.Refuse("standalone must be yes or no");
    }
    if (!declaration.Has("encoding")) return;
    std::string encoding = declaration.Text("encoding");
    for (char& letter : encoding) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    if (encoding != "utf-8") {
        declaration.Refuse("the encoding must be UTF-8");
    }
}

Element RootOf(const SourceText& source, const pugi::xml_document& document) {
    Element root(source, {});
    for (const pugi::xml_node node : document.children()) {
        const Element element(source, node);
        if (node.type() == pugi::node_declaration) {
            CheckDeclaration(element);
            continue;
        }
        if (root || std::string_view(node.name()) != "PMML") {
            element.Refuse("the document must be one element \"PMML\"");
        }
        root = element;
    }
    root.AllowAttributes({"version", "xmlns", "xmlns:xsi", "xsi:schemaLocation"});
    const std::string version = root.Text("version");
    if (version != "3.1") {
        root.Refuse(fmt::format("PMML version \"{}\", only 3.1 is understood", Printable(version)));
    }
    if (root.Text("xmlns") != kNamespace) root.Refuse("the namespace is not that of PMML 3.1");
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
        info.timestamp = timestamp.Content();
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
                                  : field.numbers->AddCategory(element.ToNumber(value));
    if (given != code)
        element.Refuse(fmt::format("the value \"{}\" stands twice", Printable(value)));
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
    std::unordered_set<std::string> names;
    Children children(dictionary);
    while (const Element element = children.Take("DataField")) {
        fields.push_back(ReadField(element));
        if (!names.insert(fields.back().name).second) {
            element.Refuse(fmt::format("two fields \"{}\"", Printable(fields.back().name)));
        }
    }
    children.End();
    if (fields.empty()) dictionary.Refuse("there are no fields");
    if (dictionary.Has("numberOfFields") && dictionary.Count("numberOfFields") != fields.size()) {
        dictionary.Refuse(fmt::format("there are {} fields", fields.size()));
    }
    return fields;
}

// The tokens are those of the file that was learned, so all fields have the same, and a document
// without any was not written by this program.
MissingTokens MissingTokensOf(const std::vector<Field>& fields) {
    const std::vector<std::string>& texts = fields.front().missing;
    MissingTokens missing(texts);
    for (const Field& field : fields) {
        if (field.missing != texts)
            field.element.Refuse("the fields differ in their missing values");
        if (!field.missing.empty() && field.missing != missing.Texts()) {
            field.element.Refuse(
                "the missing values must begin with the empty text and NA, and each "
                "may stand only once and without blanks around it");
        }
        if (!field.texts) continue;
        for (int code = 0; code < field.texts->GetNumCategories(); ++code) {
            const std::string category = field.texts->DecodeString(code);
            if (missing.Contains(TrimBlanks(category))) {
                field.element.Refuse(
                    fmt::format("the value \"{}\" is also a missing value", Printable(category)));
            }
        }
    }
    return missing;
}

MCVarList ListOf(const std::vector<Field>& fields, const std::vector<std::string>& ignored) {
    const std::unordered_set<std::string_view> left(ignored.begin(), ignored.end());
    MCVarList list;
    for (const Field& field : fields) {
        const auto role = left.count(field.name) != 0 ? IMCVariable::VariableRoleNone
                                                      : IMCVariable::VariableRoleInput;
        const std::shared_ptr<IMCEncoder> encoder = field.Encoder();
        const int categories = encoder ? encoder->GetNumCategories() : 0;
        list.AddShared(
            std::make_shared<MCVariable>(field.name, field.measureLevel, role, categories),
            encoder);
    }
    return list;
}

std::unique_ptr<MADistStatsImp> NewStats(const MCVarList& list, const std::string& documentName) {
    try {
        return std::make_unique<MADistStatsImp>(list, nullptr);
    } catch (const MCCommon::MCStatus&) {
        throw UsageError(documentName + ": every column is ignored");
    }
}

// The statistics of every field, each once, in any order.
void ReadModelStats(const Element& modelStats, const std::vector<Field>& fields,
                    MADistStatsImp& stats, std::vector<std::uint64_t>& missingCounts) {
    modelStats.AllowAttributes({});
    const MCVarList& list = stats.GetVarList();
    std::vector<std::uint64_t> missingOfField(fields.size());
    std::vector<bool> seen(fields.size(), false);
    Children children(modelStats);
    while (const Element element = children.Take("UnivariateStats")) {
        element.AllowAttributes({"field"});
        const std::string name = element.Text("field");
        const int position = list.FindVariable(name);
        if (position < 0) element.Refuse(fmt::format("there is no field \"{}\"", Printable(name)));
        const auto index = static_cast<std::size_t>(position);
        if (seen[index]) {
            element.Refuse(fmt::format("two statistics of the field \"{}\"", Printable(name)));
        }
        seen[index] = true;
        const StoredStatistics stored =
            ReadStatistics(element, name, fields[index].Encoder().get());
        missingOfField[index] = stored.missing;
        if (list.GetVariableRole(position) != IMCVariable::VariableRoleInput) continue;
        if (!stats.SetAllStats(stored.stats)) {
            element.Refuse("the number of cases and the summary contradict each other");
        }
    }
    children.End();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (!seen[i]) fields[i].element.Refuse("there are no statistics of this field");
    }
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        missingCounts.push_back(
            missingOfField[static_cast<std::size_t>(stats.GetVarListIndex(slot))]);
    }
}

}  // namespace

std::optional<SourceText> LoadDocument(const std::string& path, Reading reading, Progress& progress,
                                       MCQueryCancel& cancel) {
    constexpr std::size_t kPiece = std::size_t{1} << 16U;
    InputFile file(path, reading, progress, cancel);
    std::string text;
    std::size_t got = kPiece;
    while (got == kPiece) {
        text.resize(text.size() + kPiece);
        got = file.Read(text.data() + text.size() - kPiece, kPiece);
        text.resize(text.size() - kPiece + got);
        if (!BeginsLikeXml(text) && !BeginsLikeUtf16(text)) return std::nullopt;
        RequireLength(file.Name(), text.size());
        // What has begun like a document is worth the memory for all of it.
        text.reserve(static_cast<std::size_t>(
                         std::min<std::uint64_t>(file.Size().value_or(0), kMaxDocumentSize)) +
                     kPiece);
    }
    return SourceText(file.Name(), std::move(text));
}

StoredReference ReadReference(const SourceText& source, const std::vector<std::string>& ignored) {
    pugi::xml_document document;
    Parse(source, document);
    Children children(RootOf(source, document));
    StoredReference reference;
    reference.application = ReadHeader(children.Require("Header"));
    const std::vector<Field> fields = ReadDictionary(children.Require("DataDictionary"));
    reference.missing = MissingTokensOf(fields);

    auto stats = NewStats(ListOf(fields, ignored), source.Name());
    const Element extension = children.Require("Extension");
    extension.AllowAttributes({"extender", "name"});
    if (extension.Text("name") != "containerModel")
        extension.Refuse("this extension is not understood");
    Children content(extension);
    ReadModelStats(content.Require("ModelStats"), fields, *stats, reference.missingCounts);
    content.End();
    children.End();
    reference.stats = MADistStats(stats.release());
    return reference;
}

}  // namespace app
