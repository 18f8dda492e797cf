#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/MCStatus.h"

namespace app {

/// What the comparison gave for one variable of the reference.
struct CheckedVariable {
    std::string name;
    bool categorical = false;
    std::uint64_t referenceCases = 0;
    std::uint64_t newCases = 0;
    std::optional<double> pValue;
    std::optional<double> statistic;
    std::optional<double> degreesOfFreedom;
    MCCommon::MCStatus status;
    double weight = 1.0;
    /// Why the variable is not tested, or else why there is no p-value; empty if neither.
    std::string reason = {};
    MAVariableComparison comparison = {};
    /// Those between the bins of the comparison, ascending.
    std::vector<double> cutPoints = {};
    /// What the new data holds besides its cases.
    MADocuments::UncountedData newUncounted = {};
    MADocuments::UncountedData referenceUncounted = {};
};

/// What the comparison of one new file with the reference gave.
struct CheckResult {
    std::string newName;                          ///< The file's, fit to be shown.
    std::optional<double> accreditation;          ///< Nothing if there is no number.
    std::optional<double> expectedAccreditation;  ///< If nothing changed; the same.
    MCCommon::MCStatus status;
    std::vector<CheckedVariable> variables;  ///< In the order of the reference's columns.
    std::shared_ptr<const MADocuments::Reference> reference;
    MADocuments::Reference newSummary;
};

/// Compares a new summary, which has the reference's bins, with the reference. `weights` is empty,
/// or has one entry for each input variable of the reference. A variable whose frequencies or
/// moments say nothing has no p-value, and then there is no accreditation.
CheckResult Compare(std::shared_ptr<const MADocuments::Reference> reference,
                    MADocuments::Reference newSummary, const std::vector<double>& weights,
                    double alpha);

/// Says of a variable that the new data has and that could not be summarised why that is so.
void ExplainUntested(const std::string& name, const std::string& problem, CheckResult& result);

/// The number of rows that a summary was made of, nothing if it is not known.
std::optional<std::uint64_t> RowCount(const MADocuments::Reference& summary);

}  // namespace app
