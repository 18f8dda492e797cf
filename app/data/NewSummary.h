#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/data/CsvReader.h"

namespace app {

/// The cut points of each input variable of a reference with which new data is summarised, by slot;
/// see MACutPointsFor. Values that hardly vary at their size, or are so far apart that their
/// moments overflow, have cut points that do not ascend, which no data pass takes: there are none
/// then.
std::vector<std::vector<double>> UsableCutPoints(const MADistStats& reference);

/// A new file summarised with the bins of a reference, in one pass. Its list has every column of
/// the file; those that are input variables of the reference are so here. Without any, the summary
/// is empty. Memory does not grow with the number of rows. What made it is left open.
///
/// Throws InputError, Cancelled.
MADocuments::Reference SummariseLike(const MADocuments::Reference& reference, CsvReader& reader,
                                     MCQueryCancel& cancel);

}  // namespace app
