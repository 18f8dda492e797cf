#pragma once

#include <algorithm>

namespace MCDetail {

/// Whether every number of a range is below the next. A NaN is below nothing and nothing is below
/// it, so beside another number it breaks the order.
template <class Iterator>
bool IsStrictlyAscending(Iterator begin, Iterator end) {
    const auto breaks = [](double left, double right) { return !(left < right); };
    return std::adjacent_find(begin, end, breaks) == end;
}

}  // namespace MCDetail
