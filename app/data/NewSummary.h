#pragma once

#include <string>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/documents/Reference.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/data/CsvReader.h"

namespace app {

/// New data with the bins of a reference.
struct NewSummary {
    /// Its list has every column of the data; those that are input variables of the reference are
    /// so here. Without any, it is empty. What made it is left open.
    MADocuments::Reference summary;
    /// For each slot the file of the first unreadable datum, fit to be shown; empty without one.
    std::vector<std::string> unreadableFiles;
};

/// New data summarised with the bins of a reference, in one pass. Memory does not grow with the
/// number of rows. Throws InputError, OutputError, Cancelled.
NewSummary SummariseLike(const MADocuments::Reference& reference, CsvReader& reader,
                         MCQueryCancel& cancel);

}  // namespace app
