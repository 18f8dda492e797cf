#include "accredit/host/MCPMMLExporter.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "accredit/host/internal/PMMLVocabulary.h"
#include "fakes/Documents.h"
#include "fakes/Fakes.h"

namespace {

using MCXML_NAMESPACE::XMLElement;

TABLE_TEST(PMMLVocabulary, HasTheWordsInOrder, 2) {
    std::string words;
    for (const std::string* word : MCDetail::gVocabulary) words += *word + ' ';
    EXPECT_EQ(words, row.Text(1) + ' ');
    EXPECT_EQ(MCDetail::gVocabulary.size(), row.Number(0));
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

TABLE_TEST(MCPMMLExporter, AlwaysDeliversAnExtension, 3) {
    EXPECT_EQ(Made([&](XMLElement*& element) {
                  MCPMMLExporter(nullptr).ExportExtension(row.Text(0), row.Text(1), element);
                  return MCCommon::MCStatus();
              }),
              row.Text(2));
}

}  // namespace
