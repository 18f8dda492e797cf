#include "app/data/NewSummary.h"

#include <utility>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/documents/NewRecords.h"
#include "app/data/CsvRecordIter.h"
#include "app/data/DataPass.h"

using MADocuments::Reference;

namespace app {

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
    const std::vector<std::vector<double>> usable = MADocuments::UsableCutPoints(reference.stats);
    std::vector<std::vector<double>> cutPoints;
    cutPoints.reserve(slots.size());
    for (const int slot : slots) cutPoints.push_back(usable[static_cast<std::size_t>(slot)]);

    summary.stats = Summarise(records, cutPoints, reader, cancel);
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
