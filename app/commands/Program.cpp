#include "app/commands/Program.h"

#include <fmt/format.h>

#include <cstddef>
#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "app/base/Errors.h"
#include "app/base/InputFile.h"
#include "app/base/Interrupt.h"
#include "app/base/OutputFile.h"
#include "app/base/Printable.h"
#include "app/base/Progress.h"
#include "app/commands/Account.h"
#include "app/commands/Check.h"
#include "app/commands/Merge.h"
#include "app/commands/Options.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/Report.h"
#include "app/commands/Statements.h"
#include "app/commands/ThisProgram.h"
#include "app/commands/Words.h"

namespace app {

namespace {

void Write(std::ostream& out, const std::string& text) {
    out << text << std::flush;
    if (!out) throw OutputError("standard output: could not be written");
}

// The file that is to be written is none of those that are read.
OutputFile OutputBeside(const std::vector<std::string>& inputs, const std::string& path,
                        const char* option) {
    for (const std::string& input : inputs) {
        std::error_code ignored;
        const std::string place = input == "-" ? "/dev/stdin" : input;
        if (std::filesystem::equivalent(place, path, ignored)) {
            throw UsageError(fmt::format("{}: this is a file that is read", option));
        }
    }
    return OutputFile(path);
}

std::string Report(const std::vector<CheckResult>& results, const CheckOptions& options,
                   const Screen& screen) {
    switch (options.format) {
        case ReportFormat::Json:
            return JsonReport(results, options);
        case ReportFormat::OpenMetrics:
            return OpenMetricsReport(results, options);
        case ReportFormat::Text:
            break;
    }
    return TextReport(results, options, screen);
}

// A line each, for standard error.
std::string Remarks(const std::vector<std::string>& remarks, const std::string& prefix) {
    std::string lines;
    for (const std::string& remark : remarks)
        lines += fmt::format("accredit: {}{}\n", prefix, remark);
    return lines;
}

// What the report does not say, or does not say to the person who runs the program.
std::string Warnings(const CheckResult& result, const CheckOptions& options) {
    std::string warnings;
    if (!options.rules.failOn) {
        for (std::size_t i = 0; i < result.variables.size(); ++i) {
            const std::string unreadable = UnreadableInWords(result.variables[i].newUncounted);
            if (unreadable.empty()) continue;
            warnings += fmt::format("accredit: {}: column \"{}\": {}\n", result.newName,
                                    NameOf(result, i), unreadable);
        }
    }
    if (options.format == ReportFormat::OpenMetrics) {
        for (const std::string& rule : FailedRules(result, options.rules)) {
            warnings += fmt::format("accredit: {}: failed: {}\n", result.newName, rule);
        }
    }
    return warnings;
}

int RunCheck(const CheckOptions& options, std::ostream& out, std::ostream& err,
             const Screen& screen, std::ostream* terminal) {
    std::optional<OutputFile> page;
    if (!options.reportPath.empty()) {
        std::vector<std::string> inputs = options.newPaths;
        inputs.insert(inputs.end(), options.table.answerPaths.begin(),
                      options.table.answerPaths.end());
        inputs.push_back(options.referencePath);
        inputs.push_back(options.data.configPath);
        page.emplace(OutputBeside(inputs, options.reportPath, "--report"));
    }
    Progress progress(terminal);
    Interrupt interrupt;
    const Checked checked = Check(options, progress, interrupt, &err);
    progress.Erase();
    interrupt.EndAtOnce();
    std::string warnings = Remarks(checked.remarks, "");
    bool isBroken = false;
    for (const CheckResult& result : checked.results) {
        warnings += Warnings(result, options);
        isBroken = isBroken || !FailedRules(result, options.rules).empty();
    }
    const std::string report = Report(checked.results, options, screen);
    if (page) page->Replace(HtmlReport(checked.results, options, ThisProgram()));
    Write(out, report);
    err << warnings;
    return isBroken ? ExitBroken : ExitPassed;
}

// Makes a summary, stores it where `outputPath` says, and says what it is of. `inputs` are the
// files that are read for it.
template <class Make>
int Store(Make make, const std::vector<std::string>& inputs, const std::string& outputPath,
          std::ostream& out, std::ostream& err, const Screen& screen, std::ostream* terminal) {
    std::optional<OutputFile> file;
    if (outputPath != "-") file.emplace(OutputBeside(inputs, outputPath, "--output"));
    Progress progress(terminal);
    Interrupt interrupt;
    const Learned learned = make(progress, interrupt);
    progress.Erase();
    interrupt.EndAtOnce();
    const std::string document = DocumentOf(learned);
    const std::string account = AccountOf(learned, screen);
    const std::string remarks =
        Remarks(learned.documentRemarks, "") + Remarks(RemarksOn(learned), learned.name + ": ");
    if (file) {
        file->Replace(document);
        Write(out, account);
    } else {
        Write(out, document);
        err << account;
    }
    err << remarks;
    return ExitPassed;
}

int RunLearn(const LearnOptions& options, std::ostream& out, std::ostream& err,
             const Screen& screen, std::ostream* terminal) {
    std::vector<std::string> inputs = options.dataPaths;
    inputs.push_back(options.binsOfPath);
    inputs.push_back(options.data.configPath);
    inputs.insert(inputs.end(), options.table.answerPaths.begin(), options.table.answerPaths.end());
    const auto make = [&options, &err](Progress& progress, MCQueryCancel& cancel) {
        return Learn(options, progress, cancel, &err);
    };
    return Store(make, inputs, options.outputPath, out, err, screen, terminal);
}

int RunMerge(const MergeOptions& options, std::ostream& out, std::ostream& err,
             const Screen& screen, std::ostream* terminal) {
    const auto make = [&options](Progress& progress, MCQueryCancel& cancel) {
        return MergeSummaries(options, progress, cancel);
    };
    return Store(make, options.summaryPaths, options.outputPath, out, err, screen, terminal);
}

int RunShow(const ShowOptions& options, std::ostream& out, std::ostream& err,
            std::ostream* terminal) {
    Progress progress(terminal);
    Interrupt interrupt;
    InputFile file(options.referencePath, progress, interrupt);
    const Document document = LoadReference(file);
    progress.Erase();
    interrupt.EndAtOnce();
    const MADocuments::Reference reference = ReferenceIn(document, {});
    const std::string remarks = Remarks(ContradictionsIn(reference, file.Name()), "");
    Write(out, options.json ? JsonListing(reference) : TextListing(reference, file.Name()));
    err << remarks;
    return ExitPassed;
}

int RunSql(const StatementOptions& options, std::ostream& out, std::ostream* terminal) {
    Progress progress(terminal);
    Interrupt interrupt;
    const std::string statement = PrintedStatement(options, progress, interrupt);
    progress.Erase();
    interrupt.EndAtOnce();
    Write(out, statement);
    return ExitPassed;
}

int Run(const Command& command, std::ostream& out, std::ostream& err, const Screen& screen,
        std::ostream* terminal) {
    if (const auto* check = std::get_if<CheckOptions>(&command)) {
        return RunCheck(*check, out, err, screen, terminal);
    }
    if (const auto* learn = std::get_if<LearnOptions>(&command)) {
        return RunLearn(*learn, out, err, screen, terminal);
    }
    if (const auto* merge = std::get_if<MergeOptions>(&command)) {
        return RunMerge(*merge, out, err, screen, terminal);
    }
    if (const auto* show = std::get_if<ShowOptions>(&command)) {
        return RunShow(*show, out, err, terminal);
    }
    if (const auto* sql = std::get_if<StatementOptions>(&command)) {
        return RunSql(*sql, out, terminal);
    }
    Write(out, std::get<Message>(command).text);
    return ExitPassed;
}

// The command that was asked for, with a blank before it, if it is one.
std::string CommandName(int argc, const char* const* argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    const bool isCommand =
        name == "check" || name == "learn" || name == "merge" || name == "show" || name == "sql";
    return isCommand ? " " + name : "";
}

}  // namespace

int RunProgram(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
               const Screen& screen, bool errIsTerminal) {
    try {
        return Run(ParseCommandLine(argc, argv), out, err, screen, errIsTerminal ? &err : nullptr);
    } catch (const UsageError& error) {
        err << "accredit: " << error.what() << "\nTry 'accredit" << CommandName(argc, argv)
            << " --help'.\n";
    } catch (const std::bad_alloc&) {
        err << "accredit: there is not enough memory\n";
    } catch (const std::exception& error) {
        err << "accredit: " << error.what() << '\n';
    }
    return ExitFailed;
}

}  // namespace app
