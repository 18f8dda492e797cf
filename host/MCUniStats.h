#pragma once

#include <string>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCMV.h"

/// @file
/// The stored statistics of one variable.

namespace MCMTD_NAMESPACE {

/// The statistics of one variable, as they travel into a document and out of one. A value: it keeps
/// copies of what it is given and checks nothing.
class ACCREDIT_EXPORT MCUniStats {
public:
    /// The summary values of a continuous variable; MCMV::Missing() stands for one that does not
    /// exist.
    struct SummStats {
        double min = MCMV::Missing();     ///< The smallest value.
        double max = MCMV::Missing();     ///< The largest value.
        double mean = MCMV::Missing();    ///< The mean.
        double stdDev = MCMV::Missing();  ///< The sample standard deviation.
    };

    /// An empty object, to be assigned to: without a name, categorical, no cases, no frequencies.
    MCUniStats();

    /// A categorical variable: its name, the number of cases, one frequency for each category in
    /// code order.
    MCUniStats(const std::string& name, double cases, const std::vector<double>& frequencies);

    /// A continuous variable: its name, the number of cases, the summary values, the margins of the
    /// bins, one frequency a bin, lowest first.
    ///
    /// The margins are the k cut points with MCMV::Missing() before and after them, k + 2 values
    /// for k + 1 bins; both vectors are empty when there are no bins.
    MCUniStats(const std::string& name, double cases, const SummStats& summStats,
               const std::vector<double>& cutPoints, const std::vector<double>& frequencies);

    MCUniStats(const MCUniStats& other);      ///< A whole copy.
    MCUniStats(MCUniStats&& other) noexcept;  ///< Takes over.
    /// A whole copy. If memory runs out, the object stays as it was.
    MCUniStats& operator=(const MCUniStats& other);
    MCUniStats& operator=(MCUniStats&& other) noexcept;  ///< Takes over.
    ~MCUniStats();

    /// Says of the bins of a stored document that they include their lower and exclude their upper
    /// margin (false), or the reverse (true, what the constructors set).
    void SetIntervalsOpenLeft(bool openLeft);

    /// Says how many data of the variable were missing, a whole number from 0 up that the number of
    /// cases does not include; MCMV::Missing(), as the constructors set it, says nothing of them.
    void SetMissing(double missing);

    /// Says the same of data that were invalid, such as texts where numbers belong.
    void SetInvalid(double invalid);

    /// Which of the two constructors made the object.
    bool IsCategorical() const;

    /// Whether each bin excludes its lower margin and includes its upper margin. Says nothing of a
    /// variable without bins.
    bool AreIntervalsOpenLeft() const;

    /// One entry for each category in code order, or for each bin, lowest first.
    const std::vector<double>& GetFrequencies() const;

    /// The margins as the constructor took them; empty for a categorical variable.
    const std::vector<double>& GetCutPoints() const;

    /// The name.
    std::string GetVarName() const;

    /// A whole number, held as a double.
    double GetNumberOfCases() const;

    /// Whether the number of missing data is known.
    bool HasMissing() const;

    /// The number of missing data, MCMV::Missing() if it is not known.
    double GetMissing() const;

    /// Whether the number of invalid data is known.
    bool HasInvalid() const;

    /// The number of invalid data, MCMV::Missing() if it is not known.
    double GetInvalid() const;

    /// All four values are missing for a categorical variable.
    const SummStats& GetSummStats() const;

private:
    std::string mName;
    double mCases = 0.0;
    double mMissing = MCMV::Missing();
    double mInvalid = MCMV::Missing();
    bool mCategorical = true;
    bool mOpenLeft = true;
    SummStats mSummStats;
    std::vector<double> mCutPoints;
    std::vector<double> mFrequencies;
};

}  // namespace MCMTD_NAMESPACE
