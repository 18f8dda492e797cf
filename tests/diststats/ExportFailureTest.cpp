// How an export meets an exporter that fails. The exporter's operations are defined here, so this
// is a program of its own; what it leaks, the sanitizers find.

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/MCPMMLExporter.h"
#include "fakes/Fakes.h"

using MCCommon::MCStatus;
using MCXML_NAMESPACE::XMLElement;

namespace {

enum class Failure { None, Status, StatusWithElement, NoElement, Throw };

struct Script {
    std::string step;  // the step that fails
    Failure failure = Failure::None;
    std::string log;
};
Script script;

constexpr long kOwnCode = 4711;

MCStatus Step(const std::string& name, XMLElement*& element) {
    script.log += name + ' ';
    EXPECT_EQ(element, nullptr) << name;
    const Failure failure = name == script.step ? script.failure : Failure::None;
    if (failure != Failure::Status && failure != Failure::NoElement) {
        element = XMLElement::Create(name);
    }
    if (failure == Failure::Throw) throw std::bad_alloc();
    const bool fails = failure == Failure::Status || failure == Failure::StatusWithElement;
    return fails ? MCStatus(kOwnCode, false) : MCStatus();
}

}  // namespace

MCPMMLExporter::MCPMMLExporter(MCQueryCancel* queryCancel) {
    EXPECT_EQ(queryCancel, nullptr);
    script.log += "made ";
}
MCPMMLExporter::~MCPMMLExporter() { script.log += "gone "; }
XMLElement* MCPMMLExporter::ExportPMMLElement() const {
    XMLElement* root = nullptr;
    Step("root", root);
    return root;
}
MCStatus MCPMMLExporter::ExportHeader(const MCApplicInfo4XML* info, const std::string& description,
                                      bool withApplication, XMLElement*& element) {
    EXPECT_EQ(info->name, "application");
    EXPECT_EQ(description, "");
    EXPECT_TRUE(withApplication);
    return Step("header", element);
}
MCStatus MCPMMLExporter::ExportDataDictionary(const MCMTD_NAMESPACE::MCVarList& varList,
                                              const std::vector<int>& listIndexes,
                                              XMLElement*& element) {
    EXPECT_EQ(varList.Size(), 2U);
    EXPECT_EQ(listIndexes, (std::vector<int>{0, 1}));
    return Step("dictionary", element);
}
void MCPMMLExporter::ExportExtension(const std::string& name, const std::string& value,
                                     XMLElement*& element) {
    EXPECT_EQ(name, "containerModel");
    EXPECT_EQ(value, "");
    Step("extension", element);
}
MCStatus MCPMMLExporter::ExportUniStats(const MCMTD_NAMESPACE::MCUniStats& stats,
                                        XMLElement*& element) {
    return Step(stats.GetVarName(), element);
}

namespace {

TEST(ExportFailure, StopsAtTheFirstAndWritesNothing) {
    const MCApplicInfo4XML info{"application", "", ""};
    const MADistStatsImp stats(fakes::List("a b"), nullptr);
    std::string log = "made ";
    for (const std::string step : {"root", "header", "dictionary", "extension", "a", "b", "none"}) {
        log += step == "none" ? "" : step + ' ';
        for (const Failure failure :
             {Failure::Status, Failure::StatusWithElement, Failure::NoElement, Failure::Throw}) {
            // What a step cannot do: give a status that it does not have, or null where that is no
            // failure.
            const bool variable = step == "a" || step == "b";
            if (failure != Failure::Throw && step == "extension") continue;
            if (failure != Failure::NoElement && step == "root") continue;
            if (failure == Failure::NoElement && variable) continue;
            SCOPED_TRACE(step + ' ' + std::to_string(static_cast<int>(failure)));
            script = {step, failure, ""};
            std::ostringstream out;
            long code = -1;
            try {
                code = stats.ExportAsXML(&info, out).GetCode();
            } catch (const std::bad_alloc&) {
            }
            const bool fails = step != "none";
            EXPECT_EQ(code, !fails                      ? 0
                            : failure == Failure::Throw ? -1
                            : variable                  ? kOwnCode
                                                        : 180009);
            EXPECT_EQ(script.log, log + "gone ");
            EXPECT_EQ(out.str().empty(), fails);
        }
    }
}

}  // namespace
