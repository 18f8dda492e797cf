#include "app/data/NewSummary.h"

#include <utility>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/documents/NewRecords.h"
#include "app/base/Errors.h"
#include "app/data/CsvRecordIter.h"

using MADocuments::Reference;
using MCCommon::MCStatus;

namespace app {

namespace {

using CutPoints = std::vector<std::vector<double>>;

MADistStats Pass(CsvRecordIter& records, const CutPoints& cutPoints, const CsvReader& reader,
                 MCQueryCancel& cancel) {
    try {
        return {new MADistStatsImp(records.VarList(), records, cutPoints, &cancel)};
    } catch (const MCStatus& status) {
        if (status.GetCode() == MAStatusCancelled) throw Cancelled();
        throw InputError(reader.Name() + ": " + status.GetMessage());
    }
}

}  // namespace

NewSummary SummariseLike(const Reference& reference, CsvReader& reader, MCQueryCancel& cancel) {
    CsvRecordIter records(reader, ColumnsLike(reference.stats.GetVarList(), reader.Headings()),
                          reference.missing);
    NewSummary made;
    Reference& summary = made.summary;
    summary.missing = reference.missing;
    if (records.VarList().GetNumInputVars() == 0) {
        // A malformed file is refused all the same.
        while (records.GetNextRecord()) continue;
        return made;
    }
    std::vector<int> slots;
    MAAccreditor::MatchVariables(records.VarList(), reference.stats.GetVarList(), slots);
    const CutPoints usable = MADocuments::UsableCutPoints(reference.stats);
    CutPoints cutPoints;
    cutPoints.reserve(slots.size());
    for (const int slot : slots) cutPoints.push_back(usable[static_cast<std::size_t>(slot)]);

    summary.stats = Pass(records, cutPoints, reader, cancel);
    // An application's reference can have the empty text as a category.
    summary.namesMissing = reference.namesMissing ||
                           MADocuments::FindMissingCategory(summary.stats, summary.missing) < 0;
    for (unsigned int slot = 0; slot < summary.stats.GetVarCount(); ++slot) {
        const int position = summary.stats.GetVarListIndex(slot);
        summary.uncounted.push_back(
            records.Uncounted(position, summary.stats.GetNumberOfCases(slot)));
        made.unreadableFiles.push_back(records.FirstUnreadableFile(position));
    }
    return made;
}

}  // namespace app
