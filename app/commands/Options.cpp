#include "app/commands/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "accredit/documents/NumberText.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/commands/ConfigFile.h"

namespace app {

namespace {

constexpr std::string_view kVersion = "accredit " ACCREDIT_VERSION;

constexpr std::string_view kHelp =
    R"(accredit - does new data still look like the data a model was built on?

Usage: accredit COMMAND ...

Commands:
  learn       summarise the data a model is built on and store that as a reference
  check       compare new data with a reference, variable by variable
  merge       put summaries of parts of new data together
  show        print a stored reference
  sql         print what a database's own client is to run for the above

Options:
  -h, --help  show this help; 'accredit COMMAND --help' shows that of a command
  --version   show the version
)";

constexpr std::string_view kCheckHelp =
    R"(accredit check - compare new data with a reference, variable by variable

Usage: accredit check [OPTIONS] REFERENCE NEW...
       accredit check [OPTIONS] REFERENCE --sql CONNECTION --table NAME

REFERENCE is what 'accredit learn' stored, or the data itself; NEW is data, or a
summary that 'accredit learn --bins-of REFERENCE' stored. Data is a CSV file
with a heading, or a pipe; columns are matched by name, in any order. Blanks
around numbers do not count, those of headings and categories do. What is
compressed by gzip or zstd is read as it is. One of the files may be '-' for
standard input.

The first line says what changed. Every variable of the reference is unchanged,
or changed in a minor, moderate or major way, or could not be tested: by a test
that takes both sides as samples, with Holm's method over all variables, their
missing values and cells of numbers that are none; and by the stability index,
which is below 0.1 for minor and from 0.25 on for major changes. The
accreditation is the mean of the p-values of a test that takes the reference as
exact, and stands beside what it would be if nothing had changed.

Columns:
  --ignore COLUMN        leave a column out
  --weight COLUMN=W      weigh a column in the accreditation; the others weigh 1

Columns, when REFERENCE is data; a stored reference has settled these, the last
two not if an application exported it without naming missing values:
  --categorical COLUMN   take a column as categories, whatever it holds
  --continuous COLUMN    insist that a column holds nothing but numbers
  --missing TOKEN        a text that stands for a missing value, besides the
                         usual ones; compared as text (-9 is not -9.0), blanks
                         around it do not count
  --only-missing TOKEN   the same, in place of the usual ones; '' for none

Files:
  --delimiter CHAR       what stands between fields: one character, or 'tab'; if
                         not given, the comma, semicolon or tab that the heading
                         of a file has most of
  --decimal-comma        numbers have a decimal comma: 1,5
  --config FILE          read options of columns and files from a file, a line
                         each: ignore = ["id", "day"]

A table in the place of NEW, which the engine that holds it summarises; only
counts travel:
  --sql CONNECTION       what ODBC takes, such as 'DSN=warehouse', or
                         sqlite:FILE; the password is that of the environment
                         variable ACCREDIT_PASSWORD, or of odbc.ini
  --table NAME           the table: NAME or SCHEMA.NAME
  --query SELECT         a query in its place: 'SELECT ... WHERE day = ...'
  --shard-by COLUMN      group every query by the column that tells the nodes of
                         the table apart, so that each does its part
  --timeout SECONDS      what a query may take, 0 for no limit; else 3600
  --verbose              show every query and its time on standard error
Or the answers of its own client, where there is no driver:
  --answers FILE         what its client printed for the statement of 'accredit
                         sql REFERENCE'; with --table, about this table

Result:
  --fail-on VERDICT      exit with status 1 if a variable is that or worse:
                         minor, moderate (not tested is worse), or major
  --fail-below X         exit with status 1 if the accreditation is below X,
                         from 0 to 1, or if there is none
  --alpha X              the chance of a false alarm in a whole file, between 0
                         and 1; 0.01 if not given
  --all                  show all variables and notes, not only the first ones
  --format FORMAT        print text (the default), json or openmetrics
  --report FILE.html     write a page with all figures and their pictures

  -h, --help             show this help
  --version              show the version

Options that name a column or a token may be repeated. The usual texts of a
missing value are the empty field, NA, NaN, nan, NULL, null, N/A, n/a, #N/A and
<NA>. The kinds of a data reference's columns are those of 'accredit learn'.

Exit status: 0 if no rule is broken; 1 if --fail-on or --fail-below is, or,
without --fail-on, if there is no accreditation: a variable is absent, has an
unknown category or says nothing, or the weights sum to 0; 2 for wrong usage,
unreadable or malformed files, an engine that cannot answer, too little memory,
or an interrupt.

Examples:
  accredit check --missing '?' --ignore id --fail-on moderate \
      --report today.html train.csv today.csv
  accredit check --fail-on moderate train.pmml --sql sqlite:a.db --table sales
)";

constexpr std::string_view kLearnHelp =
    R"(accredit learn - summarise the data a model is built on and store that as a
reference

Usage: accredit learn [OPTIONS] DATA... --output REFERENCE.pmml
       accredit learn [OPTIONS] --sql CONNECTION --table NAME --output REFERENCE

DATA is a CSV file with a heading, a pipe, or '-' for standard input; what is
compressed by gzip or zstd is read as it is. Several files with the same
headings are read one behind the other as one. The reference is a PMML 3.1
document with a summary of every column; new data is later checked against it
without the old data. It is written as a whole or not at all, and replaces a
file that is there. What was taken of every column is printed, and to standard
error what should be looked at.

  --output REFERENCE     the file to write; '-' is standard output
  --bins-of REFERENCE    summarise new data with the bins of a stored reference,
                         so that 'accredit check' can compare the summary with
                         it; DATA may then have no rows

A table in the place of DATA, which the engine that holds it summarises; only
counts travel:
  --sql CONNECTION       what ODBC takes, such as 'DSN=warehouse', or
                         sqlite:FILE; the password is that of the environment
                         variable ACCREDIT_PASSWORD, or of odbc.ini
  --table NAME           the table: NAME or SCHEMA.NAME
  --query SELECT         a query in its place: 'SELECT ... WHERE day = ...'
  --shard-by COLUMN      group every query by the column that tells the nodes of
                         the table apart, so that each does its part
  --timeout SECONDS      what a query may take, 0 for no limit; else 3600
  --verbose              show every query and its time on standard error
Or the answers of its own client, where there is no driver:
  --answers FILE         what its client printed for the statements of 'accredit
                         sql', three files in the order of the rounds; one with
                         --bins-of

Files:
  --delimiter CHAR       what stands between fields: one character, or 'tab'; if
                         not given, the comma, semicolon or tab that the heading
                         of a file has most of
  --decimal-comma        numbers have a decimal comma: 1,5
  --config FILE          read options of columns and files from a file, a line
                         each: ignore = ["id", "day"]

Columns:
  --ignore COLUMN        leave a column out

Columns, without --bins-of, whose reference has settled these, the last two not
if an application exported it without naming missing values:
  --categorical COLUMN   take a column as categories, whatever it holds
  --continuous COLUMN    insist that a column holds nothing but numbers
  --missing TOKEN        a text that stands for a missing value, besides the
                         usual ones; compared as text (-9 is not -9.0), blanks
                         around it do not count
  --only-missing TOKEN   the same, in place of the usual ones; '' for none

  -h, --help             show this help
  --version              show the version

Options that name a column or a token may be repeated. The usual texts of a
missing value are the empty field, NA, NaN, nan, NULL, null, N/A, n/a, #N/A and
<NA>. A column of numbers is continuous, also if a few of its cells are none (at
most 100, and one in a thousand), which are counted as unreadable. A column of
dates is left out, and so is one of keys: more than half of its texts, and more
than 1000, differ. Any other column has categories. Numbers as spreadsheets show
them (1,234.50 or 12 %) are refused. Blanks around numbers do not count, those
of headings and categories do. In a file of one column a blank line is a missing
value; in any other it is passed over. Headings and categories must be UTF-8
without control characters other than tab and line end.

Of a table, numbers are continuous, and texts are taken as those of a file.
Dates, NaN and infinities, and more categories than a reference can hold are
refused with the column and what to do.

Of pipes a temporary copy is made where data is read more than once, in the
folder that TMPDIR names, or in /var/tmp.

Exit status: 0 if the reference was written; 2 for wrong usage, unreadable or
malformed data, data without rows (unless --bins-of is given) or that a
reference cannot hold, an engine that cannot answer, a file that cannot be
written, too little memory, or an interrupt.

Example:
  accredit learn --missing '?' --ignore id train.csv --output train.pmml
)";

constexpr std::string_view kMergeHelp =
    R"(accredit merge - put summaries of parts of new data together

Usage: accredit merge SUMMARY... --output WHOLE.pmml

Every SUMMARY is what 'accredit learn --bins-of REFERENCE' stored of a part of
the data: a shard, an hour, what one machine has seen. All have the bins of the
same reference; '-' is standard input. WHOLE is the summary of all of it, which
'accredit check REFERENCE' compares like any other, and which can be merged
again. It is written as a whole or not at all, and replaces a file that is
there. What it holds is printed.

Counts, minimum and maximum are exact, so the verdicts and the accreditation are
those of one summary of all the data. Mean and deviation are near.

A part that is given twice is refused, also under another name and within a
summary that was merged before: every summary has a fingerprint of the content
of the files that it was made of. So are summaries with other columns, bins or
missing values.

  --output WHOLE         the file to write; '-' is standard output
  -h, --help             show this help
  --version              show the version

Exit status: 0 if the summary was written; 2 for wrong usage, summaries that
cannot be merged, unreadable files, a file that cannot be written, too little
memory, or an interrupt.

Example:
  accredit learn --bins-of train.pmml east.csv --output east.pmml
  accredit learn --bins-of train.pmml west.csv --output west.pmml
  accredit merge east.pmml west.pmml --output all.pmml
  accredit check train.pmml all.pmml
)";

constexpr std::string_view kShowHelp =
    R"(accredit show - print a stored reference

Usage: accredit show [OPTIONS] REFERENCE

REFERENCE is what 'accredit learn' stored; '-' is standard input.

  --format text|json     print a listing with the most frequent categories (the
                         default), or JSON with all of them and all digits
  -h, --help             show this help
  --version              show the version

Exit status: 0, or 2 for wrong usage, an unreadable file, one that is no
reference, too little memory, or an interrupt.

Example:
  accredit show train.pmml
)";

constexpr std::string_view kSqlHelp =
    R"(accredit sql - print what a database's own client is to run

Usage: accredit sql [OPTIONS] REFERENCE --table NAME --dialect DIALECT
       accredit sql [OPTIONS] --table NAME --dialect DIALECT [--answers FILE...]

Where no connection can be had, the client of a database takes its place. This
command prints one statement, the client runs it and prints the answer, and that
is read instead of data. Only counts leave the database, never rows.

With REFERENCE, which 'accredit learn' stored, the statement is that of a whole
check; 'accredit check REFERENCE --answers FILE' reads its answer, and
'accredit learn --bins-of REFERENCE --answers FILE' stores it. Without, it is
that of the next of three rounds of learning; --answers names the answers of
those before, and 'accredit learn --answers FILE' all three.

  --table NAME           the table, SCHEMA.TABLE too; capital and small letters
                         count; what begins with a quote stands as it is
  --query SELECT         a query in its place, for a check
  --dialect DIALECT      ansi, postgresql, mysql (and MariaDB), sqlite or
                         clickhouse
  --answers FILE         what the client printed in an earlier round; repeated
                         for the second

Columns, the same for the statement and for what reads its answer:
  --ignore COLUMN        leave a column out; a column of the reference that the
                         table does not have must be
  --categorical COLUMN, --continuous COLUMN, --missing TOKEN,
  --only-missing TOKEN   as for 'accredit learn', in all rounds

  --config FILE          read options of columns from a file
  -h, --help             show this help
  --version              show the version

Answers have commas, tabs, semicolons or upright lines between fields, with
quotes or without, with headings or without. An answer that is cut short, or
that belongs to another reference, table or round, is refused.

Exit status: 0, or 2 for wrong usage, an unreadable file, an answer that is
none, or an interrupt.

Example:
  accredit sql train.pmml --table sales --dialect sqlite >check.sql
  sqlite3 -csv shop.db <check.sql >answer.csv
  accredit check train.pmml --answers answer.csv
)";

double ParseValue(std::string_view option, std::string_view text) {
    const std::optional<double> value = MADocuments::ParseNumber(MADocuments::TrimBlanks(text));
    if (!value) throw UsageError(fmt::format("{}: {}", option, NotANumber(text)));
    return *value;
}

// The last equals sign separates: a heading may hold others.
ColumnWeight ParseWeight(std::string_view text) {
    const std::size_t separator = text.rfind('=');
    if (separator == std::string_view::npos) {
        throw UsageError(fmt::format("--weight: \"{}\" is not COLUMN=W", Printable(text)));
    }
    const double weight = ParseValue("--weight", text.substr(separator + 1));
    if (weight < 0.0) throw UsageError("--weight: a weight must not be negative");
    // The sum with 0 makes -0 a 0.
    return {std::string(text.substr(0, separator)), weight + 0.0};
}

bool ParseFormat(std::string_view text) {
    if (text == "json") return true;
    if (text == "text") return false;
    throw UsageError(fmt::format("--format: \"{}\" is neither text nor json", Printable(text)));
}

// An option that may stand several times, whose every argument is taken as it is: left to itself,
// the parser gives some texts, such as {}, a meaning of its own.
void AddRepeated(CLI::App& command, const std::string& name,
                 const std::function<void(const std::string&)>& take) {
    command
        .add_option(name,
                    [take](const CLI::results_t& arguments) {
                        for (const std::string& argument : arguments) take(argument);
                        return true;
                    })
        ->take_all();
}

// One argument or more, to the end of the command line.
void AddPaths(CLI::App& command, const std::string& name, std::vector<std::string>& paths,
              bool required = true) {
    command
        .add_option(name,
                    [&paths](const CLI::results_t& arguments) {
                        paths = arguments;
                        return true;
                    })
        ->type_size(1)
        ->allow_extra_args()
        ->expected(1, CLI::detail::expected_max_vector_size)
        ->required(required);
}

void AddSingle(CLI::App& command, const std::string& name,
               const std::function<void(const std::string&)>& take, bool required = false) {
    CLI::Option* const option =
        command.add_option(name, [name, take](const CLI::results_t& arguments) {
            if (arguments.size() > 1) throw UsageError(name + " is given twice");
            take(arguments.front());
            return true;
        });
    option->required(required);
    if (name.front() == '-') option->take_all();
}

char ParseDelimiter(const std::string& text) {
    if (text == "tab" || text == "\\t") return '\t';
    if (text.size() == 1 && IsDelimiter(text.front())) return text.front();
    throw UsageError(fmt::format(
        "--delimiter: \"{}\" is not 'tab' or one character that can stand between fields",
        Printable(text)));
}

std::function<void(const std::string&)> AddTo(std::vector<std::string>& values) {
    return [&values](const std::string& value) { values.push_back(value); };
}

void AddOnlyMissing(DataOptions& data, const std::string& value) {
    if (!data.onlyMissing) data.onlyMissing.emplace();
    data.onlyMissing->push_back(value);
}

void AddDataOptions(CLI::App& command, DataOptions& data) {
    // Of several such options the first is named where a stored reference has settled them.
    const auto addSettled = [&](const std::string& name, bool isKind,
                                const std::function<void(const std::string&)>& take) {
        AddRepeated(command, name, [&data, name, isKind, take](const std::string& value) {
            if (data.settledOption.empty()) data.settledOption = name;
            if (isKind && data.settledKind.empty()) data.settledKind = name;
            take(value);
        });
    };
    addSettled("--missing", false, AddTo(data.missing));
    addSettled("--only-missing", false,
               [&data](const std::string& value) { AddOnlyMissing(data, value); });
    addSettled("--categorical", true, AddTo(data.columns.categorical));
    addSettled("--continuous", true, AddTo(data.columns.continuous));
    AddRepeated(command, "--ignore", [&data](const std::string& value) {
        data.columns.ignored.push_back(value);
        data.ignoredByOption.push_back(value);
    });
    AddSingle(command, "--config", [&data](const std::string& text) {
        if (text.empty()) throw UsageError("--config: a file is needed");
        data.configPath = text;
    });
    AddSingle(command, "--delimiter",
              [&data](const std::string& text) { data.format.delimiter = ParseDelimiter(text); });
    command.add_flag("--decimal-comma", data.format.decimalComma);
}

void AddAnswers(CLI::App& command, TableOptions& table) {
    AddRepeated(command, "--answers", [&table](const std::string& text) {
        if (text.empty()) throw UsageError("--answers: a file is needed");
        table.answerPaths.push_back(text);
    });
}

// New data that is no file. `hasFiles` tells at the end of the command line whether there are any.
void AddTableOptions(CLI::App& command, TableOptions& table) {
    const auto sql = [&table]() -> SqlOptions& {
        return table.sql ? *table.sql : table.sql.emplace();
    };
    const auto addText = [&](const std::string& name, std::string SqlOptions::*member) {
        AddSingle(command, name, [sql, name, member](const std::string& text) {
            if (text.empty()) throw UsageError(name + " needs a value");
            sql().*member = text;
        });
    };
    addText("--sql", &SqlOptions::connection);
    addText("--table", &SqlOptions::table);
    addText("--query", &SqlOptions::query);
    addText("--shard-by", &SqlOptions::shardBy);
    AddSingle(command, "--timeout", [sql](const std::string& text) {
        const double seconds = ParseValue("--timeout", text);
        if (seconds < 0.0) throw UsageError("--timeout: must not be negative");
        sql().timeout = seconds;
    });
    command.add_flag_callback("--verbose", [sql] { sql().isVerbose = true; });
    AddAnswers(command, table);
}

// `files` names the argument that the table stands for.
void RequireOneSource(const TableOptions& table, bool hasFiles, const char* files) {
    if (!table.answerPaths.empty()) {
        if (hasFiles) throw UsageError(fmt::format("--answers stands in the place of {}", files));
        if (table.sql && !(table.sql->connection.empty() && table.sql->shardBy.empty())) {
            throw UsageError("--answers stands in the place of --sql and --shard-by");
        }
        return;
    }
    if (!table.sql) {
        if (!hasFiles)
            throw UsageError(
                fmt::format("{} is required, or --sql and --table, or --answers", files));
        return;
    }
    const SqlOptions& sql = *table.sql;
    if (sql.connection.empty()) {
        throw UsageError("--table, --query, --shard-by, --timeout and --verbose need --sql");
    }
    if (hasFiles) throw UsageError(fmt::format("--sql stands in the place of {}", files));
    if (sql.table.empty() == sql.query.empty()) {
        throw UsageError("--sql needs --table NAME or --query SELECT, and only one of the two");
    }
}

bool ParseSwitch(const std::string& key, const std::string& text) {
    if (text == "true") return true;
    if (text == "false") return false;
    throw UsageError(fmt::format("{}: \"{}\" is neither true nor false", key, Printable(text)));
}

// Adds what a configuration file says. Where only one of two can hold, the command line does.
void TakeConfigFile(const std::string& command, DataOptions& data,
                    std::vector<ColumnWeight>& weights) {
    if (data.configPath.empty()) return;
    const DataOptions given = data;
    const std::vector<ColumnWeight> givenWeights = weights;
    const ConfigKeys keys = {
        {"ignore", AddTo(data.columns.ignored)},
        {"categorical", AddTo(data.columns.categorical)},
        {"continuous", AddTo(data.columns.continuous)},
        {"missing",
         [&](const std::string& value) {
             if (!given.onlyMissing) data.missing.push_back(value);
         }},
        {"only-missing",
         [&](const std::string& value) {
             if (given.missing.empty()) AddOnlyMissing(data, value);
         }},
        {"weight",
         [&](const std::string& value) {
             ColumnWeight weight = ParseWeight(value);
             const bool isGiven = std::any_of(
                 givenWeights.begin(), givenWeights.end(),
                 [&weight](const ColumnWeight& each) { return each.column == weight.column; });
             if (!isGiven) weights.push_back(std::move(weight));
         }},
        {"delimiter",
         [&](const std::string& value) {
             const char delimiter = ParseDelimiter(value);
             if (!given.format.delimiter) data.format.delimiter = delimiter;
         }},
        {"decimal-comma",
         [&](const std::string& value) {
             if (ParseSwitch("decimal-comma", value)) data.format.decimalComma = true;
         }},
    };
    ReadConfigFile(data.configPath, command, keys);
}

void RequireOneMissing(const DataOptions& data) {
    if (!data.onlyMissing || data.missing.empty()) return;
    throw UsageError(
        "--missing names texts besides the usual ones, --only-missing those in their place: only "
        "one of the two can be given");
}

ReportFormat ParseReportFormat(std::string_view text) {
    if (text == "json") return ReportFormat::Json;
    if (text == "openmetrics") return ReportFormat::OpenMetrics;
    if (text == "text") return ReportFormat::Text;
    throw UsageError(
        fmt::format("--format: \"{}\" is neither text, json nor openmetrics", Printable(text)));
}

MAVerdict ParseVerdict(std::string_view text) {
    for (const MAVerdict verdict : {MAVerdict::Minor, MAVerdict::Moderate, MAVerdict::Major}) {
        if (text == VerdictText(verdict)) return verdict;
    }
    throw UsageError(
        fmt::format("--fail-on: \"{}\" is neither minor, moderate nor major", Printable(text)));
}

void AddPath(CLI::App& command, const std::string& name, std::string& path) {
    AddSingle(
        command, name, [&path](const std::string& text) { path = text; }, true);
}

void AddFormat(CLI::App& command, bool& json) {
    AddSingle(command, "--format", [&json](const std::string& text) { json = ParseFormat(text); });
}

void AddOptions(CLI::App& check, CheckOptions& options) {
    AddDataOptions(check, options.data);
    AddRepeated(check, "--weight", [&options](const std::string& text) {
        options.weights.push_back(ParseWeight(text));
    });
    AddSingle(check, "--fail-below", [&options](const std::string& text) {
        const double bound = ParseValue("--fail-below", text);
        if (bound < 0.0 || bound > 1.0) throw UsageError("--fail-below: must lie from 0 to 1");
        options.rules.failBelow = bound;
    });
    AddSingle(check, "--fail-on",
              [&options](const std::string& text) { options.rules.failOn = ParseVerdict(text); });
    AddSingle(check, "--alpha", [&options](const std::string& text) {
        const double alpha = ParseValue("--alpha", text);
        if (!(alpha > 0.0) || alpha >= 1.0) throw UsageError("--alpha: must lie between 0 and 1");
        options.alpha = alpha;
    });
    AddSingle(check, "--format",
              [&options](const std::string& text) { options.format = ParseReportFormat(text); });
    AddSingle(check, "--report", [&options](const std::string& text) {
        if (text.empty() || text == "-") throw UsageError("--report: a file is needed");
        options.reportPath = text;
    });
    check.add_flag("--all", options.showAll);
    AddPath(check, "REFERENCE", options.referencePath);
    AddTableOptions(check, options.table);
    AddPaths(check, "NEW", options.newPaths, false);
}

void AddOptions(CLI::App& learn, LearnOptions& options) {
    AddDataOptions(learn, options.data);
    AddPath(learn, "--output", options.outputPath);
    AddSingle(learn, "--bins-of", [&options](const std::string& text) {
        if (text.empty()) throw UsageError("--bins-of: a stored reference is needed");
        options.binsOfPath = text;
    });
    AddTableOptions(learn, options.table);
    AddPaths(learn, "DATA", options.dataPaths, false);
}

void AddOptions(CLI::App& merge, MergeOptions& options) {
    AddPath(merge, "--output", options.outputPath);
    AddPaths(merge, "SUMMARY", options.summaryPaths);
}

void AddOptions(CLI::App& show, ShowOptions& options) {
    AddFormat(show, options.json);
    AddPath(show, "REFERENCE", options.referencePath);
}

// Of a program that cannot connect the help says so.
std::string HelpWithTables(std::string_view help) {
    std::string text(help);
    if (!Connection::IsThere()) {
        text += "\nThis program was built without unixODBC, so --sql cannot be used.\n";
    }
    return text;
}

Dialect::Engine ParseDialect(const std::string& text) {
    if (const auto engine = Dialect::EngineNamed(text)) return *engine;
    throw UsageError(
        fmt::format("--dialect: \"{}\" is neither ansi, postgresql, mysql, sqlite nor clickhouse",
                    Printable(text)));
}

void AddOptions(CLI::App& sql, StatementOptions& options) {
    const auto table = [&options]() -> SqlOptions& {
        return options.table.sql ? *options.table.sql : options.table.sql.emplace();
    };
    AddDataOptions(sql, options.data);
    AddSingle(sql, "--table", [table](const std::string& text) { table().table = text; });
    AddSingle(sql, "--query", [table](const std::string& text) { table().query = text; });
    AddSingle(
        sql, "--dialect",
        [&options](const std::string& text) { options.engine = ParseDialect(text); }, true);
    AddAnswers(sql, options.table);
    AddSingle(sql, "REFERENCE",
              [&options](const std::string& text) { options.referencePath = text; });
}

void RequireSource(const StatementOptions& options) {
    const std::optional<SqlOptions>& source = options.table.sql;
    if (!source || source->table.empty() == source->query.empty()) {
        throw UsageError("--table NAME or --query SELECT is required, and only one of the two");
    }
    if (!options.referencePath.empty() && !options.table.answerPaths.empty()) {
        throw UsageError("--answers are of earlier rounds of learning, and not with a REFERENCE");
    }
}

// Refuses the first word that the parser knows nothing of. It would itself rather complain about
// what it misses because of that word.
void RefuseUnknown(const CLI::App& program) {
    const std::vector<std::string> words = program.remaining(true);
    if (words.empty()) return;
    const std::string word = Printable(words.front());
    if (word.size() > 1 && word.front() == '-') {
        throw UsageError(fmt::format("unknown option '{}'", word.substr(0, word.find('='))));
    }
    throw UsageError(fmt::format(
        program.get_subcommands().empty() ? "unknown command '{}'" : "unexpected argument '{}'",
        word));
}

}  // namespace

Command ParseCommandLine(int argc, const char* const* argv) {
    CheckOptions checkOptions;
    LearnOptions learnOptions;
    MergeOptions mergeOptions;
    ShowOptions showOptions;
    StatementOptions sqlOptions;
    CLI::App program;
    program.require_subcommand(1);
    CLI::App& check = *program.add_subcommand("check");
    CLI::App& learn = *program.add_subcommand("learn");
    CLI::App& merge = *program.add_subcommand("merge");
    CLI::App& show = *program.add_subcommand("show");
    CLI::App& sql = *program.add_subcommand("sql");
    for (CLI::App* command : {&program, &check, &learn, &merge, &show, &sql}) {
        command->set_version_flag("--version", std::string(kVersion));
    }
    AddOptions(check, checkOptions);
    AddOptions(learn, learnOptions);
    AddOptions(merge, mergeOptions);
    AddOptions(show, showOptions);
    AddOptions(sql, sqlOptions);
    try {
        program.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        if (check.parsed()) return Message{HelpWithTables(kCheckHelp)};
        if (learn.parsed()) return Message{HelpWithTables(kLearnHelp)};
        return Message{std::string(merge.parsed()  ? kMergeHelp
                                   : show.parsed() ? kShowHelp
                                   : sql.parsed()  ? kSqlHelp
                                                   : kHelp)};
    } catch (const CLI::CallForVersion&) {
        return Message{std::string(kVersion) + "\n"};
    } catch (const CLI::ArgumentMismatch& error) {
        // The message begins with the option.
        const std::string message = error.what();
        throw UsageError(message.substr(0, message.find(':')) + " needs a value");
    } catch (const CLI::ParseError& error) {
        RefuseUnknown(program);
        throw UsageError(error.what());
    } catch (const UsageError&) {
        RefuseUnknown(program);
        throw;
    }
    if (merge.parsed()) return mergeOptions;
    if (show.parsed()) return showOptions;
    std::vector<ColumnWeight> noWeights;
    if (sql.parsed()) {
        TakeConfigFile("learn", sqlOptions.data, noWeights);
        RequireOneMissing(sqlOptions.data);
        RequireSource(sqlOptions);
        return sqlOptions;
    }
    if (learn.parsed()) {
        TakeConfigFile("learn", learnOptions.data, noWeights);
        RequireOneMissing(learnOptions.data);
        RequireOneSource(learnOptions.table, !learnOptions.dataPaths.empty(), "DATA");
        return learnOptions;
    }
    TakeConfigFile("check", checkOptions.data, checkOptions.weights);
    RequireOneMissing(checkOptions.data);
    RequireOneSource(checkOptions.table, !checkOptions.newPaths.empty(), "NEW");
    if (checkOptions.table.answerPaths.size() > 1) {
        throw UsageError("--answers is given twice");
    }
    return checkOptions;
}

}  // namespace app
