#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "accredit/diststats/VarSummary.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCApplicInfo4XML.h"
#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCUniStats.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"
#include "accredit/host/Record.h"

/// @file
/// The summary of all input variables, as it is made, loaded and written.

class MCPMMLExporter;

namespace MCXML_NAMESPACE {
class XMLElement;
}

namespace MADetail {
class Accumulators;
struct SummaryMembers;
}  // namespace MADetail

/// The distribution of every input variable of a list in one body of data.
///
/// Each input variable has a slot: its rank, from 0, among the list's input variables. All
/// accessors take slots; GetVarListIndex maps a slot to the position in the list, which is also the
/// position of the variable's value in a record. Reading never fails: a slot that does not exist
/// has a fixed answer.
///
/// A summary keeps a copy of the variable list and the pointer to the cancellation query, which
/// must live as long as the summary, or a copy of it, may be exported. References that an accessor
/// gives out stay valid until the summary is assigned to, loaded into or destroyed. Reading is safe
/// from several threads at once.
class ACCREDIT_EXPORT MADistStatsImp {
public:
    /// An object without statistics, to be filled by the loading operations: every slot has a new
    /// VarSummary, no frequencies and no cut points. `queryCancel` may be null.
    /// Throws MCStatus: MAStatusNoInputVars.
    MADistStatsImp(const MCMTD_NAMESPACE::MCVarList& varList, MCQueryCancel* queryCancel);

    /// The summary of the records of `iter`, which is read from wherever it stands. Memory does not
    /// grow with the number of records.
    ///
    /// `cutPoints` is either empty or holds one list for each input variable of `varList`, in list
    /// order, strictly ascending for continuous variables; an empty list leaves its variable
    /// without bins, and the lists of categorical variables are kept and not used. With lists, one
    /// pass is made. With an empty `cutPoints`, every continuous variable that varies gets 5 cut
    /// points, its mean and the mean plus and minus 1 and 2 standard deviations, and if any does,
    /// `iter` is rewound and read a second time for the bins.
    ///
    /// A categorical value is a category code, truncated toward zero. One that is missing, negative
    /// or beyond what a 32-bit integer holds, NaN and infinities included, is not counted. Of a
    /// continuous variable only the missing value is left out.
    ///
    /// `varList` is asked for its size at every record; a list that changes in the meantime must
    /// keep its input variables, and one that is found without them is MAStatusRecordSize.
    /// `queryCancel` may be null; it is asked before every 20th record, from the first on.
    /// Throws MCStatus: MAStatusNoInputVars, MAStatusBadCutPoints (MAFindBadCutPoints tells which
    /// variable it is), MAStatusRecordSource, MAStatusRecordSize, MAStatusCancelled; nothing of the
    /// statistics survives.
    MADistStatsImp(const MCMTD_NAMESPACE::MCVarList& varList, MCCommon::MultiPassRecordIter& iter,
                   const std::vector<std::vector<double>>& cutPoints, MCQueryCancel* queryCancel);

    /// A deep copy, with a list of its own; only the cancellation query stays shared.
    MADistStatsImp(const MADistStatsImp& other);
    /// The same. If memory runs out, the object stays as it was.
    MADistStatsImp& operator=(const MADistStatsImp& other);
    ~MADistStatsImp();

    /// The whole list, with the variables of all roles.
    const MCMTD_NAMESPACE::MCVarList& GetVarList() const;

    /// The number of slots.
    unsigned int GetVarCount() const;

    /// The position of the slot's variable in the list, -1 for a bad slot.
    int GetVarListIndex(unsigned int slot) const;

    /// Whether the slot's variable is categorical, true for a bad slot.
    bool IsCategorical(unsigned int slot) const;

    /// For a categorical variable the cases of each category, in code order: up to the highest code
    /// seen after a data pass, one entry for each category after loading. For a continuous variable
    /// the k + 1 bin frequencies of its k cut points, lowest bin first; none without cut points.
    /// Empty for a bad slot.
    const std::vector<double>& GetFrequencies(unsigned int slot) const;

    /// The k cut points of a continuous variable, ascending: the closed right edges of all bins but
    /// the last. Computed ones can coincide when the deviation is lost in the mean's last digits,
    /// and be infinite or NaN when the moments overflow; such cut points can be neither given to
    /// another summary nor exported. A categorical slot gives back the list that the constructor
    /// was given. Empty for a bad slot.
    const std::vector<double>& GetCutPoints(unsigned int slot) const;

    /// The number of cases counted: of a continuous variable, its non-missing values. 0 for a bad
    /// slot.
    unsigned long GetNumberOfCases(unsigned int slot) const;

    /// The smallest and largest value, both missing for a categorical variable, for a variable
    /// without cases and for a bad slot.
    void GetMinMax(unsigned int slot, double& min, double& max) const;

    /// The mean and the sample standard deviation. Both are missing for a categorical variable, for
    /// a variable without cases and for a bad slot; the standard deviation also with one case. Both
    /// are 0 in a slot that was never filled.
    void GetMeanStdDev(unsigned int slot, double& mean, double& stdDev) const;

    /// Loads the frequencies of a categorical variable, one for each of its categories, in code
    /// order. False, and nothing changes, for a bad slot, a continuous variable, another number of
    /// frequencies than GetNumCategories of the variable, or a frequency that is not at or above 0.
    bool SetFreqs(unsigned int slot, const std::vector<double>& frequencies);

    /// Loads the bins of a continuous variable: k strictly ascending cut points and k + 1
    /// frequencies, k at least 1, or neither for a variable without bins. False, and nothing
    /// changes, for a bad slot, a categorical variable, other lengths, a frequency that is not at
    /// or above 0, or cut points that do not ascend.
    bool SetFreqs(unsigned int slot, const std::vector<double>& frequencies,
                  const std::vector<double>& cutPoints);

    /// Loads the summary of a variable; MCMV::Missing() stands for a value that does not exist.
    /// For a categorical variable and for a count of 0 the four values are not looked at, and all
    /// become missing. With a count of 1 the mean must exist and `min` must equal `max`; `stdDev`
    /// is not looked at and becomes missing. With more, all four must exist, `stdDev` must not be
    /// below 0 nor `max` below `min`. False, and nothing changes, if not, or for a bad slot.
    bool SetSummStats(unsigned int slot, unsigned long count, double min, double max, double mean,
                      double stdDev);

    /// Loads all that a stored document says of one variable, which is found by its name. Takes
    /// time logarithmic in the number of variables.
    ///
    /// The number of cases loses its fraction; 2^64, which is what the largest unsigned long
    /// becomes as a double and in a document, is taken for that again.
    ///
    /// False, and nothing changes, if the list has no input variable of this name and kind, if the
    /// number of cases is -1 or less, above 2^64 or a NaN, if the bins of a continuous variable are
    /// not open on the left, or if SetSummStats refuses. False is also the answer if SetFreqs then
    /// refuses, or if margins do not begin and end with MCMV::Missing() and hold at least one cut
    /// point in between (see MCUniStats); the summary is then the new one, beside the old
    /// frequencies. If memory runs out, nothing changes.
    bool SetAllStats(const MCMTD_NAMESPACE::MCUniStats& stats);

    /// Prints the summary as text under this title, for a reader: of each variable the name, the
    /// cases, cut points, frequencies and summary values. Numbers appear as the stream's state has
    /// them. The state of the stream is neither changed nor looked at.
    void Display(const std::string& title, std::ostream& out) const;

    /// Writes the summary as a PMML 3.1 document: a header with what `info` says, which may be
    /// null, the data dictionary of the input variables, and their statistics in an extension. The
    /// cancellation query is asked once a variable.
    ///
    /// Gives MAStatusExportFailed if the document could not hold a name, a category or a number
    /// (see MCPMMLExporter; MAFindExportProblem tells which variable it is), or MAStatusCancelled;
    /// nothing has then been written. The state of the stream is not looked at: whether it took the
    /// document, the caller asks the stream.
    MCCommon::MCStatus ExportAsXML(const MCApplicInfo4XML* info, std::ostream& out) const;

private:
    friend struct MADetail::SummaryMembers;

    void CollectInputVariables(const MCMTD_NAMESPACE::MCVarList& varList);
    MCCommon::MCStatus MakeADataPass(const MCMTD_NAMESPACE::MCVarList& varList,
                                     MCCommon::MultiPassRecordIter& iter, bool updateSummaries,
                                     bool updateBins);
    MCCommon::MCStatus ProcessRecord(const MCMTD_NAMESPACE::MCVarList& varList,
                                     const MCCommon::Record& record, bool updateSummaries,
                                     bool updateBins);
    bool ComputeCutPoints(const MCMTD_NAMESPACE::MCVarList& varList);
    void UseExistingCutPoints(const MCMTD_NAMESPACE::MCVarList& varList,
                              const std::vector<std::vector<double>>& cutPoints);
    static bool CutPointsAreValid(const std::vector<int>& varIndex,
                                  const std::vector<std::int16_t>& categorical,
                                  const std::vector<std::vector<double>>& cutPoints);

    MCCommon::MCStatus ExportModelExt(MCPMMLExporter& exporter,
                                      MCXML_NAMESPACE::XMLElement*& element) const;

    MCMTD_NAMESPACE::MCVarList mVarList;
    std::vector<int> mVarIndex;
    std::vector<std::int16_t> mCategorical;
    std::vector<std::vector<double>> mFrequencies;
    std::vector<std::vector<double>> mCutPoints;
    std::vector<VarSummary> mSummaries;
    MCQueryCancel* mQueryCancel;
    MADetail::Accumulators* mPass = nullptr;  // Of the pass that runs; MakeADataPass owns them.
};
