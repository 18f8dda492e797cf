#include "app/commands/Statements.h"

#include <algorithm>
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

}  // namespace

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
