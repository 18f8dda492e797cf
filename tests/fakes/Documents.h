#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <pugixml.hpp>
#include <string>

namespace fakes {

/// Leaves a document in the build folder, where the test pmml_documents validates all of them.
inline void KeepDocument(const std::string& document) {
    static int number = 0;
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = test->name();
    std::replace(name.begin(), name.end(), '/', '-');  // before the label of a row
    std::filesystem::create_directories(ACCREDIT_DOCUMENT_FOLDER);
    std::ofstream(std::string(ACCREDIT_DOCUMENT_FOLDER "/") + test->test_suite_name() + "." + name +
                      "-" + std::to_string(++number) + ".xml",
                  std::ios::binary)
        << document;
}

/// The document as another reader sees it.
inline pugi::xml_document ParseDocument(const std::string& document) {
    pugi::xml_document parsed;
    const pugi::xml_parse_result result = parsed.load_buffer(document.data(), document.size());
    EXPECT_TRUE(result) << result.description() << " in\n" << document;
    return parsed;
}

}  // namespace fakes
