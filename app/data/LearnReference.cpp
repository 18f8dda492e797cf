#include "app/data/LearnReference.h"

#include <numeric>

#include "accredit/diststats/MAPredictorDist.h"
#include "app/base/Errors.h"
#include "app/data/CsvRecordIter.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;
using MCCommon::MCStatus;

namespace app {

namespace {

// A file that another program wrote to meanwhile has passes that do not belong together.
void RequireWholePasses(const MADistStats& stats, const CsvRecordIter& records,
                        const CsvReader& reader) {
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const std::vector<double>& frequencies = stats.GetFrequencies(slot);
        const unsigned long cases = stats.GetNumberOfCases(slot);
        const double sum = std::accumulate(frequencies.begin(), frequencies.end(), 0.0);
        if (cases > records.RecordCount() ||
            (!frequencies.empty() && sum != static_cast<double>(cases))) {
            reader.RefuseChanged();
        }
    }
}

}  // namespace

Reference LearnReference(CsvReader& reader, const ColumnChoices& choices,
                         const MissingTokens& missing, MCQueryCancel& cancel) {
    CsvRecordIter records(reader, SettleKinds(reader, choices, missing), missing);
    if (records.VarList().GetNumInputVars() == 0) {
        throw UsageError(reader.Name() + ": every column is ignored");
    }
    MAPredictorDist predictor(records.VarList(), records, &cancel);
    const MCStatus status = predictor.ComputeDistStats();
    if (status.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!status.IsOK()) throw InputError(reader.Name() + ": " + status.GetMessage());

    if (records.RecordCount() == 0) {
        throw InputError(reader.Name() + ": there are no rows to learn from");
    }
    Reference reference;
    reference.stats = predictor.GetDistStats();
    reference.missing = missing;
    RequireWholePasses(reference.stats, records, reader);
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        reference.uncounted.push_back(records.Uncounted(reference.stats.GetVarListIndex(slot),
                                                        reference.stats.GetNumberOfCases(slot)));
    }
    return reference;
}

}  // namespace app
