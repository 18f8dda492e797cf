#include "app/base/JsonWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <optional>

namespace {

TEST(JsonWriter, WritesNumbersThatGiveTheSameDoubleBack) {
    app::JsonWriter writer;
    writer.BeginArray();
    for (const double number : {1.0, -0.0, 0.1, 1e22, 5e-324, 123456789012345.0, 200000.0}) {
        writer.Number(number);
    }
    writer.Number(-3);
    writer.Number(std::optional<double>());
    writer.Number(std::numeric_limits<double>::infinity());
    writer.EndArray();
    EXPECT_EQ(nlohmann::json::parse(writer.Text()).dump(),
              "[1.0,-0.0,0.1,1e+22,5e-324,123456789012345.0,200000.0,-3,null,null]");
}

}  // namespace
