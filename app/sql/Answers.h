#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/InputFile.h"
#include "app/sql/Connection.h"
#include "app/sql/Statement.h"

namespace app {

/// A row of an answer, as WriteStatement tells them.
struct AnswerLine {
    std::size_t line = 0;    ///< Of the file, from 1.
    std::size_t column = 0;  ///< From 1; 0 for what is of all.
    std::string part;
    std::optional<std::string> key;  ///< Nothing for NULL.
    std::uint64_t count = 0;
};

/// What an engine's own client printed for a statement.
struct Answers {
    std::string fileName;  ///< Fit to be shown.
    StatementHead head;
    std::vector<AnswerLine> lines;  ///< Those behind the head.
    /// Of all that is in it, however it is printed.
    std::string fingerprint;
};

/// Reads what a client printed: fields between commas, tabs, semicolons or upright lines, with or
/// without quotes, a line of headings and a last line with the number of rows; NULL is spelled so,
/// or \N, or not at all. Throws InputError with the line for anything else, such as the words of an
/// error, and for a file without the rows that say what it is of; Cancelled.
Answers ReadAnswers(InputFile& file);
/// The same of the text of a file.
Answers ParseAnswers(std::string_view text, const std::string& fileName);

/// Refuses an answer to another statement than this. An empty source is any. Throws InputError that
/// says what differs.
void RequireAnswerTo(const StatementHead& asked, const Answers& answers);

/// How the source of an answer is shown: the table's name, or "query".
std::string SourceName(const std::string& source);

/// What was answered of a column besides its numbers.
struct AnsweredType {
    std::optional<Storage> storage;  ///< As the engine tells it.
    std::uint64_t texts = 0;         ///< Values that are texts.
    std::uint64_t grouped = 0;       ///< Those that were grouped, NULL among them.
    bool hasTooManyGroups = false;
    std::vector<Group> numbers = {};  ///< The numbers that were grouped apart from texts.
    std::uint64_t numbersGrouped = 0;
    bool hasTooManyNumbers = false;
};

/// All that was answered to a statement.
struct StatementAnswer {
    std::uint64_t rows = 0;
    std::vector<ColumnAnswer> columns;  ///< In the order of those asked for.
    std::vector<AnsweredType> types;    ///< The same.
};

/// The columns of a table, as WriteColumnsStatement asks for them. The same exceptions.
std::vector<ResultColumn> TakeColumns(const Answers& answers);

/// Takes the answers to a statement about these columns. Throws InputError, with the line where
/// there is one, for rows that stand twice, are missing or were not asked for, and for counts that
/// are not those of one table.
StatementAnswer TakeAnswers(const Answers& answers, const std::vector<StatementColumn>& columns);

}  // namespace app
