#include "app/base/JsonWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace {

using Json = nlohmann::ordered_json;

// A document of any values, and the same written.
Json Write(app::JsonWriter& writer, std::mt19937_64& random, int levels) {
    const auto kind = random() % (levels > 0 ? 6 : 4);
    const double real =
        std::ldexp(static_cast<double>(random() % 1000), static_cast<int>(random() % 40) - 3);
    if (kind == 0) return writer.Null(), Json();
    if (kind == 1)
        return writer.String("\"\\" + std::to_string(real)), "\"\\" + std::to_string(real);
    if (kind == 2) return writer.Number(std::uint64_t{random.max()}), random.max();
    if (kind == 3) return writer.Number(-real), -real;
    Json document = kind == 4 ? Json::object() : Json::array();
    kind == 4 ? writer.BeginObject() : writer.BeginArray();
    for (auto i = random() % 4; i > 0; --i) {
        const std::string key = "k" + std::to_string(i);
        if (kind == 4) writer.Key(key);
        Json value = Write(writer, random, levels - 1);
        kind == 4 ? document[key] = value : document.emplace_back(value);
    }
    kind == 4 ? writer.EndObject() : writer.EndArray();
    return document;
}

TEST(JsonWriter, WritesWhatAnotherWriterDoes) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 2000; ++i) {
        app::JsonWriter writer;
        const Json document = Write(writer, random, 5);
        ASSERT_EQ(writer.Text(), document.dump(2));
    }
}

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
    EXPECT_EQ(Json::parse(writer.Text()).dump(),
              "[1.0,-0.0,0.1,1e+22,5e-324,123456789012345.0,200000.0,-3,null,null]");
}

}  // namespace
