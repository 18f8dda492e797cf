#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "accredit/documents/Reference.h"
#include "app/data/ColumnKinds.h"
#include "app/data/LearnReference.h"
#include "app/sql/Answers.h"
#include "app/sql/Statement.h"
#include "app/sql/TableSummary.h"

/// @file
/// Tables that are summarised by statements, which the engine's own client runs, and not over a
/// connection.

namespace app {

/// What a statement asks of a table that is to be compared with the reference: a column for every
/// slot.
std::vector<StatementColumn> ColumnsToCheck(const MADocuments::Reference& reference);

/// The same as SummariseTable, by the answers to the statement about ColumnsToCheck. Throws
/// InputError.
TableSummary SummariseAnswers(const MADocuments::Reference& reference, const Answers& answers);

/// What the statements of a reference that is learned ask for, one round after the other.
class LearningRounds {
public:
    static constexpr std::size_t kRounds = 3;

    /// Both must outlive this.
    LearningRounds(const ColumnChoices& choices, const MADocuments::MissingTokens& missing);

    /// The rounds that have been answered.
    std::size_t Answered() const { return mAnswered; }
    /// Takes the answer of the next round. Throws UsageError for choices that do not fit the table,
    /// InputError.
    void Take(const Answers& answers);
    /// The statement of the next round.
    std::string Statement(const StatementHead& head) const;
    /// What was learned when all are answered: the same as LearnTable over a connection.
    LearnedReference Learned();
    const std::vector<ResultColumn>& Sources() const { return mSources; }

private:
    void TakeColumns(const Answers& answers);
    void TakeValues(const Answers& answers);
    void TakeBins(const Answers& answers);
    void AskBins();

    const ColumnChoices& mChoices;
    const MADocuments::MissingTokens& mMissing;
    std::size_t mAnswered = 0;
    std::string mName;
    std::uint64_t mRows = 0;
    std::vector<ResultColumn> mSources;
    std::vector<Choice> mByColumn;
    std::vector<StatementColumn> mAsked;
    std::vector<AnsweredColumn> mColumns;
    std::vector<SettledColumn> mSettled;
};

}  // namespace app
