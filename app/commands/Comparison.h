#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "app/data/CsvReader.h"

namespace app {

/// What the comparison gave for one variable of the reference.
struct CheckedVariable {
    std::string name;
    bool categorical = false;
    unsigned long referenceCases = 0;
    unsigned long newCases = 0;
    std::optional<double> pValue;
    MCCommon::MCStatus status;
    double weight = 1.0;
    /// Why there is no p-value; empty if there is one.
    std::string reason = {};
    /// The first category of the new data that the reference lacks, fit to be shown; empty if there
    /// is none.
    std::string unknownCategory = {};
};

/// What the comparison gave.
struct CheckResult {
    std::optional<double> accreditation;  ///< Nothing if there is no number.
    MCCommon::MCStatus status;
    std::vector<CheckedVariable> variables;  ///< In the order of the reference's columns.
};

/// Compares the rows of a file with a reference. `weights` is empty, or has one entry for each
/// input variable of the reference. A variable whose frequencies or moments say nothing is not
/// tested, and then there is no accreditation. Throws InputError, Cancelled.
CheckResult Compare(const MADocuments::Reference& reference, CsvReader& newData,
                    const std::vector<double>& weights, MCQueryCancel& cancel);

}  // namespace app
