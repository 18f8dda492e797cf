#include "app/commands/Statements.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "app/base/Errors.h"
#include "app/base/Fingerprint.h"
#include "app/base/InputFile.h"
#include "app/sql/AnsweredTable.h"

using MADocuments::Reference;

namespace app {

namespace {

std::string SourceOf(const TableOptions& table) {
    if (!table.sql) return {};
    return table.sql->table.empty() ? "query " + table.sql->query : "table " + table.sql->table;
}

// Of the options for columns, whatever their order.
std::string FingerprintOf(const ColumnChoices& columns) {
    Fingerprint fingerprint;
    for (const auto* list : {&columns.ignored, &columns.categorical, &columns.continuous}) {
        std::vector<std::string> names = *list;
        std::sort(names.begin(), names.end());
        names.erase(std::unique(names.begin(), names.end()), names.end());
        names.insert(names.begin(), "columns");
        fingerprint.AddRow({names.begin(), names.end()});
    }
    return fingerprint.Text();
}

std::string FingerprintOf(const DataOptions& data) {
    Fingerprint fingerprint;
    fingerprint.AddRow({FingerprintOf(data.columns)});
    const std::vector<std::string> tokens = data.Missing().Texts();
    fingerprint.AddRow({"missing"});
    for (const std::string& token : tokens) fingerprint.AddRow({token});
    return fingerprint.Text();
}

// The rounds of learning, as far as they have been answered, and the head of the next one.
StatementHead TakeRounds(const TableOptions& table, const DataOptions& data,
                         std::optional<Dialect::Engine> engine, LearningRounds& rounds,
                         Progress& progress, MCQueryCancel& cancel) {
    StatementHead head;
    head.source = SourceOf(table);
    head.options = FingerprintOf(data);
    if (engine) head.engine = *engine;
    Fingerprint earlier;
    for (const std::string& path : table.answerPaths) {
        head.round = fmt::format("learn {}", rounds.Answered() + 1);
        const Answers answers = LoadAnswers(path, progress, cancel);
        RequireAnswerTo(head, answers);
        if ((engine || rounds.Answered() > 0) && answers.head.engine != head.engine) {
            throw InputError(answers.fileName + ": this is an answer in another dialect");
        }
        head.engine = answers.head.engine;
        head.source = answers.head.source;
        rounds.Take(answers);
        if (rounds.Answered() == 1) {
            const std::vector<std::string> names = NamesOf(rounds.Sources());
            RequireColumns(data.ignoredByOption, {&names},
                           SourceName(head.source) + ": the table has no column");
        }
        earlier.AddRow({answers.fingerprint});
        head.earlier = earlier.Text();
    }
    head.round = fmt::format("learn {}", rounds.Answered() + 1);
    return head;
}

}  // namespace

LearnedReference LearnFromAnswers(const TableOptions& table, const DataOptions& data,
                                  std::string& name, Progress& progress, MCQueryCancel& cancel) {
    const MADocuments::MissingTokens missing = data.Missing();
    LearningRounds rounds(data.columns, missing);
    if (table.answerPaths.size() != LearningRounds::kRounds) {
        throw UsageError(fmt::format(
            "--answers: learning takes the answers of {} rounds, in their order; 'accredit sql' "
            "prints the statement of each",
            LearningRounds::kRounds));
    }
    const StatementHead head = TakeRounds(table, data, std::nullopt, rounds, progress, cancel);
    name = SourceName(head.source);
    return rounds.Learned();
}

StatementHead HeadOfCheck(const Document& reference, const TableOptions& table,
                          const ColumnChoices& columns) {
    StatementHead head;
    head.round = "check";
    head.source = SourceOf(table);
    Fingerprint fingerprint;
    fingerprint.AddRow({reference.text});
    head.reference = fingerprint.Text();
    head.options = FingerprintOf(columns);
    return head;
}

Answers LoadAnswers(const std::string& path, Progress& progress, MCQueryCancel& cancel) {
    InputFile file(path, progress, cancel);
    return ReadAnswers(file);
}

std::string PrintedStatement(const StatementOptions& options, Progress& progress,
                             MCQueryCancel& cancel) {
    if (options.referencePath.empty()) {
        const MADocuments::MissingTokens missing = options.data.Missing();
        LearningRounds rounds(options.data.columns, missing);
        if (options.table.answerPaths.size() >= LearningRounds::kRounds) {
            throw UsageError("--answers: that is all; 'accredit learn --answers' takes them");
        }
        const StatementHead head =
            TakeRounds(options.table, options.data, options.engine, rounds, progress, cancel);
        return rounds.Statement(head);
    }
    InputFile file(options.referencePath, progress, cancel);
    const Document document = LoadReference(file);
    const Reference reference = ReferenceIn(document, options.data.columns.ignored);
    const std::vector<std::string> names = NamesOf(reference.stats.GetVarList());
    RequireColumns(options.data.ignoredByOption, {&names}, "the reference has no column");
    StatementHead head = HeadOfCheck(document, options.table, options.data.columns);
    head.engine = options.engine;
    return WriteStatement(head, ColumnsToCheck(reference));
}

}  // namespace app
