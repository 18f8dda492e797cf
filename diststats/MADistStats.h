#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCApplicInfo4XML.h"
#include "accredit/host/MCStatus.h"
#include "accredit/host/MCVarList.h"

/// @file
/// The summary of all input variables, as it is read.

/// A handle on a summary: a value that owns a MADistStatsImp and copies it deeply. An empty handle
/// is legal, and reading it never fails.
///
/// The accessors answer as those of MADistStatsImp do; what they give on an empty handle stands
/// with each. References stay valid until the handle is assigned to or destroyed. A handle is used
/// by one thread at a time, or read by several.
class ACCREDIT_EXPORT MADistStats {
public:
    /// An empty handle.
    MADistStats();

    /// Takes ownership of the summary; null gives an empty handle.
    MADistStats(MADistStatsImp* imp);

    /// A deep copy; a copy of an empty handle is empty.
    MADistStats(const MADistStats& other);
    /// Destroys the summary that was held before the other one is copied: if memory runs out, the
    /// handle is left empty.
    MADistStats& operator=(const MADistStats& other);
    /// Takes the summary over; `other` is left empty.
    MADistStats(MADistStats&& other) noexcept;
    /// The same; the summary that was held before is destroyed.
    MADistStats& operator=(MADistStats&& other) noexcept;
    ~MADistStats();

    /// The whole variable list; an empty list on an empty handle.
    const MCMTD_NAMESPACE::MCVarList& GetVarList() const;
    /// The number of slots; 0 on an empty handle.
    unsigned int GetVarCount() const;
    /// The slot's position in the list; -1 on an empty handle.
    int GetVarListIndex(unsigned int slot) const;
    /// Whether the slot is categorical; true on an empty handle.
    bool IsCategorical(unsigned int slot) const;
    /// Category or bin frequencies; an empty vector on an empty handle.
    const std::vector<double>& GetFrequencies(unsigned int slot) const;
    /// The cut points; an empty vector on an empty handle.
    const std::vector<double>& GetCutPoints(unsigned int slot) const;
    /// The number of cases; 0 on an empty handle.
    unsigned long GetNumberOfCases(unsigned int slot) const;
    /// Minimum and maximum. On an empty handle both outputs keep what they held, while a bad slot
    /// of a summary sets them missing.
    void GetMinMax(unsigned int slot, double& min, double& max) const;
    /// Mean and sample standard deviation. On an empty handle both outputs keep what they held,
    /// while a bad slot of a summary sets them missing.
    void GetMeanStdDev(unsigned int slot, double& mean, double& stdDev) const;
    /// Prints the summary; an empty handle prints nothing, not even the title.
    void Display(const std::string& title, std::ostream& out) const;
    /// Writes the summary as a PMML document; MAStatusNoDistStats on an empty handle.
    MCCommon::MCStatus ExportAsXML(const MCApplicInfo4XML* info, std::ostream& out) const;

private:
    std::unique_ptr<MADistStatsImp> mImp;
};
