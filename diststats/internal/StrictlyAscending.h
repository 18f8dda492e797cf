#pragma once

#include <algorithm>
#include <vector>

namespace MADetail {

/// Whether every value is below the next. A NaN is below nothing and nothing is below it, so beside
/// another value it breaks the order.
inline bool IsStrictlyAscending(const std::vector<double>& values) {
    const auto breaks = [](double left, double right) { return !(left < right); };
    return std::adjacent_find(values.begin(), values.end(), breaks) == values.end();
}

}  // namespace MADetail
