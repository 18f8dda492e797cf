#include "app/base/JsonWriter.h"
#include "app/commands/Report.h"

namespace app {

namespace {

void WriteStatus(JsonWriter& json, const MCCommon::MCStatus& status) {
    json.Key("status");
    json.BeginObject();
    json.Key("code");
    json.Number(static_cast<int>(status.GetCode()));
    json.Key("text");
    json.String(status.GetMessage());
    json.EndObject();
}

void WriteVariable(JsonWriter& json, const CheckedVariable& variable) {
    json.BeginObject();
    json.Key("name");
    json.String(variable.name);
    json.Key("kind");
    json.String(variable.categorical ? "categorical" : "continuous");
    json.Key("reference_cases");
    json.Number(std::uint64_t{variable.referenceCases});
    json.Key("new_cases");
    json.Number(std::uint64_t{variable.newCases});
    json.Key("p_value");
    json.Number(variable.pValue);
    WriteStatus(json, variable.status);
    json.Key("reason");
    variable.reason.empty() ? json.Null() : json.String(variable.reason);
    json.Key("weight");
    json.Number(variable.weight);
    json.EndObject();
}

}  // namespace

std::string JsonReport(const CheckResult& result) {
    JsonWriter json;
    json.BeginObject();
    json.Key("schema");
    json.Number(1);
    json.Key("accreditation");
    json.Number(result.accreditation);
    WriteStatus(json, result.status);
    json.Key("variables");
    json.BeginArray();
    for (const CheckedVariable& variable : result.variables) WriteVariable(json, variable);
    json.EndArray();
    json.EndObject();
    return json.Text() + "\n";
}

}  // namespace app
