#include <nlohmann/json.hpp>

#include "app/commands/Report.h"

namespace app {

namespace {

using Json = nlohmann::ordered_json;

Json StatusJson(const MCCommon::MCStatus& status) {
    return {{"code", status.GetCode()}, {"text", status.GetMessage()}};
}

Json NumberOrNull(const std::optional<double>& number) { return number ? Json(*number) : Json(); }

Json VariableJson(const CheckedVariable& variable) {
    return {{"name", variable.name},
            {"kind", variable.categorical ? "categorical" : "continuous"},
            {"reference_cases", variable.referenceCases},
            {"new_cases", variable.newCases},
            {"p_value", NumberOrNull(variable.pValue)},
            {"status", StatusJson(variable.status)},
            {"weight", variable.weight}};
}

}  // namespace

std::string JsonReport(const CheckResult& result) {
    Json variables = Json::array();
    for (const CheckedVariable& variable : result.variables) {
        variables.push_back(VariableJson(variable));
    }
    const Json document = {{"schema", 1},
                           {"accreditation", NumberOrNull(result.accreditation)},
                           {"status", StatusJson(result.status)},
                           {"variables", std::move(variables)}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace app
