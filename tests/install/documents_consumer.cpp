// Writes a summary, reads it, compares both, and catches what the library throws.

#include <accredit/accreditation/MAVariableResult.h>
#include <accredit/diststats/MADistStatsImp.h>
#include <accredit/documents/Reference.h>
#include <accredit/host/MCStringEncoder.h>
#include <accredit/host/MCTableRecordIter.h>
#include <accredit/host/MCVariable.h>

#include <cstdio>

int main() {
    MCMTD_NAMESPACE::MCVarList list;
    list.Add(MCMTD_NAMESPACE::MCVariable::Categorical("region", 2),
             MCMTD_NAMESPACE::MCStringEncoder({"north", "south"}));
    MCCommon::MCTableRecordIter records({0.0, 1.0, 1.0}, 1);
    MADocuments::Reference reference;
    reference.stats = MADistStats(new MADistStatsImp(list, records, {}, nullptr));
    reference.missing = MADocuments::MissingTokens({"?"});

    const std::string document = MADocuments::WriteReference(reference);
    const MADocuments::Reference read = MADocuments::ReadReference(document);
    double accreditation = -1.0;
    const bool compared = MAAccreditation(reference.stats, read.stats, {}, accreditation).IsOK();
    const bool same = compared && accreditation == 1.0 && read.missing.Contains("?") &&
                      MADocuments::WriteReference(read) == document;
    if (!same) std::puts("failed: a summary written and read");

    bool refused = false;
    try {
        MADocuments::ReadReference(document + "more");
    } catch (const MADocuments::DocumentError& error) {
        refused = error.Line() > 1;
    }
    if (!refused) std::puts("failed: the error thrown across the library's edge");
    return same && refused ? 0 : 1;
}
