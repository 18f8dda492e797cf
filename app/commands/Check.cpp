#include "app/commands/Check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
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

NewFile OpenNew(const std::string& path, Progress& progress, MCQueryCancel& cancel) {
    auto file = std::make_unique<InputFile>(path, Reading::Once, progress, cancel);
    NewFile opened{file->Name(), std::nullopt, std::nullopt};
    if (const auto document = LoadDocument(*file)) {
        // Of a variable that the reference lacks or ignores nothing is looked at.
        opened.summary = ReferenceIn(*document, {});
    } else {
        opened.data.emplace(std::move(file));
    }
    return opened;
}

// Whether a file can be opened twice. Pipes that somebody fills one after the other must be read
// one after the other.
bool CanBeReopened(const std::string& path) {
    std::error_code ignored;
    return path != "-" && std::filesystem::is_regular_file(path, ignored);
}

// The columns that the files turn out to have, in which those of the options must be.
class KnownColumns {
public:
    KnownColumns(const CheckOptions& options, std::vector<std::string> reference)
        : mOptions(options), mReference(std::move(reference)) {}

    const std::vector<std::string>& OfReference() const { return mReference; }

    // Refuses, once the last file is known, an ignored column that none of them has.
    void Take(const NewFile& file) {
        if (file.data) {
            const std::vector<std::string>& headings = file.data->Headings();
            mHeadings.insert(mHeadings.end(), headings.begin(), headings.end());
        }
        // A stored summary has lost the columns that the reference lacks, and one may be meant.
        mHasSummary = mHasSummary || file.summary;
        if (++mFiles == mOptions.newPaths.size() && !mHasSummary) {
            RequireColumns(mOptions.columns.ignored, {&mReference, &mHeadings},
                           "neither file has a column");
        }
    }

private:
    const CheckOptions& mOptions;
    std::vector<std::string> mReference;
    std::vector<std::string> mHeadings;
    std::size_t mFiles = 0;
    bool mHasSummary = false;
};

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

    // All that can be told of the options and the files is told before the long passes.
    KnownColumns columns(options,
                         reference ? NamesOf(reference->stats.GetVarList()) : data->Headings());
    const std::vector<double> weights = WeightsInOrder(options, columns.OfReference());
    for (const std::string& path : options.newPaths) {
        if (!CanBeReopened(path)) continue;
        const NewFile file = OpenNew(path, progress, cancel);
        if (file.data) CheckNewHeadings(*file.data, columns.OfReference(), options.columns.ignored);
        columns.Take(file);
    }
    if (data) {
        reference = LearnReference(*data, options.columns, MissingTokens(options.missing), cancel);
    }

    const auto shared = std::make_shared<const Reference>(std::move(*reference));
    std::vector<CheckResult> results;
    for (const std::string& path : options.newPaths) {
        NewFile file = OpenNew(path, progress, cancel);
        if (!CanBeReopened(path)) columns.Take(file);
        if (file.data) {
            CheckNewHeadings(*file.data, columns.OfReference(), options.columns.ignored);
            file.summary = SummariseLike(*shared, *file.data, cancel);
        } else {
            RequireBinsOf(*shared, *file.summary, file.name);
        }
        results.push_back(Compare(shared, std::move(*file.summary), weights, options.alpha));
        results.back().newName = file.name;
    }
    return results;
}

}  // namespace app
