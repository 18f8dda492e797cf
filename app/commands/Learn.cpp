#include "app/commands/Learn.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "accredit/diststats/MAProblems.h"
#include "accredit/documents/Reference.h"
#include "app/base/Characters.h"
#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Printable.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/Statements.h"
#include "app/commands/ThisProgram.h"
#include "app/data/CsvReader.h"
#include "app/data/LearnReference.h"
#include "app/data/NewSummary.h"
#include "app/sql/AnsweredTable.h"
#include "app/sql/TableSource.h"

using MADocuments::Reference;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

constexpr const char* kNotText = "a text with control characters or bytes that are not UTF-8";
constexpr const char* kOtherEncoding =
    "; what is in an older encoding can be given through a pipe as '-' by 'iconv -f WINDOWS-1252 "
    "-t UTF-8 FILE'";

constexpr const char* kIgnored = "; --ignore leaves it out";

// What of the reference the library could not write.
std::string Unwritable(const Reference& reference, const MAVariableProblem& problem,
                       const char* textRemedy) {
    const MCVarList& list = reference.stats.GetVarList();
    const int position = reference.stats.GetVarListIndex(static_cast<unsigned int>(problem.slot));
    const std::string column =
        fmt::format("the column \"{}\"", Shortened(list.GetVarAt(position)->GetName()));
    switch (problem.kind) {
        case MAProblemKind::Name:
            return fmt::format("{}: its heading is {}{}", column, kNotText, textRemedy);
        case MAProblemKind::Category:
            return fmt::format(
                "{}: the category \"{}\" is {}{}", column,
                Shortened(list.GetEncoderAt(position)->DecodeString(problem.category)), kNotText,
                textRemedy);
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

// Refuses an ignored column that no file has. The last one may be known only at the end.
void RequireIgnored(const LearnOptions& options, const CsvReader& reader,
                    const std::vector<std::string>& reference) {
    std::vector<const std::vector<std::string>*> lists{&reference};
    for (const std::vector<std::string>& headings : reader.FileHeadings()) {
        lists.push_back(&headings);
    }
    RequireColumns(options.data.ignoredByOption, lists,
                   reference.empty() ? reader.Name() + ": the file has no column"
                                     : "neither file has a column");
}

Reference LoadBins(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel,
                   Learned& learned) {
    InputFile file(options.binsOfPath, progress, cancel);
    Reference reference = ReferenceIn(LoadReference(file), options.data.columns.ignored);
    SettleMissing(options.data, "the reference of --bins-of has settled this", reference);
    learned.documentRemarks = ContradictionsIn(reference, file.Name());
    return reference;
}

// The columns of the reference that the new data does not have.
std::vector<std::string> AbsentColumns(const Reference& reference, const Reference& summary,
                                       const std::string& name) {
    std::vector<std::string> remarks;
    const MCVarList& found = summary.stats.GetVarList();
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        const std::string column = MADocuments::VariableName(reference.stats, slot);
        if (found.FindVariable(column) >= 0) continue;
        remarks.push_back(fmt::format("{}: the column \"{}\" of the reference is not there", name,
                                      Shortened(column)));
    }
    return remarks;
}

void SummariseWithBins(const LearnOptions& options, const Reference& reference, CsvReader& reader,
                       MCQueryCancel& cancel, Learned& learned) {
    const std::vector<std::string> names = NamesOf(reference.stats.GetVarList());
    CheckNewHeadings(reader, names, options.data.columns.ignored);
    if (options.dataPaths.size() == 1) RequireIgnored(options, reader, names);
    NewSummary made = SummariseLike(reference, reader, cancel);
    RequireIgnored(options, reader, names);
    if (made.summary.stats.GetVarCount() == 0) {
        throw InputError(
            reader.Name() +
            ": the file has no column of the reference; is the line of headings missing?");
    }
    for (std::string& remark : AbsentColumns(reference, made.summary, reader.Name())) {
        learned.documentRemarks.push_back(std::move(remark));
    }
    learned.reference = std::move(made.summary);
    learned.unreadableFiles = std::move(made.unreadableFiles);
}

// What a document cannot hold is told before the passes, as far as the headings show it.
void RequireUtf8(const LearnOptions& options, const CsvReader& reader) {
    const std::vector<std::string>& ignored = options.data.columns.ignored;
    for (std::size_t i = 0; i < reader.Headings().size(); ++i) {
        const std::string& heading = reader.Headings()[i];
        if (!IsUtf8(heading) &&
            std::find(ignored.begin(), ignored.end(), heading) == ignored.end()) {
            reader.Refuse(i, std::string("the heading is ") + kNotText + kOtherEncoding);
        }
    }
}

// A file without rows, which adds nothing, has no fingerprint.
void TakeSources(const CsvReader& reader, Learned& learned) {
    std::map<std::string, std::string> files;
    for (std::size_t i = 0; i < reader.Fingerprints().size(); ++i) {
        const std::string& fingerprint = reader.Fingerprints()[i];
        const std::string& name = reader.FileName(i);
        const auto [known, isNew] = files.emplace(fingerprint, name);
        if (fingerprint.empty()) continue;
        if (isNew) {
            learned.reference.sources.push_back(fingerprint);
        } else {
            learned.documentRemarks.push_back(
                fmt::format("{}: has the rows of {}, which count again", name, known->second));
        }
    }
}

// Puts the summary of a table with the bins of a reference to what was learned.
void TakeTable(const Reference& bins, TableSummary made, Learned& learned) {
    for (const UntestedColumn& each : made.untested) {
        throw InputError(fmt::format("{}: the column \"{}\" {}", learned.name, Shortened(each.name),
                                     each.problem));
    }
    if (made.summary.stats.GetVarCount() == 0) {
        throw InputError(learned.name + ": the table has no column of the reference");
    }
    for (std::string& remark : made.remarks) learned.documentRemarks.push_back(std::move(remark));
    for (std::string& remark : AbsentColumns(bins, made.summary, learned.name)) {
        learned.documentRemarks.push_back(std::move(remark));
    }
    learned.unreadableFiles.resize(made.summary.stats.GetVarCount());
    learned.reference = std::move(made.summary);
}

Learned LearnOfAnswers(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel) {
    Learned learned;
    if (options.binsOfPath.empty()) {
        LearnedReference reference =
            LearnFromAnswers(options.table, options.data, learned.name, progress, cancel);
        learned.reference = std::move(reference.reference);
        learned.data = std::move(reference.data);
    } else {
        if (options.table.answerPaths.size() > 1) throw UsageError("--answers is given twice");
        InputFile file(options.binsOfPath, progress, cancel);
        const Document document = LoadReference(file);
        Reference bins = ReferenceIn(document, options.data.columns.ignored);
        SettleMissing(options.data, "the reference of --bins-of has settled this", bins);
        learned.documentRemarks = ContradictionsIn(bins, file.Name());
        const Answers answers = LoadAnswers(options.table.answerPaths.front(), progress, cancel);
        RequireAnswerTo(HeadOfCheck(document, options.table, options.data.columns), answers);
        learned.name = SourceName(answers.head.source);
        TakeTable(bins, SummariseAnswers(bins, answers), learned);
    }
    learned.reference.application = ThisProgram();
    return learned;
}

Learned LearnOfTable(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel,
                     std::ostream* log) {
    Learned learned;
    std::optional<Reference> bins;
    if (!options.binsOfPath.empty()) bins = LoadBins(options, progress, cancel, learned);
    TableQueries table(*options.table.sql, progress, cancel, log);
    learned.name = table.Name();
    learned.isTable = true;
    const std::vector<std::string> columns = NamesOf(table.Columns());
    const std::vector<std::string> known =
        bins ? NamesOf(bins->stats.GetVarList()) : std::vector<std::string>();
    RequireColumns(options.data.ignoredByOption, {&known, &columns},
                   table.Name() + ": the table has no column");
    if (bins) {
        TakeTable(*bins, SummariseTable(*bins, table), learned);
    } else {
        LearnedReference reference =
            LearnTable(table, options.data.columns, options.data.Missing());
        learned.reference = std::move(reference.reference);
        learned.data = std::move(reference.data);
    }
    learned.reference.application = ThisProgram();
    return learned;
}

}  // namespace

Learned Learn(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel,
              std::ostream* log) {
    if (!options.table.answerPaths.empty()) return LearnOfAnswers(options, progress, cancel);
    if (options.table.sql) return LearnOfTable(options, progress, cancel, log);
    const std::vector<std::string>& paths = options.dataPaths;
    const auto inputs = std::count(paths.begin(), paths.end(), "-");
    if (inputs + (options.binsOfPath == "-" ? 1 : 0) > 1) {
        throw UsageError("only one of the files can be standard input");
    }
    const bool isReference = options.binsOfPath.empty();
    Learned learned;
    std::optional<Reference> bins;
    std::function<bool(const std::string&)> isOptional;
    if (isReference) {
        const std::vector<std::string>& ignored = options.data.columns.ignored;
        isOptional = [ignored = std::set<std::string>(ignored.begin(), ignored.end())](
                         const std::string& name) { return ignored.count(name) != 0; };
    } else {
        bins = LoadBins(options, progress, cancel, learned);
        isOptional = [&list = bins->stats.GetVarList()](const std::string& name) {
            const int position = list.FindVariable(name);
            return position < 0 || list.GetVariableRole(position) != IMCVariable::VariableRoleInput;
        };
    }
    CsvReader reader(paths, isReference ? Reading::Repeated : Reading::Once, options.data.format,
                     isOptional, progress, cancel);
    for (std::size_t i = 1; i < paths.size(); ++i) {
        // What can be told of all headings is told before the long passes; a pipe is opened when
        // its turn comes.
        if (!IsRegularFile(paths[i])) continue;
        reader.RequireSameColumns(CsvReader({paths[i]}, Reading::Once, options.data.format,
                                            isOptional, progress, cancel));
    }
    reader.TakeFingerprints();
    learned.name = reader.Name();
    learned.fileCount = paths.size();
    if (paths.size() == 1) learned.separatedBy = DelimiterName(reader.Delimiter());
    if (isReference) {
        CheckHeadings(reader, options.data.columns.ignored);
        RequireUtf8(options, reader);
        if (paths.size() == 1) RequireIgnored(options, reader, {});
        LearnedReference reference =
            LearnReference(reader, options.data.columns, options.data.Missing(), cancel);
        RequireIgnored(options, reader, {});
        learned.reference = std::move(reference.reference);
        learned.data = std::move(reference.data);
    } else {
        SummariseWithBins(options, *bins, reader, cancel, learned);
    }
    TakeSources(reader, learned);
    learned.reference.application = ThisProgram();
    return learned;
}

std::string DocumentOf(const Learned& learned) {
    const Reference& reference = learned.reference;
    try {
        return MADocuments::WriteReference(reference);
    } catch (const MADocuments::DocumentError& error) {
        if (learned.isMerged) {
            throw InputError(fmt::format("{}: {}", learned.name, Printable(error.what())));
        }
        const MAVariableProblem problem = MAFindExportProblem(reference.stats);
        if (problem.slot >= 0) {
            throw InputError(
                learned.name + ": a PMML document cannot hold " +
                Unwritable(reference, problem, learned.isTable ? kIgnored : kOtherEncoding));
        }
        throw InputError(fmt::format("{}: {}", learned.name, Printable(error.what())));
    }
}

}  // namespace app
