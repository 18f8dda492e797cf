#include "app/commands/Program.h"

#include <exception>
#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <variant>

#include "app/base/Errors.h"
#include "app/base/Interrupt.h"
#include "app/base/OutputFile.h"
#include "app/base/Printable.h"
#include "app/base/Progress.h"
#include "app/commands/Check.h"
#include "app/commands/Options.h"
#include "app/commands/ReferenceFile.h"
#include "app/commands/Report.h"

namespace app {

namespace {

void Write(std::ostream& out, const std::string& text) {
    out << text << std::flush;
    if (!out) throw OutputError("standard output: could not be written");
}

int RunCheck(const CheckOptions& options, std::ostream& out, std::ostream* terminal) {
    Progress progress(terminal);
    Interrupt interrupt;
    const CheckResult result = Check(options, progress, interrupt);
    progress.Erase();
    interrupt.EndAtOnce();
    Write(out, options.json ? JsonReport(result) : TextReport(result, options.failBelow));
    const bool accredited =
        result.accreditation && !(options.failBelow && *result.accreditation < *options.failBelow);
    return accredited ? ExitAccredited : ExitNotAccredited;
}

int RunLearn(const LearnOptions& options, std::ostream& out, std::ostream* terminal) {
    std::optional<OutputFile> file;
    if (options.outputPath != "-") {
        std::error_code ignored;
        if (std::filesystem::equivalent(options.dataPath, options.outputPath, ignored)) {
            throw UsageError("--output: this is the file with the data");
        }
        file.emplace(options.outputPath);
    }
    Progress progress(terminal);
    Interrupt interrupt;
    const MADocuments::Reference reference = Learn(options, progress, interrupt);
    progress.Erase();
    interrupt.EndAtOnce();
    const std::string document = DocumentOf(reference, FileName(options.dataPath));
    if (file) {
        file->Replace(document);
    } else {
        Write(out, document);
    }
    return ExitAccredited;
}

int RunShow(const ShowOptions& options, std::ostream& out, std::ostream* terminal) {
    Progress progress(terminal);
    Interrupt interrupt;
    const std::optional<Document> document =
        LoadDocument(options.referencePath, Reading::Once, progress, interrupt);
    progress.Erase();
    interrupt.EndAtOnce();
    const std::string name = FileName(options.referencePath);
    if (!document) throw InputError(name + ": this is not a stored reference");
    const MADocuments::Reference reference = ReferenceIn(*document, {});
    Write(out, options.json ? JsonListing(reference) : TextListing(reference, name));
    return ExitAccredited;
}

int Run(const Command& command, std::ostream& out, std::ostream* terminal) {
    if (const auto* check = std::get_if<CheckOptions>(&command)) {
        return RunCheck(*check, out, terminal);
    }
    if (const auto* learn = std::get_if<LearnOptions>(&command)) {
        return RunLearn(*learn, out, terminal);
    }
    if (const auto* show = std::get_if<ShowOptions>(&command)) {
        return RunShow(*show, out, terminal);
    }
    Write(out, std::get<Message>(command).text);
    return ExitAccredited;
}

// The command that was asked for, with a blank before it, if it is one.
std::string CommandName(int argc, const char* const* argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    return name == "check" || name == "learn" || name == "show" ? " " + name : "";
}

}  // namespace

int RunProgram(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
               bool errIsTerminal) {
    try {
        return Run(ParseCommandLine(argc, argv), out, errIsTerminal ? &err : nullptr);
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
