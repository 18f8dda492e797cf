// A whole accreditation, with data in memory: summarise the model's data, summarise new data with
// the same bins, compare the two.

#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/accreditation/MAVariableResult.h"
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
const std::vector<double> kModelData = {23, 0, 31, 1, 35, 1, 38, 2, 41, 0, 44, 1, 52, 2, 58, 0,
                                        26, 1, 33, 1, 36, 2, 40, 0, 42, 1, 47, 2, 55, 1, 61, 0};
const std::vector<double> kNewData = {29, 1, 34, 0, 37, 1, 43, 2, 45, 1, 51, 0, 57, 2, 39, 1};

}  // namespace

int main() {
    // What a record holds, in order. A categorical value travels as its code.
    MCVarList variables;
    variables.Add(MCVariable::Continuous("age"));
    variables.Add(MCVariable::Categorical("region", 3),
                  MCStringEncoder({"north", "south", "west"}));

    try {
        // 1. Once, when the model is built: two passes, cut points from mean and deviation.
        MCTableRecordIter modelRecords(kModelData, 2);
        MAPredictorDist model(variables, modelRecords, nullptr);
        const MCStatus summarised = model.ComputeDistStats();
        if (!summarised.IsOK()) throw summarised;
        const MADistStats& reference = model.GetDistStats();

        // 2. For each new body of data: one pass, with the reference's cut points.
        std::vector<std::vector<double>> cutPoints;
        for (unsigned int slot = 0; slot < reference.GetVarCount(); ++slot) {
            cutPoints.push_back(reference.GetCutPoints(slot));
        }
        MCTableRecordIter newRecords(kNewData, 2);
        MAAccreditor accreditor(variables, newRecords, nullptr);
        const MCStatus passed = accreditor.ComputeDistStats(cutPoints);
        if (!passed.IsOK()) throw passed;

        // 3. The number, here with the age counting twice.
        const MCStatus compared = accreditor.ComputeAccreditation(reference, {2.0, 1.0});
        if (!compared.IsOK()) throw compared;
        std::cout << "accreditation: " << accreditor.GetAccreditation() << '\n';

        // 4. And what stands behind it.
        const auto results = MATestVariables(reference, accreditor.GetDistStats());
        for (std::size_t slot = 0; slot < results.size(); ++slot) {
            const int position = reference.GetVarListIndex(static_cast<unsigned int>(slot));
            std::cout << reference.GetVarList().GetVarAt(position)->GetName()
                      << ": p = " << results[slot].pValue << '\n';
        }
    } catch (const MCStatus& status) {
        std::cerr << status.GetMessage() << '\n';
        return 1;
    }
    return 0;
}
