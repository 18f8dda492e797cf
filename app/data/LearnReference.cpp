#include "app/data/LearnReference.h"

#include <fmt/format.h>

#include <algorithm>

#include "accredit/diststats/MAProblems.h"
#include "app/base/Errors.h"
#include "app/data/CsvRecordIter.h"
#include "app/data/DataPass.h"

using MADocuments::MissingTokens;
using MADocuments::Reference;

namespace app {

namespace {

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
    std::vector<std::vector<double>> cutPoints;
    for (const SettledColumn& settled : learned.data.columns) {
        columns.push_back(settled.column);
        if (settled.leftOut == LeftOut::No) cutPoints.push_back(settled.cutPoints);
    }
    CsvRecordIter records(reader, columns, missing);
    // What cannot be given, because values vary too much or too little for it, the pass computes by
    // itself, and reads the data once more.
    if (MAFindBadCutPoints(records.VarList(), cutPoints) != MACutPointsAreGood) cutPoints.clear();

    Reference& reference = learned.reference;
    reference.stats = Summarise(records, cutPoints, reader, cancel);
    reference.missing = missing;
    for (unsigned int slot = 0; slot < reference.stats.GetVarCount(); ++slot) {
        reference.uncounted.push_back(records.Uncounted(reference.stats.GetVarListIndex(slot),
                                                        reference.stats.GetNumberOfCases(slot)));
    }
    return learned;
}

}  // namespace app
