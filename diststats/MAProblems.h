#pragma once

#include <string>
#include <vector>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/MCVarList.h"

/// @file
/// Which variable it is that makes an operation fail, where the status does not say so.

/// What a document cannot hold of a variable.
enum class MAProblemKind : int {
    None = 0,               ///< Nothing is wrong.
    Name = 1,               ///< The name is a text that XML cannot hold (see XMLElement).
    RepeatedName = 2,       ///< An earlier slot has the same name.
    TooManyCategories = 3,  ///< With it there are more than MCPMMLExporter::kMaxCategories.
    Category = 4,           ///< A category is such a text, or a number that is not finite.
    RepeatedCategory = 5,   ///< A category is an earlier one, or has the text of a missing value.
    SummaryStats = 6,       ///< Minimum, maximum, mean or standard deviation is not finite.
    CutPoints = 7,          ///< The cut points are not finite or do not ascend strictly.
    Frequencies = 8,        ///< A frequency is not finite.
};

/// A variable that a document cannot hold.
struct MAVariableProblem {
    int slot = -1;                             ///< Its slot, -1 if there is no problem.
    MAProblemKind kind = MAProblemKind::None;  ///< What is wrong.
    int category = -1;  ///< The code of a Category or RepeatedCategory, else -1.
};

/// Why ExportAsXML gives MAStatusExportFailed, where it is not for a text that the caller gives for
/// the header: the first slot with a problem, and of its problems
/// the first in the order of MAProblemKind. There is none exactly when every step of the export
/// that writes the variables would succeed, with `missingValues` as
/// MCPMMLExporter::SetMissingValues takes them; these texts themselves are not judged. An empty
/// handle has no problem.
///
/// Cut points that the library computed have a problem when the deviation of a column is lost in
/// the last digits of its mean, so that they coincide, or when its moments overflow; infinities and
/// NaN among the values show in the summary statistics.
ACCREDIT_EXPORT MAVariableProblem
MAFindExportProblem(const MADistStats& stats, const std::vector<std::string>& missingValues = {});

/// What MAFindBadCutPoints gives for cut points that are good.
inline constexpr int MACutPointsAreGood = -1;
/// What it gives for another number of lists than there are input variables.
inline constexpr int MACutPointsDiffer = -2;

/// Why cut points for the input variables of `varList`, as the constructor of MADistStatsImp and
/// MAAccreditor::ComputeDistStats take them, give MAStatusBadCutPoints: the first slot of a
/// continuous variable whose list does not ascend strictly, MACutPointsDiffer, or
/// MACutPointsAreGood, also for no lists at all.
ACCREDIT_EXPORT int MAFindBadCutPoints(const MCMTD_NAMESPACE::MCVarList& varList,
                                       const std::vector<std::vector<double>>& cutPoints);
