// Uses every folder of the library beside a header of the application's own that bears the same
// name as one of them, catches what the library throws, and hands it classes of its own.

#include <accredit/accreditation/MAAccreditor.h>
#include <accredit/distfun/MCDistFun.h>
#include <accredit/host/MCTableRecordIter.h>
#include <accredit/host/MCVariable.h>
#include <host/Record.h>

#include <cstdio>

namespace {

class Sensor : public MCMTD_NAMESPACE::IMCVariable {
public:
    int GetMeasureLevel() const override { return MeasureLevelContinuous; }
    std::string GetName() const override { return "sensor"; }
    int GetNumCategories() const override { return 0; }
    VariableRole GetRole() const override { return VariableRoleInput; }
};

bool Check(bool good, const char* what) {
    if (!good) std::printf("failed: %s\n", what);
    return good;
}

}  // namespace

int main() {
    MCMTD_NAMESPACE::MCVarList list;
    bool thrown = false;
    try {
        const MADistStatsImp none(list, nullptr);
    } catch (const MCCommon::MCStatus& status) {
        thrown = status.GetCode() == MAStatusNoInputVars;
    }
    list.Add(Sensor());
    const Record own{{1.0, 2.0, 3.0, 4.0}};
    MCCommon::MCTableRecordIter records({own.values, own.values + 4}, 1);
    const MADistStats reference(new MADistStatsImp(list, records, {}, nullptr));
    records.Rewind();
    MAAccreditor accreditor(list, records, nullptr);
    const bool summarised = accreditor.ComputeDistStats({reference.GetCutPoints(0)}).IsOK();
    const bool compared = accreditor.ComputeAccreditation(reference, {}).IsOK();
    const bool good = Check(thrown, "the status thrown across the library's edge") &&
                      Check(summarised && compared, "the comparison") &&
                      Check(accreditor.GetAccreditation() == 1.0, "the accreditation") &&
                      Check(MAMath::MCDistFun::CdfStdNorm(0.0) == 0.5, "the normal distribution");
    return good ? 0 : 1;
}
