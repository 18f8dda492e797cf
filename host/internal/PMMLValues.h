#pragma once

#include <string>
#include <vector>

#include "accredit/host/IMCEncoder.h"

namespace MCDetail {

/// The values of a categorical variable's field.
struct FieldValues {
    std::vector<std::string> texts;  ///< In code order, up to one that cannot be held.
    int unheld = -1;                 ///< The first code whose category XML cannot hold, or -1.
    int repeated = -1;  ///< The first code whose text is also another value of the field, or -1.
};

/// The categories of an encoder as texts. `missingValues` are those of the field that mean missing.
FieldValues ReadFieldValues(const MCMTD_NAMESPACE::IMCEncoder& encoder,
                            const std::vector<std::string>& missingValues);

/// Adds the number of an encoder's categories to that of a data dictionary. False if these are more
/// than it holds; no category has been asked for then.
bool CountFieldValues(const MCMTD_NAMESPACE::IMCEncoder& encoder, int& count);

}  // namespace MCDetail
