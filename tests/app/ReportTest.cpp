#include "app/commands/Report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

namespace {

using MCCommon::MCStatus;

app::CheckResult TwoVariables() {
    app::CheckResult result;
    result.accreditation = 0.1;
    result.variables = {{"h\xC3\xA9\n", false, 10, 9, 0.30000000000000004, {}, 1.0},
                        {"b\xFF", true, 1234567, 0, {}, MCStatus(MAStatusNoCases, false), 2.5}};
    return result;
}

TEST(TextReport, AlignsNamesOfAnyBytes) {
    EXPECT_EQ(app::TextReport(TwoVariables(), {}),
              "Variable  Kind         Reference  New  p-value  Weight  Status\n"
              "h\xC3\xA9\\n      continuous          10    9      0.3       1  OK\n"
              "b\\xFF     categorical    1234567    0        -     2.5  "
              "One of the samples has no cases of this variable\n"
              "\n"
              "Accreditation 0.1\n");
}

TEST(TextReport, SaysWhatTheNumberMeansOrWhyThereIsNone) {
    const auto conclusion = [](const app::CheckResult& result, std::optional<double> bound) {
        const std::string text = app::TextReport(result, bound);
        return text.substr(text.find("\n\n") + 2);
    };
    app::CheckResult result = TwoVariables();
    EXPECT_EQ(conclusion(result, 0.1), "Accreditation 0.1\n");
    EXPECT_EQ(conclusion(result, 0.25), "Accreditation 0.1, which is below 0.25\n");
    EXPECT_EQ(conclusion(result, std::nextafter(0.1, 1.0)),
              "Accreditation 0.1, which is below 0.10000000000000002\n");
    result.accreditation.reset();
    EXPECT_EQ(conclusion(result, {}), "No accreditation: the weights sum to 0\n");
    result.status = MCStatus(MAStatusNoCases, false);
    EXPECT_EQ(conclusion(result, {}),
              "No accreditation: One of the samples has no cases of this variable "
              "(variable \"b\\xFF\")\n");
    result.status = result.variables[1].status = MCStatus(MAStatusCategoriesDiffer, false);
    result.variables[1].unknownCategory = "z";
    EXPECT_EQ(conclusion(result, {}).substr(0, 58),
              "Variable \"b\\xFF\": the reference lacks the category \"z\"\nNo ");
    result.status = MCStatus(MAStatusBadCutPoints, false);
    EXPECT_NE(conclusion(result, {}).find("accreditation: Its values vary"), std::string::npos);
}

TEST(JsonReport, HasTheStatedShape) {
    const std::string text = app::JsonReport(TwoVariables());
    EXPECT_EQ(nlohmann::ordered_json::parse(text).dump(),
              R"({"schema":1,"accreditation":0.1,"status":{"code":0,"text":"OK"},"variables":[)"
              R"({"name":"hé\n","kind":"continuous","reference_cases":10,"new_cases":9,)"
              R"("p_value":0.30000000000000004,"status":{"code":0,"text":"OK"},"weight":1.0},)"
              R"({"name":"b�","kind":"categorical","reference_cases":1234567,"new_cases":0,)"
              R"("p_value":null,"status":{"code":180018,"text":)"
              R"("One of the samples has no cases of this variable"},"weight":2.5}]})");
}

}  // namespace
