#include "app/commands/Check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/commands/ReferenceFile.h"
#include "app/data/CsvReader.h"
#include "app/data/LearnReference.h"
#include "app/data/NewSummary.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;

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

// A new file that has been opened: data, or the summary that it holds.
struct NewFile {
    std::string name;  // fit to be shown
    std::optional<CsvReader> data;
    std::optional<Reference> summary;
};

NewFile OpenNew(const std::string& path, const CheckOptions& options, Progress& progress,
                MCQueryCancel& cancel) {
    auto file = std::make_unique<InputFile>(path, Reading::Once, progress, cancel);
    NewFile opened{file->Name(), std::nullopt, std::nullopt};
    if (const auto document = LoadDocument(*file)) {
        opened.summary = ReferenceIn(*document, options.columns.ignored);
    } else {
        opened.data.emplace(std::move(file));
    }
    return opened;
}

// What of the options does not fit the columns of the files is told before the long passes.
std::vector<double> CheckColumns(const std::vector<NewFile>& files,
                                 const std::vector<std::string>& names,
                                 const CheckOptions& options) {
    std::vector<std::vector<std::string>> headings{names};
    for (const NewFile& file : files) {
        if (file.data) CheckNewHeadings(*file.data, names, options.columns.ignored);
        headings.push_back(file.data ? file.data->Headings()
                                     : NamesOf(file.summary->stats.GetVarList()));
    }
    std::vector<const std::vector<std::string>*> lists;
    lists.reserve(headings.size());
    for (const std::vector<std::string>& list : headings) lists.push_back(&list);
    // A stored summary has lost the columns that the reference lacks, and one of them may be meant.
    if (std::all_of(files.begin(), files.end(),
                    [](const NewFile& file) { return file.data.has_value(); })) {
        RequireColumns(options.columns.ignored, lists, "neither file has a column");
    }
    return WeightsInOrder(options, names);
}

}  // namespace

std::vector<CheckResult> Check(const CheckOptions& options, Progress& progress,
                               MCQueryCancel& cancel) {
    const bool isInput = options.referencePath == "-";
    if (std::count(options.newPaths.begin(), options.newPaths.end(), "-") + (isInput ? 1 : 0) > 1) {
        throw UsageError("only one of the files can be standard input");
    }
    // What is no document is read as data, and not from a pipe, which could keep the program
    // waiting.
    auto referenceFile = std::make_unique<InputFile>(
        options.referencePath, isInput ? Reading::Once : Reading::Repeated, progress, cancel);
    std::optional<Reference> reference;
    std::optional<CsvReader> data;
    if (const auto document = LoadDocument(*referenceFile)) {
        RefuseSettledOptions(options);
        reference = ReferenceIn(*document, options.columns.ignored);
    } else if (isInput) {
        throw UsageError("the reference cannot be standard input, unless it is a stored one");
    } else {
        data.emplace(std::move(referenceFile));
        CheckHeadings(*data, options.columns.ignored);
    }

    std::vector<NewFile> files;
    for (const std::string& path : options.newPaths) {
        files.push_back(OpenNew(path, options, progress, cancel));
    }
    const std::vector<double> weights = CheckColumns(
        files, reference ? NamesOf(reference->stats.GetVarList()) : data->Headings(), options);
    if (data) {
        reference = LearnReference(*data, options.columns, MissingTokens(options.missing), cancel);
    }

    const auto shared = std::make_shared<const Reference>(std::move(*reference));
    std::vector<CheckResult> results;
    for (NewFile& file : files) {
        if (file.data) {
            file.summary = SummariseLike(*shared, *file.data, cancel);
            file.data.reset();
        } else {
            RequireBinsOf(*shared, *file.summary, file.name);
        }
        results.push_back(Compare(shared, std::move(*file.summary), weights, options.alpha));
        results.back().newName = file.name;
    }
    return results;
}

}  // namespace app
