#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/sql/Dialect.h"

namespace app {

/// What is asked of the numbers of a column.
enum class Part {
    Count,      ///< How many there are.
    Minimum,    ///< The smallest and
    Maximum,    ///< the largest.
    Sum,        ///< Their sum, scaled; from which the center is made.
    AtMost,     ///< How many are at most as large as a cut point.
    Center,     ///< A number near their mean.
    Deviation,  ///< The sum of what they differ from the center,
    Square,     ///< and of its squares; scaled.
    Scale,      ///< The factor that the last three are scaled with.
};

/// The name of a part in an answer that a client prints.
std::string_view PartName(Part part);
std::optional<Part> PartNamed(std::string_view name);
/// Whether the answer is a double and no count.
bool IsDouble(Part part);

/// One expression of a query, an aggregate.
struct Question {
    std::size_t column = 0;  ///< Counted from 0, as the asker does.
    Part part = Part::Count;
    std::size_t index = 0;  ///< Of a cut point.
    Expression expression;
};

/// Values of a column that are equal.
struct Group {
    Key key;
    std::uint64_t count = 0;
};

/// A power of two that numbers are multiplied with before they are added up, so that neither their
/// sum nor those of their squares leave the range of doubles; what is too small to matter becomes
/// 0.
struct Scale {
    int exponent = 0;  ///< 0 for none.
    bool IsNone() const { return exponent == 0; }
    double Factor() const;
    /// No number smaller than this is more than 0.
    double Floor() const;
};

/// The scale for numbers between these two.
Scale ScaleFor(double minimum, double maximum);

/// What an engine answered of one column. The answers of several nodes are taken one after the
/// other.
struct ColumnAnswer {
    std::uint64_t count = 0;
    double minimum = std::numeric_limits<double>::infinity();
    double maximum = -std::numeric_limits<double>::infinity();
    double sum = 0.0;
    std::vector<std::uint64_t> atMost;
    double center = 0.0;
    double deviation = 0.0;
    double square = 0.0;
    Scale scale;                ///< Of the sum, the center and the last two.
    std::vector<Group> groups;  ///< The values that were grouped and not added up; without NULL.

    /// Takes the answer to one question; nothing for NULL. False for a count that is none.
    bool Take(Part part, std::size_t index, std::optional<double> value);
};

/// How many there are, the smallest, the largest, and those up to each cut point.
std::vector<Question> CountQuestions(const Dialect& dialect, std::size_t column,
                                     const std::string& value,
                                     const std::vector<double>& cutPoints);
Question SumQuestion(const Dialect& dialect, std::size_t column, const std::string& value,
                     Scale scale);
/// The count again, and the deviations from the center, which is scaled.
std::vector<Question> DeviationQuestions(const Dialect& dialect, std::size_t column,
                                         const std::string& value, double center, Scale scale);
}  // namespace app
