#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/base/JsonText.h"
#include "app/commands/Cells.h"
#include "app/commands/Report.h"

namespace app {

namespace {

constexpr std::array<MAVerdict, 5> kVerdicts = {MAVerdict::Unchanged, MAVerdict::Minor,
                                                MAVerdict::Moderate, MAVerdict::NotTested,
                                                MAVerdict::Major};

using Value = std::optional<double>;

// The format has no other escapes, so all else stands as it is.
std::string Label(std::string_view name, std::string_view text) {
    std::string label = fmt::format("{}=\"", name);
    for (const char byte : Utf8Text(text)) {
        if (byte == '"' || byte == '\\') label += '\\';
        label += byte == '\n' ? std::string("\\n") : std::string(1, byte);
    }
    return label + '"';
}

// Writes family after family: its samples may not stand apart. All are gauges, because readers of
// the older text format know no state sets.
class Metrics {
public:
    // `paths` are those of the results.
    Metrics(const std::vector<CheckResult>& results, const std::vector<std::string>& paths) {
        // Readers refuse two samples with the same labels, as a file given twice would have.
        std::set<std::string> names;
        for (std::size_t i = 0; i < results.size(); ++i) {
            std::string name = paths[i];
            for (int number = 2; !names.insert(name).second; ++number) {
                name = fmt::format("{} ({})", paths[i], number);
            }
            mFiles.push_back({results[i], Label("file", name)});
        }
    }

    // A family of the results. `write` gets each of them, and a function that takes the labels of a
    // sample besides the file's, and its value. A unit becomes the last part of the name.
    template <class Write>
    void OfFiles(std::string_view name, std::string_view unit, std::string_view help, Write write) {
        const std::string family = Begin(name, unit, help);
        for (const File& file : mFiles) {
            write(file.result, [&](const std::string& more, Value value) {
                Sample(family, file.label, more, value);
            });
        }
    }

    // The same of the variables. `write` gets the result, the variable's index and the function.
    template <class Write>
    void OfVariables(const std::string& name, std::string_view unit, std::string_view help,
                     Write write) {
        const std::string family = Begin("variable_" + name, unit, help);
        for (const File& file : mFiles) {
            for (std::size_t i = 0; i < file.result.variables.size(); ++i) {
                const std::string labels =
                    file.label + "," + Label("variable", file.result.variables[i].name);
                write(file.result, i, [&](const std::string& more, Value value) {
                    Sample(family, labels, more, value);
                });
            }
        }
    }

    std::string Text() && { return std::move(mText) + "# EOF\n"; }

private:
    struct File {
        const CheckResult& result;
        std::string label;
    };

    std::string Begin(std::string_view name, std::string_view unit, std::string_view help) {
        std::string family = fmt::format("accredit_{}{}{}", name, unit.empty() ? "" : "_", unit);
        mText += fmt::format("# TYPE {} gauge\n", family);
        if (!unit.empty()) mText += fmt::format("# UNIT {} {}\n", family, unit);
        mText += fmt::format("# HELP {} {}\n", family, help);
        return family;
    }

    // What has no value has no sample.
    void Sample(const std::string& family, const std::string& labels, const std::string& more,
                Value value) {
        if (!value || !std::isfinite(*value)) return;
        mText +=
            fmt::format("{}{{{}{}{}}} {}\n", family, labels, more.empty() ? "" : ",", more, *value);
    }

    std::vector<File> mFiles;
    std::string mText;
};

Value Number(std::optional<std::uint64_t> count) {
    if (!count) return std::nullopt;
    return static_cast<double>(*count);
}

// One sample for the reference and one for the new data.
template <class Sample>
void Both(const Sample& sample, Value reference, Value observed) {
    sample(Label("sample", "reference"), reference);
    sample(Label("sample", "new"), observed);
}

void WriteFiles(Metrics& metrics) {
    metrics.OfFiles(
        "accreditation", "ratio",
        "Weighted mean of the p-values of the variables; see "
        "accredit_expected_accreditation_ratio for what to compare it with.",
        [](const CheckResult& result, const auto& sample) { sample("", result.accreditation); });
    metrics.OfFiles("expected_accreditation", "ratio",
                    "The accreditation to be expected if nothing had changed.",
                    [](const CheckResult& result, const auto& sample) {
                        sample("", result.expectedAccreditation);
                    });
    metrics.OfFiles(
        "variables", "", "Number of variables with each verdict.",
        [](const CheckResult& result, const auto& sample) {
            for (const MAVerdict verdict : kVerdicts) {
                const auto count = std::count_if(result.variables.begin(), result.variables.end(),
                                                 [verdict](const CheckedVariable& variable) {
                                                     return variable.comparison.verdict == verdict;
                                                 });
                sample(Label("verdict", VerdictText(verdict)), static_cast<double>(count));
            }
        });
}

// A family of numbers that each variable has one of at most.
template <class ValueOf>
void WriteNumbers(Metrics& metrics, const std::string& name, std::string_view unit,
                  std::string_view help, ValueOf valueOf) {
    metrics.OfVariables(name, unit, help,
                        [valueOf](const CheckResult& result, std::size_t i, const auto& sample) {
                            sample("", valueOf(result, i));
                        });
}

// A family of numbers that the values, the missing and the unreadable data have one each of.
template <class ValueOf>
void WriteChanges(Metrics& metrics, const std::string& name, std::string_view unit,
                  std::string_view help, ValueOf valueOf) {
    metrics.OfVariables(name, unit, help,
                        [valueOf](const CheckResult& result, std::size_t i, const auto& sample) {
                            const MAVariableComparison& comparison = result.variables[i].comparison;
                            sample(Label("data", "values"), valueOf(comparison.values));
                            sample(Label("data", "missing"), valueOf(comparison.missing));
                            sample(Label("data", "unreadable"), valueOf(comparison.unreadable));
                        });
}

void WriteTests(Metrics& metrics) {
    WriteNumbers(
        metrics, "p_value", "",
        "P-value of the test that the accreditation is the mean of, which takes the "
        "reference as exact.",
        [](const CheckResult& result, std::size_t i) { return result.variables[i].pValue; });
    WriteChanges(metrics, "two_sample_p_value", "",
                 "P-value of the test that takes the reference as a sample, too.",
                 [](const MAChange& change) {
                     return change.test ? Value(change.test->pValue) : std::nullopt;
                 });
    WriteChanges(metrics, "adjusted_p_value", "",
                 "Two-sample p-value adjusted for the number of tests of the file; below alpha it "
                 "is a change.",
                 [](const MAChange& change) { return change.adjustedPValue; });
    WriteChanges(metrics, "stability_index", "",
                 "Population stability index: the size of a change, minor below 0.1, major from "
                 "0.25.",
                 [](const MAChange& change) {
                     return change.test ? Value(change.test->stabilityIndex) : std::nullopt;
                 });
    WriteChanges(metrics, "share_moved", "ratio",
                 "Share of the cases that would have to move to another bin or category to make "
                 "one distribution of the other.",
                 [](const MAChange& change) { return change.shareMoved; });
    WriteNumbers(metrics, "mean_shift", "standard_deviations",
                 "New mean less that of the reference, in standard deviations of the reference.",
                 [](const CheckResult& result, std::size_t i) {
                     return result.variables[i].comparison.meanShift;
                 });
    WriteNumbers(metrics, "deviation", "ratio",
                 "New standard deviation divided by that of the reference.",
                 [](const CheckResult& result, std::size_t i) {
                     return result.variables[i].comparison.deviationRatio;
                 });
}

void WriteCounts(Metrics& metrics) {
    metrics.OfVariables("cases", "", "Number of data that are neither missing nor unreadable.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            Both(sample, Number(result.variables[i].referenceCases),
                                 Number(result.variables[i].newCases));
                        });
    metrics.OfVariables("missing_cells", "", "Number of missing data.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            const CheckedVariable& variable = result.variables[i];
                            Both(sample, Number(variable.referenceUncounted.missing),
                                 Number(variable.newUncounted.missing));
                        });
    metrics.OfVariables("missing", "ratio", "Share of the rows whose datum is missing.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            const auto& missing = result.variables[i].comparison.missing;
                            Both(sample, missing.referenceShare, missing.newShare);
                        });
    metrics.OfVariables("unreadable_cells", "", "Number of data that are no numbers and should be.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            const CheckedVariable& variable = result.variables[i];
                            Both(sample, Number(variable.referenceUncounted.unreadable),
                                 Number(variable.newUncounted.unreadable));
                        });
    metrics.OfVariables("unreadable", "ratio",
                        "Share of the rows whose datum is no number and should be.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            const auto& unreadable = result.variables[i].comparison.unreadable;
                            Both(sample, unreadable.referenceShare, unreadable.newShare);
                        });
    const auto countOf = [](auto list) {
        return [list](const CheckResult& result, std::size_t i) -> Value {
            if (!result.variables[i].categorical) return std::nullopt;
            const OneSided found = list(result, i);
            return static_cast<double>(found.named.size() + found.more +
                                       (found.others >= 0 ? 1 : 0));
        };
    };
    WriteNumbers(metrics, "unknown_categories", "",
                 "Number of categories that the reference lacks; those that were too many to be "
                 "kept by name count as one.",
                 countOf(UnknownCategories));
    WriteNumbers(metrics, "vanished_categories", "",
                 "Number of categories that only the reference has.", countOf(VanishedCategories));
    WriteNumbers(metrics, "crowded_bin", "ratio",
                 "Share of the reference in its fullest bin, where that is above 0.95 and hides "
                 "changes.",
                 [](const CheckResult& result, std::size_t i) {
                     const auto& crowded = result.variables[i].comparison.crowdedBin;
                     return crowded ? Value(crowded->share) : std::nullopt;
                 });
}

}  // namespace

std::string OpenMetricsReport(const std::vector<CheckResult>& results,
                              const CheckOptions& options) {
    Metrics metrics(results, NewLabels(options));
    WriteFiles(metrics);
    metrics.OfFiles("failed_rules", "", "Number of the rules for failure that the file breaks.",
                    [&options](const CheckResult& result, const auto& sample) {
                        const auto failed = FailedRules(result, options.rules).size();
                        sample("", static_cast<double>(failed));
                    });
    metrics.OfFiles(
        "alpha", "", "Bound of an adjusted p-value below which it is a change.",
        [&options](const CheckResult&, const auto& sample) { sample("", options.alpha); });
    metrics.OfVariables("verdict", "", "1 for the verdict of the variable, 0 for the others.",
                        [](const CheckResult& result, std::size_t i, const auto& sample) {
                            for (const MAVerdict verdict : kVerdicts) {
                                const bool isIt = result.variables[i].comparison.verdict == verdict;
                                sample(Label("verdict", VerdictText(verdict)), isIt ? 1.0 : 0.0);
                            }
                        });
    WriteTests(metrics);
    WriteCounts(metrics);
    return std::move(metrics).Text();
}

}  // namespace app
