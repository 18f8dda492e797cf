#pragma once

#include <cstddef>
#include <string>

#include "app/commands/Comparison.h"

namespace app {

/// A table for a page with both distributions of a variable: a row a bin, lowest first, or a
/// category, the largest first, with the bars of both shares over each other on one scale and the
/// cases and shares as text. Of more than 21 categories all but 20 are one row, but the one that
/// changed most has its own; neighbours of more than 21 bins share a row. The last rows are the
/// missing and the unreadable data, if there are any. Empty for a variable without cells.
std::string DistributionTable(const CheckResult& result, std::size_t variable);

}  // namespace app
