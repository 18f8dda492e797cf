#include "app/sql/Questions.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace app {

namespace {

constexpr std::array<std::pair<Part, std::string_view>, 9> kParts = {{
    {Part::Count, "count"},
    {Part::Minimum, "minimum"},
    {Part::Maximum, "maximum"},
    {Part::Sum, "sum"},
    {Part::AtMost, "at most"},
    {Part::Center, "center"},
    {Part::Deviation, "deviation"},
    {Part::Square, "square"},
    {Part::Scale, "scale"},
}};

// Scaled numbers are at most 1; one below this, and its square, is no more than the rounding of the
// sum that it would be added to.
constexpr int kFloorExponent = -400;

// The scaled value of a column.
Expression Scaled(const Dialect& dialect, const std::string& value, Scale scale) {
    if (scale.IsNone()) return {value};
    Expression scaled{fmt::format("CASE WHEN ABS({}) >= ", value)};
    scaled += dialect.Number(scale.Floor());
    scaled += fmt::format(" THEN {} * ", value);
    scaled += dialect.Number(scale.Factor());
    scaled += fmt::format(" WHEN {} IS NOT NULL THEN 0e0 END", value);
    return scaled;
}

}  // namespace

std::string_view PartName(Part part) {
    return std::find_if(kParts.begin(), kParts.end(),
                        [part](const auto& each) { return each.first == part; })
        ->second;
}

std::optional<Part> PartNamed(std::string_view name) {
    for (const auto& [part, known] : kParts) {
        if (known == name) return part;
    }
    return std::nullopt;
}

bool IsDouble(Part part) { return part != Part::Count && part != Part::AtMost; }

double Scale::Factor() const { return std::ldexp(1.0, exponent); }

double Scale::Floor() const { return std::ldexp(1.0, kFloorExponent - exponent); }

Scale ScaleFor(double minimum, double maximum) {
    const double largest = std::max(std::abs(minimum), std::abs(maximum));
    if (!(largest > 0.0) || !std::isfinite(largest)) return {};
    // The factor and the floor are to be normal numbers.
    constexpr int kMost = 1000;
    constexpr int kLeast = -1023;
    return {std::clamp(-(std::ilogb(largest) + 1), kLeast + 1, kMost)};
}

bool ColumnAnswer::Take(Part part, std::size_t index, std::optional<double> value) {
    if (!value) return IsDouble(part);
    if (!IsDouble(part)) {
        constexpr double kMaxCount = 9007199254740992.0;
        if (!(*value >= 0.0 && *value <= kMaxCount) || std::trunc(*value) != *value) return false;
    }
    switch (part) {
        case Part::Count:
            count += static_cast<std::uint64_t>(*value);
            break;
        case Part::Minimum:
            if (!(minimum <= *value)) minimum = *value;
            break;
        case Part::Maximum:
            if (!(maximum >= *value)) maximum = *value;
            break;
        case Part::Sum:
            sum += *value;
            break;
        case Part::AtMost:
            if (atMost.size() <= index) atMost.resize(index + 1);
            atMost[index] += static_cast<std::uint64_t>(*value);
            break;
        case Part::Center:
            center = *value;
            break;
        case Part::Deviation:
            deviation += *value;
            break;
        case Part::Square:
            square += *value;
            break;
        case Part::Scale:
            if (!(*value > 0.0) || !std::isfinite(*value)) return false;
            scale.exponent = std::ilogb(*value);
            return scale.Factor() == *value;
    }
    return true;
}

std::vector<Question> CountQuestions(const Dialect& dialect, std::size_t column,
                                     const std::string& value,
                                     const std::vector<double>& cutPoints) {
    std::vector<Question> questions = {
        {column, Part::Count, 0, {fmt::format("COUNT({})", value)}},
        {column, Part::Minimum, 0, {fmt::format("MIN({})", value)}},
        {column, Part::Maximum, 0, {fmt::format("MAX({})", value)}},
    };
    for (std::size_t i = 0; i < cutPoints.size(); ++i) {
        questions.push_back({column, Part::AtMost, i, dialect.CountAtMost(value, cutPoints[i])});
    }
    return questions;
}

Question SumQuestion(const Dialect& dialect, std::size_t column, const std::string& value,
                     Scale scale) {
    Expression sum{"SUM("};
    sum += Scaled(dialect, value, scale);
    sum += ")";
    return {column, Part::Sum, 0, std::move(sum)};
}

std::vector<Question> DeviationQuestions(const Dialect& dialect, std::size_t column,
                                         const std::string& value, double center, Scale scale) {
    Expression deviation{"("};
    deviation += Scaled(dialect, value, scale);
    deviation += " - ";
    deviation += dialect.Number(center);
    deviation += ")";
    Expression sum{"SUM"};
    sum += deviation;
    Expression squares{"SUM("};
    squares += deviation;
    squares += " * ";
    squares += deviation;
    squares += ")";
    return {{column, Part::Count, 0, {fmt::format("COUNT({})", value)}},
            {column, Part::Deviation, 0, std::move(sum)},
            {column, Part::Square, 0, std::move(squares)}};
}

}  // namespace app
