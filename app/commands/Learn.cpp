#include "app/commands/Learn.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <numeric>

#include "accredit/diststats/MAPredictorDist.h"
#include "accredit/documents/MissingTokens.h"
#include "accredit/documents/StoredReference.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/data/CsvReader.h"
#include "app/data/CsvRecordIter.h"

using MCCommon::MCStatus;

namespace app {

namespace {

void RequireColumns(const std::vector<std::string>& names, const CsvReader& reader,
                    const std::string& fileName) {
    const std::vector<std::string>& headings = reader.Headings();
    for (const std::string& name : names) {
        if (std::find(headings.begin(), headings.end(), name) == headings.end()) {
            throw UsageError(
                fmt::format("{}: the file has no column \"{}\"", fileName, Printable(name)));
        }
    }
}

// A file that another program wrote to meanwhile has passes that do not belong together.
void RequireWholePasses(const MADistStats& stats, std::uint64_t records, const std::string& name) {
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const std::vector<double>& frequencies = stats.GetFrequencies(slot);
        const auto cases = static_cast<double>(stats.GetNumberOfCases(slot));
        const double sum = std::accumulate(frequencies.begin(), frequencies.end(), 0.0);
        if (stats.GetNumberOfCases(slot) > records || (!frequencies.empty() && sum != cases)) {
            throw InputError(name + ": the file has changed while it was read");
        }
    }
}

MCApplicInfo4XML ThisProgram() {
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    return {"accredit", ACCREDIT_VERSION,
            fmt::format("{:%Y-%m-%d %H:%M:%S} GMT +00:00", fmt::gmtime(now))};
}

}  // namespace

std::string Learn(const LearnOptions& options, Progress& progress, MCQueryCancel& cancel) {
    StoredReference reference;
    reference.missing = MissingTokens(options.missing);
    reference.application = ThisProgram();

    const std::string name = Printable(options.dataPath);
    CsvReader reader(options.dataPath, Reading::Repeated, progress, cancel);
    CheckHeadings(reader, options.columns.ignored);
    RequireColumns(options.columns.ignored, reader, name);
    const std::vector<Column> columns = SettleKinds(reader, options.columns, reference.missing);
    CsvRecordIter records(reader, columns, reference.missing);
    if (records.VarList().GetNumInputVars() == 0) {
        throw UsageError(name + ": every column is ignored");
    }

    MAPredictorDist predictor(records.VarList(), records, &cancel);
    const MCStatus status = predictor.ComputeDistStats();
    if (status.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!status.IsOK()) throw InputError(name + ": " + status.GetMessage());

    reference.stats = predictor.GetDistStats();
    RequireWholePasses(reference.stats, records.RecordCount(), name);
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        reference.missingCounts.push_back(records.RecordCount() -
                                          reference.stats.GetNumberOfCases(slot));
    }
    std::string document = WriteReference(reference, name);
    if (document.size() > kMaxDocumentSize) {
        throw InputError(fmt::format(
            "{}: the reference would be longer than {} MiB; --ignore leaves columns out", name,
            kMaxDocumentMiB));
    }
    // What cannot be read again must not be kept.
    ReadReference(SourceText("the document of " + name, document));
    return document;
}

}  // namespace app
