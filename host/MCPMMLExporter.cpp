#include "accredit/host/MCPMMLExporter.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <utility>

#include "accredit/host/internal/PMMLElements.h"
#include "accredit/host/internal/PMMLValues.h"
#include "accredit/host/internal/PMMLVocabulary.h"

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCUniStats;
using MCMTD_NAMESPACE::MCVarList;
using MCXML_NAMESPACE::XMLElement;
using namespace MCDetail;

namespace {

MCStatus Deliver(ElementPtr made, XMLElement*& element) {
    if (!made) return {MAStatusExportFailed, false};
    element = made.release();
    return {};
}

ElementPtr MakeHeader(const MCApplicInfo4XML* info, const std::string& description) {
    ElementPtr header = NewElement(gHeader);
    header->SetAttribute(gCopyright, gLegalNotice);
    if (!description.empty() && !header->SetAttribute(gDescription, description)) return nullptr;
    if (!info) return header;
    if (!info->name.empty()) {
        ElementPtr application = NewElement(gApplication);
        if (!application->SetAttribute(gName, info->name)) return nullptr;
        if (!info->version.empty() && !application->SetAttribute(gVersion, info->version)) {
            return nullptr;
        }
        Adopt(*header, std::move(application));
    }
    if (!info->timestamp.empty()) {
        ElementPtr timestamp = NewElement(gTimestamp);
        if (!timestamp->SetText(info->timestamp)) return nullptr;
        Adopt(*header, std::move(timestamp));
    }
    return header;
}

const std::string& OptypeOf(int measureLevel) {
    if (measureLevel == IMCVariable::MeasureLevelOrdinal) return gOrdinal;
    return MCMTD_NAMESPACE::IsCategoricalLevel(measureLevel) ? gCategorical : gContinuous;
}

}  // namespace

MCPMMLExporter::MCPMMLExporter(MCQueryCancel* /*queryCancel*/) {}

MCPMMLExporter::~MCPMMLExporter() = default;

XMLElement* MCPMMLExporter::ExportPMMLElement() const {
    ElementPtr root = NewElement(gPMML);
    root->SetAttribute(gVersion, gVersionNumber);
    root->SetAttribute(gXmlns, gPMMLNamespace);
    root->SetAttribute(gXmlnsXsi, gXSINamespace);
    root->SetAttribute(gSchemaLocation, gSchemaLocationValue);
    return root.release();
}

MCStatus MCPMMLExporter::ExportHeader(const MCApplicInfo4XML* info, const std::string& description,
                                      bool withApplication, XMLElement*& element) {
    return Deliver(MakeHeader(withApplication ? info : nullptr, description), element);
}

void MCPMMLExporter::SetMissingValues(const std::vector<std::string>& texts) {
    std::set<std::string> seen;
    std::vector<std::string> once;
    for (const std::string& text : texts) {
        if (seen.insert(text).second) once.push_back(text);
    }
    mMissingValues = std::move(once);
}

MCStatus MCPMMLExporter::ExportDataDictionary(const MCVarList& varList,
                                              const std::vector<int>& listIndexes,
                                              XMLElement*& element) {
    const std::set<int> positions(listIndexes.begin(), listIndexes.end());
    int categories = 0;
    for (const int position : positions) {
        const IMCVariable* variable = varList.GetVarAt(position);
        if (variable && MCMTD_NAMESPACE::IsCategoricalLevel(variable->GetMeasureLevel()) &&
            !CountFieldValues(*varList.GetEncoderAt(position), categories)) {
            return Deliver(nullptr, element);
        }
    }

    mCategories.clear();
    ElementPtr dictionary = NewElement(gDataDictionary);
    for (const int position : positions) {
        if (!varList.GetVarAt(position)) continue;
        ElementPtr field = MakeDataField(varList, position);
        if (!field) return Deliver(nullptr, element);
        Adopt(*dictionary, std::move(field));
    }
    if (mCategories.empty()) return Deliver(nullptr, element);
    dictionary->SetAttribute(gNumberOfFields, std::to_string(mCategories.size()));
    return Deliver(std::move(dictionary), element);
}

std::unique_ptr<XMLElement> MCPMMLExporter::MakeDataField(const MCVarList& varList, int listIndex) {
    const IMCVariable& variable = *varList.GetVarAt(listIndex);
    const std::string name = variable.GetName();
    const auto [entry, isNew] = mCategories.try_emplace(name);
    ElementPtr field = NewElement(gDataField);
    if (!isNew || !field->SetAttribute(gName, name)) return nullptr;

    const std::string& optype = OptypeOf(variable.GetMeasureLevel());
    field->SetAttribute(gOptype, optype);
    if (optype == gContinuous) {
        field->SetAttribute(gDataType, gDouble);
    } else if (!AddCategories(*varList.GetEncoderAt(listIndex), *field, entry->second)) {
        return nullptr;
    }
    for (const std::string& text : mMissingValues) {
        ElementPtr value = NewElement(gValue);
        if (!value->SetAttribute(gValueAttribute, text)) return nullptr;
        value->SetAttribute(gProperty, gMissing);
        Adopt(*field, std::move(value));
    }
    return field;
}

bool MCPMMLExporter::AddCategories(const IMCEncoder& encoder, XMLElement& field,
                                   Categories& categories) {
    const bool numbers = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
    field.SetAttribute(gDataType, numbers ? gDouble : gString);
    const FieldValues values = ReadFieldValues(encoder, mMissingValues);
    if (values.unheld >= 0 || values.repeated >= 0) return false;
    std::optional<std::string> array = std::string();
    for (const std::string& text : values.texts) {
        ElementPtr value = NewElement(gValue);
        value->SetAttribute(gValueAttribute, text);
        Adopt(field, std::move(value));

        const std::optional<std::string> token = array ? ArrayToken(text) : std::nullopt;
        if (token) {
            if (!array->empty()) *array += ' ';
            *array += *token;
        } else {
            array.reset();
        }
    }
    categories = {values.texts.size(), std::move(array)};
    return true;
}

void MCPMMLExporter::ExportExtension(const std::string& name, const std::string& value,
                                     XMLElement*& element) {
    element = MakeExtension(name, value).release();
}

MCStatus MCPMMLExporter::ExportUniStats(const MCUniStats& stats, XMLElement*& element) {
    const auto found = mCategories.find(stats.GetVarName());
    if (found == mCategories.end()) return Deliver(MakeUnivariateStats(stats, 0, nullptr), element);
    const Categories& categories = found->second;
    return Deliver(MakeUnivariateStats(stats, categories.count,
                                       categories.array ? &*categories.array : nullptr),
                   element);
}
