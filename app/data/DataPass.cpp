#include "app/data/DataPass.h"

#include "accredit/diststats/MADistStatsImp.h"
#include "app/base/Errors.h"

using MCCommon::MCStatus;

namespace app {

MADistStats Summarise(CsvRecordIter& records, const std::vector<std::vector<double>>& cutPoints,
                      const CsvReader& reader, MCQueryCancel& cancel) {
    try {
        return {new MADistStatsImp(records.VarList(), records, cutPoints, &cancel)};
    } catch (const MCStatus& status) {
        if (status.GetCode() == MAStatusCancelled) throw Cancelled();
        throw InputError(reader.Name() + ": " + status.GetMessage());
    }
}

}  // namespace app
