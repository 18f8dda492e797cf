#pragma once

#include <string>
#include <vector>

#include "accredit/host/MCUniStats.h"

namespace MADocuments {

/// The bins of a continuous variable as a document holds them: see MCUniStats.
struct Bins {
    std::vector<double> margins;
    std::vector<double> frequencies;
};

/// What in the summary of a continuous variable with so many cases cannot be together, or an empty
/// text. What the number of cases asks for and what is greater than something else, the summary
/// checks when it is loaded. `bins` may be empty.
std::string Contradiction(double cases, const MCMTD_NAMESPACE::MCUniStats::SummStats& summary,
                          const Bins& bins);

}  // namespace MADocuments
