#pragma once

/// @file
/// The status codes that the library raises, for use with MCCommon::MCStatus. 0 is OK.
/// The numbers are part of the interface.

/// A cancellation query said yes, or the record source was stopped on request.
inline constexpr long MAStatusCancelled = 1;
/// The variable list has no input variable.
inline constexpr long MAStatusNoInputVars = 180002;
/// The cut points have the wrong number of lists, or one list is not strictly ascending.
inline constexpr long MAStatusBadCutPoints = 180003;
/// The record source failed to deliver a record or to rewind.
inline constexpr long MAStatusRecordSource = 180004;
/// A record does not have one value for each variable of the list.
inline constexpr long MAStatusRecordSize = 180005;
/// There are no statistics to compare or to export.
inline constexpr long MAStatusNoDistStats = 180008;
/// A part of the document could not be made.
inline constexpr long MAStatusExportFailed = 180009;
/// An input variable has an empty name. Datum 0: its position in the reference list.
inline constexpr long MAStatusUnnamedVariable = 180014;
/// The new data has no variable of this name. Datum 0: the position in the reference list.
inline constexpr long MAStatusVariableNotFound = 180015;
/// The namesake in the new data is not an input variable. Datum 0: the position in the reference
/// list.
inline constexpr long MAStatusVariableNotInput = 180016;
/// The namesake in the new data has another measurement level. Datum 0: the position in the
/// reference list.
inline constexpr long MAStatusVariableTypeDiffers = 180017;
/// A sample has no case of a categorical variable.
inline constexpr long MAStatusNoCases = 180018;
/// A sample has fewer than 2 cases of a continuous variable.
inline constexpr long MAStatusTooFewCases = 180019;
/// The categories of the two samples cannot be aligned.
inline constexpr long MAStatusCategoriesDiffer = 180020;
/// The weights have the wrong number of entries, or one of them is below 0.
inline constexpr long MAStatusBadWeights = 180021;
