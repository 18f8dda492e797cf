#include "app/data/LearnReference.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "accredit/diststats/MAPredictorDist.h"
#include "app/base/Errors.h"
#include "app/data/CsvRecordIter.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;
using MCCommon::MCStatus;

namespace app {

namespace {

// A file that another program wrote to meanwhile has passes that do not belong together.
void RequireWholePasses(const LearnedReference& learned, const CsvRecordIter& records,
                        const CsvReader& reader) {
    const MADistStats& stats = learned.reference.stats;
    for (unsigned int slot = 0; slot < stats.GetVarCount(); ++slot) {
        const std::vector<double>& frequencies = stats.GetFrequencies(slot);
        const unsigned long cases = stats.GetNumberOfCases(slot);
        const double sum = std::accumulate(frequencies.begin(), frequencies.end(), 0.0);
        const auto column = static_cast<std::size_t>(stats.GetVarListIndex(slot));
        const std::uint64_t unreadable = learned.reference.uncounted[slot].unreadable.value_or(0);
        const bool isContinuous = !stats.IsCategorical(slot);
        if (cases > records.RecordCount() ||
            (isContinuous && unreadable != learned.data.columns[column].facts.noNumbers) ||
            (!frequencies.empty() && sum != static_cast<double>(cases))) {
            reader.RefuseChanged();
        }
    }
}

void RequireColumnsLeft(const SettledColumns& data, const CsvReader& reader) {
    const std::vector<SettledColumn>& columns = data.columns;
    const auto isLeftOut = [](const SettledColumn& column) {
        return column.leftOut != LeftOut::No;
    };
    if (!std::all_of(columns.begin(), columns.end(), isLeftOut)) return;
    const std::string delimiter = WrongDelimiter(data);
    if (!delimiter.empty()) throw InputError(fmt::format("{}: {}", reader.Name(), delimiter));
    if (std::all_of(columns.begin(), columns.end(), [](const SettledColumn& column) {
            return column.leftOut == LeftOut::Ignored;
        })) {
        throw UsageError(reader.Name() + ": every column is ignored");
    }
    throw InputError(reader.Name() +
                     ": every column is left out, because its values are dates or keys; "
                     "--categorical COLUMN takes one as categories");
}

}  // namespace

LearnedReference LearnReference(CsvReader& reader, const ColumnChoices& choices,
                                const MissingTokens& missing, MCQueryCancel& cancel) {
    LearnedReference learned;
    learned.data = SettleKinds(reader, choices, missing);
    if (!reader.FileWithoutRows().empty()) {
        throw InputError(reader.FileWithoutRows() + ": there are no rows to learn from");
    }
    RequireColumnsLeft(learned.data, reader);
    std::vector<Column> columns;
    for (const SettledColumn& settled : learned.data.columns) columns.push_back(settled.column);
    CsvRecordIter records(reader, columns, missing);
    MAPredictorDist predictor(records.VarList(), records, &cancel);
    const MCStatus status = predictor.ComputeDistStats();
    if (status.GetCode() == MAStatusCancelled) throw Cancelled();
    if (!status.IsOK()) throw InputError(reader.Name() + ": " + status.GetMessage());

    Reference& reference = learned.reference;
    reference.stats = predictor.GetDistStats();
    reference.missing = missing;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        reference.uncounted.push_back(records.Uncounted(reference.stats.GetVarListIndex(slot),
                                                        reference.stats.GetNumberOfCases(slot)));
    }
    RequireWholePasses(learned, records, reader);
    return learned;
}

}  // namespace app
