#include "app/commands/Check.h"

#include <fmt/format.h>

#include <cmath>
#include <functional>
#include <map>
#include <set>
#include <string_view>

#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/commands/ReferenceFile.h"
#include "app/data/CsvReader.h"
#include "app/data/LearnReference.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

// One weight for each column of the reference that is not ignored, in their order; none if the user
// gave none.
std::vector<double> WeightsInOrder(const CheckOptions& options,
                                   const std::vector<std::string>& headings) {
    if (options.weights.empty()) return {};
    std::map<std::string_view, double> byName;
    for (const auto& [column, weight] : options.weights) {
        if (!byName.emplace(column, weight).second) {
            throw UsageError(fmt::format("two weights for the column \"{}\"", Printable(column)));
        }
    }
    const std::set<std::string_view> ignored(options.columns.ignored.begin(),
                                             options.columns.ignored.end());
    std::vector<double> weights;
    double sum = 0.0;
    for (const std::string& heading : headings) {
        if (ignored.count(heading) != 0) continue;
        const auto named = byName.find(heading);
        weights.push_back(named == byName.end() ? 1.0 : named->second);
        sum += weights.back();
        if (named != byName.end()) byName.erase(named);
    }
    if (!byName.empty()) {
        throw UsageError(
            fmt::format("the weighted column \"{}\" is ignored or not in the reference",
                        Printable(byName.begin()->first)));
    }
    if (!std::isfinite(sum)) throw UsageError("the weights are too large to be added up");
    return weights;
}

void RefuseSettledOptions(const CheckOptions& options) {
    const auto refuse = [](const char* option) {
        throw UsageError(
            fmt::format("{}: this was settled when the reference was learned", option));
    };
    if (!options.missing.empty()) refuse("--missing");
    if (!options.columns.categorical.empty()) refuse("--categorical");
    if (!options.columns.continuous.empty()) refuse("--continuous");
}

std::vector<std::string> NamesOf(const MCVarList& list) {
    std::vector<std::string> names;
    for (unsigned int i = 0; i < list.Size(); ++i) {
        names.push_back(list.GetVarAt(static_cast<int>(i))->GetName());
    }
    return names;
}

}  // namespace

CheckResult Check(const CheckOptions& options, Progress& progress, MCQueryCancel& cancel) {
    const bool isInput = options.referencePath == "-";
    if (isInput && options.newPath == "-") {
        throw UsageError("only one of the two files can be standard input");
    }
    // What is no document is read as data, and not from a pipe, which could keep the program
    // waiting.
    const Reading reading = isInput ? Reading::Once : Reading::Repeated;
    std::optional<Reference> reference;
    std::optional<CsvReader> data;
    if (const auto document = LoadDocument(options.referencePath, reading, progress, cancel)) {
        RefuseSettledOptions(options);
        reference = ReferenceIn(*document, options.columns.ignored);
    } else if (isInput) {
        throw UsageError("the reference cannot be standard input, unless it is a stored one");
    } else {
        data.emplace(options.referencePath, Reading::Repeated, progress, cancel);
        CheckHeadings(*data, options.columns.ignored);
    }

    // Both files are opened and all options looked at before the long passes.
    CsvReader newData(options.newPath, Reading::Once, progress, cancel);
    const std::vector<std::string> names =
        reference ? NamesOf(reference->stats.GetVarList()) : data->Headings();
    CheckNewHeadings(newData, names, options.columns.ignored);
    RequireColumns(options.columns.ignored, {&names, &newData.Headings()},
                   "neither file has a column");
    const std::vector<double> weights = WeightsInOrder(options, names);

    if (data) {
        reference = LearnReference(*data, options.columns, MissingTokens(options.missing), cancel);
    }
    return Compare(*reference, newData, weights, cancel);
}

}  // namespace app
