#include "app/commands/Cells.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include "accredit/diststats/MADistStats.h"
#include "accredit/host/IMCEncoder.h"
#include "app/base/Printable.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace app {

namespace {

Cell ComparedCategory(const CheckResult& result, std::size_t variable, std::size_t index) {
    const CheckedVariable& checked = result.variables[variable];
    const MACells& cells = checked.comparison.cells;
    const bool inReference = cells.referenceCodes[index] >= 0;
    const MADocuments::Reference& summary = inReference ? *result.reference : result.newSummary;
    const auto slot = static_cast<unsigned int>(inReference ? static_cast<int>(variable)
                                                            : checked.comparison.result.newSlot);
    const int code = inReference ? cells.referenceCodes[index] : cells.newCodes[index];
    Cell cell = CategoryAt(summary, slot, code);
    cell.isUnknown = !inReference;
    return cell;
}

// The cells that `wanted` takes, the most frequent by `counts` first.
template <class Wanted>
OneSided MostFrequent(const CheckedVariable& variable, const std::vector<double>& counts,
                      Wanted wanted) {
    constexpr std::size_t kNamed = 20;
    OneSided found;
    const MACells& cells = variable.comparison.cells;
    for (std::size_t index = 0; index < cells.referenceCodes.size(); ++index) {
        if (!wanted(cells, index)) continue;
        const int code = cells.newCodes[index];
        if (code >= 0 && code == variable.newUncounted.otherCategories) {
            found.others = static_cast<int>(index);
        } else {
            found.named.push_back(index);
        }
    }
    std::stable_sort(
        found.named.begin(), found.named.end(),
        [&](std::size_t left, std::size_t right) { return counts[left] > counts[right]; });
    found.more = found.named.size() - std::min(found.named.size(), kNamed);
    found.named.resize(found.named.size() - found.more);
    return found;
}

}  // namespace

Cell CategoryAt(const MADocuments::Reference& summary, unsigned int slot, int code) {
    const MADistStats& stats = summary.stats;
    const IMCEncoder& encoder = *stats.GetVarList().GetEncoderAt(stats.GetVarListIndex(slot));
    Cell cell;
    cell.isOthers =
        code == UncountedAt(summary, slot).otherCategories || code >= encoder.GetNumCategories();
    if (cell.isOthers) return cell;
    cell.isNumber = encoder.GetValueType() == IMCEncoder::ValueTypeNumber;
    if (cell.isNumber) {
        cell.number = encoder.DecodeNumber(code);
    } else {
        cell.text = encoder.DecodeString(code);
    }
    return cell;
}

Cell BinAt(const std::vector<double>& cutPoints, std::size_t index) {
    Cell cell;
    if (index > 0) cell.lower = cutPoints[index - 1];
    if (index < cutPoints.size()) cell.upper = cutPoints[index];
    return cell;
}

Shares SharesOf(const CheckedVariable& variable, std::size_t index) {
    const MACells& cells = variable.comparison.cells;
    const auto share = [index](const std::vector<double>& counts) {
        return counts[index] / std::accumulate(counts.begin(), counts.end(), 0.0);
    };
    return {share(cells.reference), share(cells.observed)};
}

Cell CellAt(const CheckResult& result, std::size_t variable, std::size_t index) {
    const CheckedVariable& checked = result.variables[variable];
    Cell cell = checked.categorical ? ComparedCategory(result, variable, index)
                                    : BinAt(checked.cutPoints, index);
    cell.referenceCount = checked.comparison.cells.reference[index];
    cell.newCount = checked.comparison.cells.observed[index];
    return cell;
}

OneSided UnknownCategories(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    return MostFrequent(
        checked, checked.comparison.cells.observed,
        [](const MACells& cells, std::size_t index) { return cells.referenceCodes[index] < 0; });
}

OneSided VanishedCategories(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    return MostFrequent(checked, checked.comparison.cells.reference,
                        [](const MACells& cells, std::size_t index) {
                            return cells.reference[index] > 0.0 && cells.observed[index] == 0.0;
                        });
}

std::string CellName(const Cell& cell) {
    if (cell.isOthers) return "others";
    if (cell.isNumber) return fmt::format("{}", cell.number);
    const bool hasLower = std::isfinite(cell.lower);
    const bool hasUpper = std::isfinite(cell.upper);
    if (!hasLower && !hasUpper) return fmt::format("\"{}\"", Shortened(cell.text));
    if (!hasLower) return fmt::format("up to {:.6g}", cell.upper);
    if (!hasUpper) return fmt::format("above {:.6g}", cell.lower);
    if (std::nextafter(cell.lower, cell.upper) == cell.upper) return fmt::format("{}", cell.upper);
    return fmt::format("{:.6g} to {:.6g}", cell.lower, cell.upper);
}

}  // namespace app
