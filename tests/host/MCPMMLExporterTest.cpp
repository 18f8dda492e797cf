#include "accredit/host/MCPMMLExporter.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "accredit/host/internal/PMMLVocabulary.h"
#include "fakes/Documents.h"
#include "fakes/Fakes.h"

namespace {

using MCXML_NAMESPACE::XMLElement;

TEST(PMMLVocabulary, Has96WordsInOrder) {
    std::string words;
    for (const std::string* word : MCDetail::gVocabulary) words += *word + ' ';
    EXPECT_EQ(
        words,
        "PMML version 3.1 xmlns http://www.dmg.org/PMML-3_1 xmlns:xsi "
        "http://www.w3.org/2001/XMLSchema-instance xsi:schemaLocation "
        "http://www.dmg.org/PMML-3_1 pmml-3-1.xsd Header copyright "
        "Copyright (c) 2026 The Accredit authors description Application Annotation name "
        "Timestamp DataDictionary numberOfFields DataField displayName optype categorical "
        "continuous ordinal Value value displayValue dataType string float double property "
        "missing valid invalid Extension extender Accredit missingInterval invalidRangeLower "
        "invalidRangeUpper TransformationDictionary DerivedField FieldRef field Discretize "
        "DiscretizeBin binValue Interval closure openOpen openClosed closedOpen closedClosed "
        "leftMargin rightMargin functionName classification regression modelName algorithmName "
        "fieldName MiningSchema MiningField name usageType active predicted ModelStats "
        "UnivariateStats Array n type real int Matrix kind diagonal Covariances Partition "
        "PartitionFieldStats N Counts totalFreq invalidFreq missingFreq DiscrStats NumericInfo "
        "minimum maximum mean standardDeviation median ContStats containerModel ");
}

// What one step made, as text; "" for a step that failed and left nothing.
template <class Step>
std::string Made(Step step) {
    XMLElement* element = nullptr;
    const MCCommon::MCStatus status = step(element);
    const std::unique_ptr<XMLElement> owner(element);
    EXPECT_EQ(status.IsOK(), element != nullptr);
    if (!element) {
        EXPECT_EQ(status.GetCode(), MAStatusExportFailed);
        return "";
    }
    std::ostringstream out;
    MCXML_NAMESPACE::ExportFormat format;
    format.indent = -1;
    format.declaration = false;
    element->WriteTo(out, format, 0);
    return out.str();
}

// A cell "none" stands for no information on the application.
TABLE_TEST(MCPMMLExporter, NamesTheApplicationInTheHeader, 5) {
    const MCApplicInfo4XML info{row.Text(0), row.Text(1), row.Text(2)};
    const std::string description = row.Text(3);
    const std::string made = Made([&](XMLElement*& element) {
        return MCPMMLExporter(nullptr).ExportHeader(info.name == "none" ? nullptr : &info,
                                                    description, description != "bare", element);
    });
    const std::string start = R"(<Header copyright="Copyright (c) 2026 The Accredit authors")";
    EXPECT_EQ(made, row.Text(4) == "refused" ? "" : start + row.Text(4));
}

TABLE_TEST(MCPMMLExporter, WritesTheFieldsOfTheChosenVariables, 4) {
    const fakes::Numbers positions = row.Numbers(1);
    MCPMMLExporter exporter(nullptr);
    exporter.SetMissingValues(fakes::Words(row.Text(2), ','));
    const std::string made = Made([&](XMLElement*& element) {
        return exporter.ExportDataDictionary(fakes::List(row.Text(0)),
                                             {positions.begin(), positions.end()}, element);
    });
    EXPECT_EQ(made, row.Text(3) == "refused" ? "" : row.Text(3));
}

TABLE_TEST(MCPMMLExporter, WritesWhatThereIsOfAVariable, 2) {
    const std::string made = Made([&](XMLElement*& element) {
        return MCPMMLExporter(nullptr).ExportUniStats(fakes::UniStats(row.Text(0)), element);
    });
    const std::string start = R"(<UnivariateStats field="x">)";
    EXPECT_EQ(made, row.Text(1) == "refused" ? "" : start + row.Text(1) + "</UnivariateStats>");
}

TABLE_TEST(MCPMMLExporter, NamesTheCategoriesWhereAnArrayCanHoldThem, 4) {
    MCMTD_NAMESPACE::MCVarList list;
    list.Add(MCMTD_NAMESPACE::MCVariable::Categorical("x", 3),
             MCMTD_NAMESPACE::MCStringEncoder({row.Text(0), row.Text(1), row.Text(2)}));
    MCPMMLExporter exporter(nullptr);
    Made([&](XMLElement*& element) { return exporter.ExportDataDictionary(list, {0}, element); });
    // A data pass that met the first two categories only.
    const std::string made = Made([&](XMLElement*& element) {
        return exporter.ExportUniStats(fakes::UniStats("x; 3; 2 1"), element);
    });
    const pugi::xml_document parsed = fakes::ParseDocument(made);
    const auto array = parsed.select_node("//Array[@type='string']").node();
    EXPECT_EQ(array.text().get(), row.Text(3));
    EXPECT_EQ(array.empty(), row.Text(3).empty());
    EXPECT_STREQ(parsed.select_node("//Array[@type='int']").node().text().get(), "2 1 0");
}

TEST(MCPMMLExporter, AlwaysDeliversAnExtension) {
    for (const auto& [name, value, expected] :
         {std::tuple("n", "", R"(<Extension extender="Accredit" name="n"/>)"),
          std::tuple("n", "v", R"(<Extension extender="Accredit" name="n" value="v"/>)"),
          std::tuple("\x01", "\xFF", R"(<Extension extender="Accredit"/>)")}) {
        EXPECT_EQ(Made([&, name = name, value = value](XMLElement*& element) {
                      MCPMMLExporter(nullptr).ExportExtension(name, value, element);
                      return MCCommon::MCStatus();
                  }),
                  expected);
    }
}

}  // namespace
