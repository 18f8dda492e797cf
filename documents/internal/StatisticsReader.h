#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "accredit/documents/internal/Element.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCUniStats.h"

namespace MADocuments {

/// What a document says of one variable.
struct StoredStatistics {
    MCMTD_NAMESPACE::MCUniStats stats;
    std::uint64_t total = 0;               ///< All data.
    std::optional<std::uint64_t> missing;  ///< Missing data, which are no cases, if it says so.
    std::uint64_t invalid = 0;             ///< The same of invalid data.
};

/// Whether a document has of a continuous variable what a new summary holds before anything is
/// loaded: no cases, and moments of 0.
bool IsUntouched(double cases, const MCMTD_NAMESPACE::MCUniStats::SummStats& summary);

/// Reads the UnivariateStats of the field of this name; `encoder` is null for a continuous one. A
/// categorical one has at least as many frequencies as categories. Only the data of numbers can be
/// invalid. Throws DocumentError.
StoredStatistics ReadStatistics(const Element& element, const std::string& name,
                                const MCMTD_NAMESPACE::IMCEncoder* encoder);

}  // namespace MADocuments
