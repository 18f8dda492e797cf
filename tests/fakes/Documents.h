#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <string>

namespace fakes {

/// Leaves a text in a folder of the build folder, in a file of its own.
inline void KeepText(const std::string& folder, const std::string& ending,
                     const std::string& text) {
    static int number = 0;
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = test->name();
    std::replace(name.begin(), name.end(), '/', '-');  // before the label of a row
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/" + test->test_suite_name() + "." + name + "-" +
                      std::to_string(++number) + ending,
                  std::ios::binary)
        << text;
}

/// Keeps a document for the test pmml_documents, which validates all of them.
inline void KeepDocument(const std::string& document) {
    KeepText(ACCREDIT_DOCUMENT_FOLDER, ".xml", document);
}

/// Keeps a report for the test json_reports in the same way.
inline void KeepReport(const std::string& report) {
    KeepText(ACCREDIT_REPORT_FOLDER, ".json", report);
}

/// The document as another reader sees it.
inline pugi::xml_document ParseDocument(const std::string& document) {
    pugi::xml_document parsed;
    const pugi::xml_parse_result result = parsed.load_buffer(document.data(), document.size());
    EXPECT_TRUE(result) << result.description() << " in\n" << document;
    return parsed;
}

}  // namespace fakes
