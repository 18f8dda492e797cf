#include "app/data/Column.h"

#include <utility>

using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace app {

namespace {

ColumnKind KindLike(const MCVarList& reference, int position) {
    if (position < 0 || reference.GetVariableRole(position) != IMCVariable::VariableRoleInput) {
        return ColumnKind::Ignored;
    }
    const int level = reference.GetVarAt(position)->GetMeasureLevel();
    if (!MCMTD_NAMESPACE::IsCategoricalLevel(level)) return ColumnKind::Continuous;
    return reference.GetEncoderAt(position)->GetValueType() == IMCEncoder::ValueTypeNumber
               ? ColumnKind::NumberCategory
               : ColumnKind::TextCategory;
}

}  // namespace

std::vector<Column> ColumnsLike(const MCVarList& reference,
                                const std::vector<std::string>& headings) {
    std::vector<Column> columns;
    columns.reserve(headings.size());
    for (const std::string& heading : headings) {
        const int position = reference.FindVariable(heading);
        Column column{heading, KindLike(reference, position), true,
                      reference.GetEncoderAt(position)};
        if (column.kind != ColumnKind::Ignored) {
            column.measureLevel = reference.GetVarAt(position)->GetMeasureLevel();
        }
        columns.push_back(std::move(column));
    }
    return columns;
}

}  // namespace app
