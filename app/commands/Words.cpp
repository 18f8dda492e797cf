#include "app/commands/Words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "accredit/host/MAStatus.h"
#include "app/base/Printable.h"
#include "app/commands/Cells.h"
#include "app/commands/FailRules.h"
#include "app/data/CellText.h"

using MADocuments::UncountedData;

namespace app {

namespace {

// So many names stand in a sentence.
constexpr std::size_t kNamesInSentence = 3;

struct Table {
    const MAChange* change;
    enum { Values, Missing, Unreadable } kind;
};

std::array<Table, 3> TablesOf(const CheckedVariable& variable) {
    const MAVariableComparison& comparison = variable.comparison;
    return {{{&comparison.values, Table::Values},
             {&comparison.missing, Table::Missing},
             {&comparison.unreadable, Table::Unreadable}}};
}

double SizeOf(const Table& table) {
    return IsChange(table.change->verdict) ? table.change->test->stabilityIndex : -1.0;
}

Table LargestChange(const CheckedVariable& variable) {
    const std::array<Table, 3> tables = TablesOf(variable);
    return *std::max_element(
        tables.begin(), tables.end(),
        [](const Table& left, const Table& right) { return SizeOf(left) < SizeOf(right); });
}

std::string FromTo(const MAUncountedChange& change) {
    return fmt::format("{} -> {}", Percent(change.referenceShare), Percent(change.newShare));
}

// "a", "b", "c" and 4 more
std::string Names(const CheckResult& result, const std::vector<std::size_t>& variables) {
    std::string names;
    const std::size_t named = std::min(variables.size(), kNamesInSentence);
    for (std::size_t i = 0; i < named; ++i) {
        const bool isLast = i + 1 == variables.size();
        names += i == 0 ? "" : isLast ? " and " : ", ";
        names += fmt::format("\"{}\"", NameOf(result, variables[i]));
    }
    if (variables.size() > named) names += fmt::format(" and {} more", variables.size() - named);
    return names;
}

template <class Wanted>
std::vector<std::size_t> Those(const CheckResult& result, Wanted wanted) {
    std::vector<std::size_t> indexes;
    for (std::size_t i = 0; i < result.variables.size(); ++i) {
        if (wanted(result.variables[i])) indexes.push_back(i);
    }
    return indexes;
}

std::string Signed(double number) { return fmt::format("{:+.3g}", number); }

std::string ValuesInWords(const CheckResult& result, std::size_t variable) {
    const MAVariableComparison& comparison = result.variables[variable].comparison;
    std::string words;
    if (comparison.mostChanged >= 0) {
        const auto most = static_cast<std::size_t>(comparison.mostChanged);
        const Shares shares = SharesOf(result.variables[variable], most);
        words = fmt::format("{}: {} -> {}", CellName(CellAt(result, variable, most)),
                            Percent(shares.reference), Percent(shares.observed));
    }
    const std::string moments = MomentsInWords(comparison);
    if (!moments.empty()) words += (words.empty() ? "" : "; ") + moments;
    return words;
}

// The sentence about the largest change behind "a major change, ".
std::string SizeInWords(const CheckedVariable& variable) {
    const Table largest = LargestChange(variable);
    switch (largest.kind) {
        case Table::Missing:
            return "missing values " + FromTo(variable.comparison.missing);
        case Table::Unreadable:
            return "unreadable cells " + FromTo(variable.comparison.unreadable);
        case Table::Values:
            break;
    }
    return Percent(largest.change->shareMoved) + " of its cases moved";
}

// Files of very different sizes can leave a single cell, all others being too small. Nothing is
// tested then, and a share this large is worth a word.
bool HidesDifference(const MAChange& change) {
    constexpr double kWorthAWord = 0.05;
    return change.test && change.test->cells == 1 && change.test->pooledCells > 0 &&
           change.shareMoved.value_or(0.0) >= kWorthAWord;
}

std::string HiddenInWords(const CheckResult& result) {
    const std::vector<std::size_t> hidden = Those(result, [](const CheckedVariable& variable) {
        const std::array<Table, 3> tables = TablesOf(variable);
        return std::any_of(tables.begin(), tables.end(),
                           [](const Table& table) { return HidesDifference(*table.change); });
    });
    if (hidden.empty()) return {};
    return fmt::format(" Too few cases to test a large difference in {}.", Names(result, hidden));
}

std::string MissingInWords(const CheckResult& result) {
    const std::vector<std::size_t> changed = Those(result, [](const CheckedVariable& variable) {
        return IsChange(variable.comparison.missing.verdict);
    });
    if (!changed.empty())
        return fmt::format(" Missing values changed in {}.", Names(result, changed));
    const auto isKnown = [](const CheckedVariable& variable) {
        const MAUncountedChange& missing = variable.comparison.missing;
        return missing.test && !HidesDifference(missing);
    };
    const std::size_t known = Those(result, isKnown).size();
    if (known == 0) return {};
    const bool isAll = known == result.variables.size();
    return isAll ? " Missing values did not change."
                 : fmt::format(" Missing values did not change in {} of them.", known);
}

// The names of categories with their counts; empty if there are none.
std::string OneSidedInWords(const CheckResult& result, std::size_t variable,
                            const OneSided& categories, double Cell::*count) {
    std::string list;
    const auto add = [&](const std::string& name, double number) {
        list += fmt::format("{}{} ({})", list.empty() ? "" : ", ", name, number);
    };
    for (const std::size_t index : categories.named) {
        const Cell cell = CellAt(result, variable, index);
        add(CellName(cell), cell.*count);
    }
    if (categories.more > 0) {
        list += fmt::format("{}{} more", categories.others < 0 ? " and " : ", ", categories.more);
    }
    if (categories.others >= 0) {
        const auto others = static_cast<std::size_t>(categories.others);
        add(list.empty() ? "categories that were too many to be kept"
                         : "and others that were too many to be kept",
            CellAt(result, variable, others).*count);
    }
    return list;
}

}  // namespace

std::string MomentsInWords(const MAVariableComparison& comparison) {
    std::string words;
    if (comparison.meanShift) {
        words = fmt::format("mean {} sd", Signed(*comparison.meanShift));
    }
    if (comparison.deviationRatio) {
        words += fmt::format("{}deviation x {:.3g}", words.empty() ? "" : ", ",
                             *comparison.deviationRatio);
    }
    return words;
}

bool IsChange(MAVerdict verdict) {
    return verdict != MAVerdict::Unchanged && verdict != MAVerdict::NotTested;
}

double SizeOfChange(const CheckedVariable& variable) {
    return std::max(0.0, SizeOf(LargestChange(variable)));
}

bool IsOfInterest(const CheckedVariable& variable) {
    const std::array<Table, 3> tables = TablesOf(variable);
    return variable.comparison.verdict != MAVerdict::Unchanged || variable.comparison.crowdedBin ||
           std::any_of(tables.begin(), tables.end(),
                       [](const Table& table) { return HidesDifference(*table.change); });
}

const MAChange& DecisiveTable(const CheckedVariable& variable) {
    const std::array<Table, 3> tables = TablesOf(variable);
    const auto hidden = std::find_if(tables.begin(), tables.end(), [](const Table& table) {
        return HidesDifference(*table.change);
    });
    const Table largest = LargestChange(variable);
    if (!IsChange(largest.change->verdict) && hidden != tables.end()) return *hidden->change;
    return *largest.change;
}

std::vector<std::size_t> BySize(const CheckResult& result) {
    std::vector<std::size_t> order(result.variables.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto rank = [&result](std::size_t i) {
        const CheckedVariable& variable = result.variables[i];
        const MAVerdict verdict = variable.comparison.verdict;
        const int group = IsChange(verdict)                 ? 0
                          : verdict == MAVerdict::NotTested ? 1
                          : IsOfInterest(variable)          ? 2
                                                            : 3;
        return std::make_pair(group, group == 0 ? -SizeOfChange(variable) : 0.0);
    };
    std::stable_sort(order.begin(), order.end(), [&rank](std::size_t left, std::size_t right) {
        return rank(left) < rank(right);
    });
    return order;
}

std::string NameOf(const CheckResult& result, std::size_t variable) {
    return ShownName(result.variables[variable].name, variable + 1);
}

std::string Percent(std::optional<double> share) {
    if (!share) return "-";
    const double percent = 100.0 * *share;
    if (percent == 0.0) return "0%";
    if (percent < 0.1) return "<0.1%";
    if (percent > 99.9 && percent < 100.0) return ">99.9%";
    return percent < 9.95 || (percent >= 99.0 && percent < 100.0) ? fmt::format("{:.1f}%", percent)
                                                                  : fmt::format("{:.0f}%", percent);
}

std::string PValueText(std::optional<double> pValue) {
    if (!pValue) return "-";
    return *pValue < 1e-16 ? "<1e-16" : fmt::format("{:.3g}", *pValue);
}

std::string AnswerInWords(const CheckResult& result) {
    const std::size_t all = result.variables.size();
    const std::size_t untestedCount =
        Those(result, [](const CheckedVariable& variable) {
            return variable.comparison.verdict == MAVerdict::NotTested;
        }).size();
    const std::size_t changed = Those(result, [](const CheckedVariable& variable) {
                                    return IsChange(variable.comparison.verdict);
                                }).size();
    std::string answer;
    if (untestedCount == all) {
        answer = "No variable could be tested.";
    } else if (changed == 0 && all - untestedCount == 1) {
        answer = fmt::format("The {}variable did not change.", all == 1 ? "" : "one tested ");
    } else if (changed == 0) {
        answer = fmt::format("None of {}{} variables changed.", all - untestedCount,
                             untestedCount == 0 ? "" : " tested");
    } else {
        const std::size_t most = BySize(result).front();
        const CheckedVariable& variable = result.variables[most];
        answer = fmt::format("{} of {} variable{} changed, most of all \"{}\": a {} change, {}.",
                             changed, all, all == 1 ? "" : "s", NameOf(result, most),
                             VerdictText(variable.comparison.verdict), SizeInWords(variable));
    }
    answer += MissingInWords(result) + HiddenInWords(result);
    const std::vector<std::size_t> unreadable = Those(result, [](const CheckedVariable& variable) {
        return IsChange(variable.comparison.unreadable.verdict);
    });
    if (!unreadable.empty()) {
        answer += fmt::format(" Unreadable cells changed in {}.", Names(result, unreadable));
    }
    const auto isAbsent = [](const CheckedVariable& variable) {
        return variable.status.GetCode() == MAStatusVariableNotFound;
    };
    const std::vector<std::size_t> absent = Those(result, isAbsent);
    if (!absent.empty()) answer += fmt::format(" The new data lacks {}.", Names(result, absent));
    const std::vector<std::size_t> untested =
        Those(result, [&isAbsent](const CheckedVariable& variable) {
            return variable.comparison.verdict == MAVerdict::NotTested && !isAbsent(variable);
        });
    if (!untested.empty()) {
        answer += fmt::format(" Not tested: {}.", Names(result, untested));
    }
    return answer;
}

std::string ChangeInWords(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    const MAVariableComparison& comparison = checked.comparison;
    std::string words;
    const auto add = [&words](const std::string& more) {
        if (!more.empty()) words += (words.empty() ? "" : "; ") + more;
    };
    if (comparison.verdict == MAVerdict::NotTested) {
        constexpr std::string_view kPrefix = "Not tested: ";
        add(checked.reason.substr(checked.reason.rfind(kPrefix, 0) == 0 ? kPrefix.size() : 0));
    }
    if (IsChange(comparison.values.verdict)) add(ValuesInWords(result, variable));
    if (IsChange(comparison.missing.verdict)) add("missing " + FromTo(comparison.missing));
    if (IsChange(comparison.unreadable.verdict)) {
        add("unreadable " + FromTo(comparison.unreadable));
    }
    const std::string untested = " (too few cases for a test)";
    if (HidesDifference(comparison.values)) add(ValuesInWords(result, variable) + untested);
    if (HidesDifference(comparison.missing)) {
        add("missing " + FromTo(comparison.missing) + untested);
    }
    if (HidesDifference(comparison.unreadable)) {
        add("unreadable " + FromTo(comparison.unreadable) + untested);
    }
    // Where counts can show little, the moments stand beside them.
    if (words.empty() && comparison.crowdedBin) add(MomentsInWords(comparison));
    return words;
}

std::string CrowdedInWords(const MADistStats& reference, unsigned int slot) {
    const std::optional<MACrowdedBin> crowded = MAFindCrowdedBin(reference, slot);
    if (!crowded) return {};
    return fmt::format(
        "one bin ({}) holds {} of the reference, so that counts can hardly show a change",
        CellName(BinAt(reference.GetCutPoints(slot), static_cast<std::size_t>(crowded->bin))),
        Percent(crowded->share));
}

std::string CrowdedInWords(const CheckResult& result, std::size_t variable) {
    const std::string crowded =
        CrowdedInWords(result.reference->stats, static_cast<unsigned int>(variable));
    const std::string moments = MomentsInWords(result.variables[variable].comparison);
    return crowded.empty() || moments.empty() ? crowded : crowded + "; " + moments;
}

std::string AccreditationInWords(const CheckResult& result, const FailRules& rules) {
    const auto because = [&result](const std::string& why, auto isCulprit) {
        const auto culprit =
            std::find_if(result.variables.begin(), result.variables.end(), isCulprit);
        const auto index = static_cast<std::size_t>(culprit - result.variables.begin());
        return fmt::format("No accreditation: {}{}", why,
                           index == result.variables.size()
                               ? ""
                               : fmt::format(" (variable \"{}\")", NameOf(result, index)));
    };
    if (result.accreditation) {
        // As many digits as tell it from a bound that it missed.
        const auto shown = [](double number) { return fmt::format("{:.6g}", number); };
        const bool isClose =
            rules.failBelow && shown(*result.accreditation) == shown(*rules.failBelow);
        return fmt::format(
            "Accreditation {}; to be expected if nothing changed: {:.3g}",
            isClose ? fmt::format("{}", *result.accreditation) : shown(*result.accreditation),
            result.expectedAccreditation.value_or(-1.0));
    }
    if (!result.status.IsOK()) {
        // The library's words for bad cut points are for a caller that gives them. Here the
        // reference's values make them.
        const bool isBins = result.status.GetCode() == MAStatusBadCutPoints;
        return because(isBins ? "Its values vary too little for their size, or too widely, to be "
                                "summarised in bins"
                              : result.status.GetMessage(),
                       [&result](const CheckedVariable& variable) {
                           return variable.status.GetCode() == result.status.GetCode();
                       });
    }
    const auto isUntested = [](const CheckedVariable& variable) { return !variable.pValue; };
    const auto untested =
        std::find_if(result.variables.begin(), result.variables.end(), isUntested);
    if (untested == result.variables.end()) return "No accreditation: the weights sum to 0";
    return because(untested->reason, isUntested);
}

std::string UnreadableInWords(const UncountedData& data) {
    const std::uint64_t count = data.unreadable.value_or(0);
    if (count == 0) return {};
    std::string words =
        count == 1 ? "1 cell is unreadable" : fmt::format("{} cells are unreadable", count);
    if (data.firstUnreadableLine > 0) {
        words += fmt::format(", the first \"{}\" on line {}", data.firstUnreadableText,
                             data.firstUnreadableLine);
        if (ParseCell(data.firstUnreadableText, true)) {
            words += " (--decimal-comma reads such numbers)";
        } else if (ParseCell(data.firstUnreadableText, false)) {
            words += " (with --decimal-comma a point is no decimal sign)";
        }
    }
    return words;
}

std::vector<std::string> NotesOn(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    const MAVariableComparison& comparison = checked.comparison;
    std::vector<std::string> notes;
    const std::string crowded = CrowdedInWords(result, variable);
    if (!crowded.empty()) notes.push_back(crowded);
    const std::string unknown =
        OneSidedInWords(result, variable, UnknownCategories(result, variable), &Cell::newCount);
    if (!unknown.empty()) notes.push_back("the reference lacks " + unknown);
    const std::string vanished = OneSidedInWords(
        result, variable, VanishedCategories(result, variable), &Cell::referenceCount);
    // In a small sample rare categories are absent by chance.
    const bool isTelling = comparison.values.verdict != MAVerdict::Unchanged;
    if (!vanished.empty() && checked.newCases > 0 && isTelling) {
        notes.push_back("the new data lacks " + vanished);
    }
    const std::string unreadable = UnreadableInWords(checked.newUncounted);
    if (!unreadable.empty()) notes.push_back(unreadable);
    return notes;
}

}  // namespace app
