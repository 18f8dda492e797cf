#include "app/commands/Learn.h"

#include <fmt/format.h>

#include "accredit/diststats/MAProblems.h"
#include "accredit/documents/Reference.h"
#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/ThisProgram.h"
#include "app/commands/Words.h"
#include "app/data/CsvReader.h"
#include "app/data/LearnReference.h"
#include "app/data/NewSummary.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

constexpr const char* kNotText = "a text with control characters or bytes that are not UTF-8";

// What of the reference the library could not write.
std::string Unwritable(const Reference& reference) {
    const MAVariableProblem problem =
        MAFindExportProblem(reference.stats, reference.missing.Texts());
    if (problem.slot < 0) return fmt::format("a missing token, {}", kNotText);
    const MCVarList& list = reference.stats.GetVarList();
    const int position = reference.stats.GetVarListIndex(static_cast<unsigned int>(problem.slot));
    const std::string column =
        fmt::format("the column \"{}\"", Shortened(list.GetVarAt(position)->GetName()));
    switch (problem.kind) {
        case MAProblemKind::Name:
            return fmt::format("{}: its heading is {}", column, kNotText);
        case MAProblemKind::Category:
            return fmt::format(
                "{}: the category \"{}\" is {}", column,
                Shortened(list.GetEncoderAt(position)->DecodeString(problem.category)), kNotText);
        case MAProblemKind::SummaryStats:
            return column +
                   ": its values are so large that their mean or deviation overflows; --ignore "
                   "leaves it out";
        default:
            return column +
                   ": its values vary too much, or too little for their size, to be put into "
                   "bins; --ignore leaves it out";
    }
}

}  // namespace

namespace {

void RefuseSettledOptions(const LearnOptions& options) {
    const auto refuse = [](const char* option) {
        throw UsageError(fmt::format("{}: the reference of --bins-of has settled this", option));
    };
    if (!options.missing.empty()) refuse("--missing");
    if (!options.columns.categorical.empty()) refuse("--categorical");
    if (!options.columns.continuous.empty()) refuse("--continuous");
}

Reference SummariseWithBinsOf(const LearnOptions& options, Progress& progress,
                              MCQueryCancel& cancel) {
    RefuseSettledOptions(options);
    if (options.binsOfPath == "-" && options.dataPath == "-") {
        throw UsageError("only one of the files can be standard input");
    }
    InputFile file(options.binsOfPath, Reading::Once, progress, cancel);
    const auto document = LoadDocument(file);
    if (!document) throw InputError(file.Name() + ": this is not a stored reference");
    const Reference reference = ReferenceIn(*document, options.columns.ignored);
    CsvReader reader(options.dataPath, Reading::Once, progress, cancel);
    const std::vector<std::string> names = NamesOf(reference.stats.GetVarList());
    CheckNewHeadings(reader, names, options.columns.ignored);
    RequireColumns(options.columns.ignored, {&names, &reader.Headings()},
                   "neither file has a column");
    Reference summary = SummariseLike(reference, reader, cancel);
    if (summary.stats.GetVarCount() == 0) {
        throw InputError(reader.Name() + ": the file has no column of the reference");
    }
    return summary;
}

}  // namespace

Reference Learn(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel) {
    if (!options.binsOfPath.empty()) {
        Reference summary = SummariseWithBinsOf(options, progress, cancel);
        summary.application = ThisProgram();
        return summary;
    }
    CsvReader reader(options.dataPath, Reading::Repeated, progress, cancel);
    CheckHeadings(reader, options.columns.ignored);
    RequireColumns(options.columns.ignored, {&reader.Headings()},
                   reader.Name() + ": the file has no column");
    Reference reference =
        LearnReference(reader, options.columns, MissingTokens(options.missing), cancel);
    reference.application = ThisProgram();
    return reference;
}

std::string DocumentOf(const Reference& reference, const std::string& dataName) {
    std::string document;
    try {
        document = MADocuments::WriteReference(reference);
    } catch (const MADocuments::DocumentError&) {
        throw InputError(dataName + ": a PMML document cannot hold " + Unwritable(reference));
    }
    if (document.size() > MADocuments::kMaxDocumentSize) {
        throw InputError(fmt::format(
            "{}: the reference would be longer than {} MiB; --ignore leaves columns out", dataName,
            MADocuments::kMaxDocumentSize / 1'048'576));
    }
    // What cannot be read again must not be kept.
    MADocuments::ReadReference(document);
    return document;
}

std::vector<std::string> WarningsOf(const Reference& summary, const LearnOptions& options) {
    std::vector<std::string> warnings;
    for (unsigned int slot = 0; slot < summary.stats.GetVarCount(); ++slot) {
        const auto warn = [&](const std::string& what) {
            const MCVarList& list = summary.stats.GetVarList();
            const std::string name = list.GetVarAt(summary.stats.GetVarListIndex(slot))->GetName();
            warnings.push_back(fmt::format("column \"{}\": {}", ShownName(name, slot + 1), what));
        };
        // New data is not what a change would have to show in.
        const std::string crowded =
            options.binsOfPath.empty() ? CrowdedInWords(summary.stats, slot) : "";
        if (!crowded.empty()) warn(crowded);
        const std::string unreadable = UnreadableInWords(summary.uncounted[slot]);
        if (!unreadable.empty()) warn(unreadable);
    }
    return warnings;
}

}  // namespace app
