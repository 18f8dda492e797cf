#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/commands/Comparison.h"
#include "app/commands/FailRules.h"

namespace app {

/// The answer of a comparison in a few sentences: how many variables changed, the one that changed
/// most and by how much, whether the missing values did, and what is absent or could not be tested.
std::string AnswerInWords(const CheckResult& result);

/// What changed in a variable, or why it was not tested; empty for one that did not change.
std::string ChangeInWords(const CheckResult& result, std::size_t variable);

/// Why a small change of this variable could not be seen in its counts, with what its moments say;
/// empty unless one bin holds nearly all of the reference.
std::string CrowdedInWords(const CheckResult& result, std::size_t variable);

/// The same of a reference's slot, without anything to be compared with.
std::string CrowdedInWords(const MADistStats& reference, unsigned int slot);

/// How the mean and the deviation of a number changed; empty where nothing is known of them.
std::string MomentsInWords(const MAVariableComparison& comparison);

/// The accreditation in a sentence, with the digits that tell it from the bound, or why there is
/// none.
std::string AccreditationInWords(const CheckResult& result, const FailRules& rules);

/// How many cells of a number column are no numbers, and the first of them; empty if there are
/// none.
std::string UnreadableInWords(const MADocuments::UncountedData& data);

/// What else is to be known of a variable: categories that only one side has, unreadable cells, a
/// crowded bin. One text each.
std::vector<std::string> NotesOn(const CheckResult& result, std::size_t variable);

/// Whether the verdict is a change.
bool IsChange(MAVerdict verdict);

/// The size of the largest change of a variable, its stability index; 0 if none of its tables
/// changed.
double SizeOfChange(const CheckedVariable& variable);

/// Whether a person should look at a variable: it changed, was not tested, or a change could hide,
/// in one crowded bin or behind too few cases for a test.
bool IsOfInterest(const CheckedVariable& variable);

/// The table that decides: that of the largest change, or of a large difference that could not be
/// tested; without either, that of the values.
const MAChange& DecisiveTable(const CheckedVariable& variable);

/// The variables that changed, the largest change first; then those not tested, the others in which
/// a change could hide, and the rest, each in the order of the reference.
std::vector<std::size_t> BySize(const CheckResult& result);

/// A variable is known by its number, from 1, where its name is too long.
std::string NameOf(const CheckResult& result, std::size_t variable);

/// "31%", "0.4%", "<0.1%"; "-" for none.
std::string Percent(std::optional<double> share);
/// Three digits; "<1e-16" where there are none left; "-" for none.
std::string PValueText(std::optional<double> pValue);

}  // namespace app
