#pragma once

#include <string>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Progress.h"
#include "app/commands/DataOptions.h"
#include "app/commands/ReferenceFile.h"
#include "app/data/LearnReference.h"
#include "app/sql/Answers.h"
#include "app/sql/Statement.h"

namespace app {

/// What `accredit sql` is asked to do.
struct StatementOptions {
    std::string referencePath;  ///< A stored reference; empty for a statement that learns one.
    Dialect::Engine engine = Dialect::Engine::Ansi;
    TableOptions table;  ///< The table, and the answers of earlier rounds.
    DataOptions data;
};

/// The statement that a client is to run. Throws UsageError, InputError, Cancelled.
std::string PrintedStatement(const StatementOptions& options, Progress& progress,
                             MCQueryCancel& cancel);

/// What the answer to the statement of a check begins with. The source is empty where the user does
/// not name it, and the engine is that of the answer.
StatementHead HeadOfCheck(const Document& reference, const TableOptions& table,
                          const ColumnChoices& columns);

/// Learns from the answers of all rounds. Throws UsageError, InputError, Cancelled.
LearnedReference LearnFromAnswers(const TableOptions& table, const DataOptions& data,
                                  std::string& name, Progress& progress, MCQueryCancel& cancel);

/// Reads the answers that a client has printed. Throws InputError, Cancelled.
Answers LoadAnswers(const std::string& path, Progress& progress, MCQueryCancel& cancel);

}  // namespace app
