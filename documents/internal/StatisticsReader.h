#pragma once

#include <cstdint>
#include <string>

#include "accredit/documents/internal/Element.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCUniStats.h"

namespace MADocuments {

/// What a document says of one variable.
struct StoredStatistics {
    MCMTD_NAMESPACE::MCUniStats stats;
    std::uint64_t total = 0;    ///< Cases and missing data.
    std::uint64_t missing = 0;  ///< Missing data, which are no cases.
};

/// Reads the UnivariateStats of the field of this name; `encoder` is null for a continuous one.
/// Throws DocumentError.
StoredStatistics ReadStatistics(const Element& element, const std::string& name,
                                const MCMTD_NAMESPACE::IMCEncoder* encoder);

}  // namespace MADocuments
