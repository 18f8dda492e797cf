#include "app/commands/Report.h"

#include <gtest/gtest.h>

#include <cmath>
#include <csignal>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "app/base/Interrupt.h"
#include "app/base/Printable.h"
#include "app/base/Progress.h"

namespace {

using MCCommon::MCStatus;
using std::string_literals::operator""s;

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

TEST(Printable, EscapesWhatATerminalMustNotGet) {
    const struct {
        std::string text;
        std::string shown;
    } cases[] = {
        {"plain \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x99\x82",
         "plain \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x99\x82"},
        {"\t\r\n\x1b[0m\x7f\0"s, R"(\t\r\n\x1B[0m\x7F\x00)"},
        {"\u200A\u200B\u2027\u202E\u202F\u2066\uFEFF",
         "\u200A\\xE2\\x80\\x8B\u2027\\xE2\\x80\\xAE\u202F\\xE2\\x81\\xA6\\xEF\\xBB\\xBF"},
        {"\xC2\x85", R"(\xC2\x85)"},                  // a control character of two bytes
        {"\xC0\xAF\xC1\xBF", R"(\xC0\xAF\xC1\xBF)"},  // longer than need be
        {"\xE0\x9F\xBF\xF0\x8F\xBF\xBF", R"(\xE0\x9F\xBF\xF0\x8F\xBF\xBF)"},
        {"\xED\xA0\x80", R"(\xED\xA0\x80)"},  // a surrogate
        {"\xF4\x90\x80\x80\xFF", R"(\xF4\x90\x80\x80\xFF)"},
        {"\x80 \xE2\x82", R"(\x80 \xE2\x82)"},  // cut off in front and behind
    };
    for (const auto& c : cases) EXPECT_EQ(app::Printable(c.text), c.shown);
    EXPECT_EQ(app::CountCodePoints("\xE2\x82\xAC\xC3\xA9z"), 3U);
    EXPECT_EQ(app::FirstCodePoints("\xE2\x82\xAC\xC3\xA9z", 2), "\xE2\x82\xAC\xC3\xA9");
}

TEST(Progress, DrawsTheShareAndErasesItself) {
    std::ostringstream terminal;
    {
        app::Progress progress(&terminal, std::chrono::milliseconds(0));
        progress.Update("dir/a.csv", 2, 50, 200);
        EXPECT_EQ(terminal.str(), "\r\x1b[Ka.csv, pass 2 [#######-----------------------]  25 %");
        terminal.str("");
        progress.Update("-", 1, 2'500'000, {});
        EXPECT_EQ(terminal.str(), "\r\x1b[K-, pass 1 2.5 MB");
        terminal.str("");
        progress.Update(std::string(500, 'x'), 1, 300, 200);
        EXPECT_LT(terminal.str().size(), 80U);
        EXPECT_NE(terminal.str().find("100 %"), std::string::npos);
        terminal.str("");
    }
    EXPECT_EQ(terminal.str(), "\r\x1b[K");
    terminal.str("");
    app::Progress(&terminal, std::chrono::hours(1)).Update("a.csv", 1, 50, 200);
    EXPECT_EQ(terminal.str(), "") << "too early";
}

TEST(Interrupt, TurnsASignalIntoACancellation) {
    for (const int signal : {SIGINT, SIGTERM}) {
        app::Interrupt interrupt;
        EXPECT_FALSE(interrupt.QueryCancel());
        raise(signal);
        EXPECT_TRUE(interrupt.QueryCancel());
    }
    std::signal(SIGINT, SIG_IGN);
    app::Interrupt interrupt;
    raise(SIGINT);
    EXPECT_FALSE(interrupt.QueryCancel()) << "ignored before";
    std::signal(SIGINT, SIG_DFL);
}

}  // namespace
