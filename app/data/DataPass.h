#pragma once

#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/MCQueryCancel.h"
#include "app/data/CsvReader.h"
#include "app/data/CsvRecordIter.h"

namespace app {

/// The summary of the records, which the reader reads; see MADistStatsImp for the cut points.
/// Throws InputError, OutputError, Cancelled.
MADistStats Summarise(CsvRecordIter& records, const std::vector<std::vector<double>>& cutPoints,
                      const CsvReader& reader, MCQueryCancel& cancel);

}  // namespace app
