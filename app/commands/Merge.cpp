#include "app/commands/Merge.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "accredit/documents/Merge.h"
#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/ThisProgram.h"

using MADocuments::Reference;

namespace app {

namespace {

// A file that is named twice is told from its copies by its place, before anything is read.
void RequireDifferentFiles(const std::vector<std::string>& paths) {
    if (std::count(paths.begin(), paths.end(), "-") > 1) {
        throw UsageError("only one of the files can be standard input");
    }
    std::set<std::pair<dev_t, ino_t>> seen;
    for (const std::string& path : paths) {
        struct stat found {};
        if (stat(path.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) continue;
        if (!seen.emplace(found.st_dev, found.st_ino).second) {
            throw InputError(fmt::format("{}: this file is given twice", Printable(path)));
        }
    }
}

// Whether all bins are those that the data's own mean and deviation give: a reference has such, and
// new data that was summarised with the bins of another hardly ever.
bool HasBinsOfItsOwn(const MADistStats& stats) {
    bool hasBins = false;
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        if (stats.IsCategorical(slot) || stats.GetCutPoints(slot).empty()) continue;
        double m = 0.0;
        double s = 0.0;
        stats.GetMeanStdDev(slot, m, s);
        const std::vector<double> own = {m - (s + s), m - s, m, m + s, m + (s + s)};
        if (stats.GetCutPoints(slot) != own) return false;
        hasBins = true;
    }
    return hasBins;
}

// What has been merged so far, and from which files it came.
struct Merging {
    Reference whole;
    std::vector<std::string> unreadableFiles = {};  // by slot
    std::map<std::string, std::string> filesBySource = {};
    std::vector<std::string> remarks = {};

    void Add(const Reference& summary, const std::string& fileName);
};

void Merging::Add(const Reference& summary, const std::string& fileName) {
    for (const std::string& source : summary.sources) {
        const auto [known, isNew] = filesBySource.emplace(source, fileName);
        if (isNew) continue;
        throw InputError(fmt::format(
            "{}: has data that is in {} already ({}); leave one of the two out, or merge "
            "their parts again, each once",
            fileName, known->second, Shortened(source)));
    }
    try {
        whole = MADocuments::Merge(std::move(whole), summary);
    } catch (const MADocuments::DocumentError& error) {
        throw InputError(fmt::format("{}: cannot be merged with what is before it: {}", fileName,
                                     Printable(error.what())));
    }
    const std::vector<std::string> contradictions = ContradictionsIn(summary, fileName);
    remarks.insert(remarks.end(), contradictions.begin(), contradictions.end());
    if (HasBinsOfItsOwn(summary.stats)) {
        remarks.push_back(
            fileName +
            ": this is a reference, whose bins are those of its own data; leave it out "
            "if that is not a part of the new data");
    }
    unreadableFiles.resize(whole.stats.GetVarCount());
    for (unsigned int slot = 0; slot < unreadableFiles.size(); ++slot) {
        if (UncountedAt(whole, slot).firstUnreadableLine > 0 && unreadableFiles[slot].empty()) {
            unreadableFiles[slot] = "the data of " + fileName;
        }
    }
}

}  // namespace

Learned MergeSummaries(const MergeOptions& options, Progress& progress, MCQueryCancel& cancel) {
    RequireDifferentFiles(options.summaryPaths);
    Merging merging;
    Learned learned;
    learned.fileCount = options.summaryPaths.size();
    for (const std::string& path : options.summaryPaths) {
        InputFile file(path, progress, cancel);
        const std::optional<Document> document = LoadDocument(file);
        if (!document) {
            throw InputError(file.Name() +
                             ": this is not a stored summary; 'accredit learn --bins-of "
                             "REFERENCE' makes one of data");
        }
        merging.Add(ReferenceIn(*document, {}), file.Name());
        if (learned.name.empty()) learned.name = file.Name();
    }
    if (learned.fileCount > 1) {
        learned.name = fmt::format("{} and {} more", learned.name, learned.fileCount - 1);
    }
    learned.isMerged = true;
    learned.documentRemarks = std::move(merging.remarks);
    learned.unreadableFiles = std::move(merging.unreadableFiles);
    learned.reference = std::move(merging.whole);
    learned.reference.application = ThisProgram();
    return learned;
}

}  // namespace app
