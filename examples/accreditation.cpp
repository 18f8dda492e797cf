// A whole accreditation, with data in memory: summarise the model's data, summarise new data with
// the same bins, compare the two, and say of each variable whether it changed.

#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAComparison.h"
#include "accredit/diststats/MAPredictorDist.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCTableRecordIter.h"
#include "accredit/host/MCVariable.h"

using MCCommon::MCStatus;
using MCCommon::MCTableRecordIter;
using MCMTD_NAMESPACE::MCStringEncoder;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// One row a case: age in years, and the code of the region.
std::vector<double> Rows(int count, int olderBy) {
    std::vector<double> rows;
    for (int i = 0; i < count; ++i) {
        rows.push_back(20 + olderBy + i * 7 % 41);
        rows.push_back(i % 3);
    }
    return rows;
}

const char* VerdictText(MAVerdict verdict) {
    switch (verdict) {
        case MAVerdict::Unchanged:
            return "unchanged";
        case MAVerdict::Minor:
            return "minor change";
        case MAVerdict::Moderate:
            return "moderate change";
        case MAVerdict::Major:
            return "major change";
        case MAVerdict::NotTested:
            break;
    }
    return "not tested";
}

}  // namespace

int main() {
    // What a record holds, in order. A categorical value travels as its code.
    MCVarList variables;
    variables.Add(MCVariable::Continuous("age"));
    variables.Add(MCVariable::Categorical("region", 3),
                  MCStringEncoder({"north", "south", "west"}));

    try {
        // 1. Once, when the model is built: two passes, cut points from mean and deviation.
        const std::vector<double> modelData = Rows(600, 0);
        MCTableRecordIter modelRecords(modelData, 2);
        MAPredictorDist model(variables, modelRecords, nullptr);
        const MCStatus summarised = model.ComputeDistStats();
        if (!summarised.IsOK()) throw summarised;
        const MADistStats& reference = model.GetDistStats();

        // 2. For each new body of data: one pass, with the reference's cut points.
        std::vector<std::vector<double>> cutPoints;
        for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
            cutPoints.push_back(MACutPointsFor(reference, slot));
        }
        const std::vector<double> newData = Rows(300, 9);
        MCTableRecordIter newRecords(newData, 2);
        MAAccreditor accreditor(variables, newRecords, nullptr);
        const MCStatus passed = accreditor.ComputeDistStats(cutPoints);
        if (!passed.IsOK()) throw passed;

        // 3. The number, here with the age counting twice.
        const MCStatus compared = accreditor.ComputeAccreditation(reference, {2.0, 1.0});
        if (!compared.IsOK()) throw compared;
        std::cout << "accreditation: " << accreditor.GetAccreditation() << '\n';

        // 4. And what stands behind it: a verdict for each variable, with the sizes of its change.
        // Data that is missing is not counted here, so nothing is said of it.
        constexpr double kAlpha = 0.01;
        const auto comparisons =
            MACompareVariables(reference, accreditor.GetDistStats(), {}, {}, kAlpha);
        std::cout << "to be expected if nothing changed: "
                  << MAExpectedAccreditation(comparisons, {2.0, 1.0}) << '\n';
        for (std::size_t slot = 0; slot < comparisons.size(); ++slot) {
            const int position = reference.GetVarListIndex(static_cast<unsigned int>(slot));
            std::cout << reference.GetVarList().GetVarAt(position)->GetName() << ": "
                      << VerdictText(comparisons[slot].verdict)
                      << ", p = " << comparisons[slot].result.pValue;
            if (comparisons[slot].values.shareMoved) {
                std::cout << ", share moved: " << *comparisons[slot].values.shareMoved;
            }
            std::cout << '\n';
        }
    } catch (const MCStatus& status) {
        std::cerr << status.GetMessage() << '\n';
        return 1;
    }
    return 0;
}
