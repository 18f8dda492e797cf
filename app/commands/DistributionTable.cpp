#include "app/commands/DistributionTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <optional>
#include <vector>

#include "app/base/HtmlText.h"
#include "app/commands/Cells.h"
#include "app/commands/Words.h"

namespace app {

namespace {

struct Row {
    std::string name;  // as HTML
    double referenceCount = 0.0;
    double newCount = 0.0;
    double referenceShare = 0.0;
    double newShare = 0.0;
};

// One row more than there are names: a single remaining category needs no row for the rest.
constexpr std::size_t kNamedCategories = 20;
constexpr std::size_t kRows = kNamedCategories + 1;

std::vector<Row> BinRows(const CheckResult& result, std::size_t variable) {
    const std::size_t bins = result.variables[variable].comparison.cells.reference.size();
    const std::size_t together = (bins + kRows - 1) / kRows;
    std::vector<Row> rows;
    for (std::size_t first = 0; first < bins; first += together) {
        Cell cell = CellAt(result, variable, first);
        for (std::size_t i = first + 1; i < std::min(first + together, bins); ++i) {
            const Cell next = CellAt(result, variable, i);
            cell.upper = next.upper;
            cell.referenceCount += next.referenceCount;
            cell.newCount += next.newCount;
        }
        rows.push_back({HtmlText(CellName(cell)), cell.referenceCount, cell.newCount});
    }
    return rows;
}

double Sum(const std::vector<double>& counts) {
    return std::accumulate(counts.begin(), counts.end(), 0.0);
}

// Frequencies that overflow have no shares.
double Share(double count, double sum) {
    return sum > 0.0 && std::isfinite(sum) ? count / sum : 0.0;
}

std::vector<Row> CategoryRows(const CheckResult& result, std::size_t variable) {
    const MAVariableComparison& comparison = result.variables[variable].comparison;
    const MACells& cells = comparison.cells;
    const double referenceSum = Sum(cells.reference);
    const double newSum = Sum(cells.observed);
    const auto largerShare = [&](std::size_t i) {
        return std::max(Share(cells.reference[i], referenceSum), Share(cells.observed[i], newSum));
    };
    std::vector<std::size_t> order(cells.reference.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return largerShare(left) > largerShare(right);
    });
    const std::size_t named = order.size() > kRows ? kNamedCategories : order.size();
    const auto most = std::find(order.begin(), order.end(),
                                static_cast<std::size_t>(std::max(0, comparison.mostChanged)));
    const auto end = order.begin() + static_cast<std::ptrdiff_t>(named);
    if (comparison.mostChanged >= 0 && most >= end) std::iter_swap(most, end - 1);

    std::vector<Row> rows;
    for (auto i = order.begin(); i != end; ++i) {
        const Cell cell = CellAt(result, variable, *i);
        const char* const mark = cell.isUnknown ? " <em>not in the reference</em>" : "";
        rows.push_back({HtmlText(CellName(cell)) + mark, cell.referenceCount, cell.newCount});
    }
    if (end == order.end()) return rows;
    Row others{fmt::format("<i>{} others</i>", order.end() - end)};
    for (auto i = end; i != order.end(); ++i) {
        others.referenceCount += cells.reference[*i];
        others.newCount += cells.observed[*i];
    }
    rows.push_back(others);
    return rows;
}

// The next tenth above the largest share, or hundredth where all are small.
double ScaleFor(double largestShare) {
    const double steps = largestShare > 0.1 ? 10.0 : 100.0;
    return std::clamp(std::ceil(largestShare * steps) / steps, 0.01, 1.0);
}

std::string CountText(double count) {
    constexpr double kLongest = 1e9;
    return count < kLongest && count == std::floor(count) ? fmt::format("{:.0f}", count)
                                                          : fmt::format("{:.4g}", count);
}

// As short as can be, since a page has thousands of them.
std::string Bar(double share, double scale) {
    const double percent = 100.0 * share / scale;
    if (percent < 0.05) return "<line />";
    return fmt::format("<line x2={:.{}f}% />", percent, percent < 0.95 ? 1 : 0);
}

// The missing or unreadable data, whose shares are of all rows; nothing without any or if they are
// not known of both sides.
std::optional<Row> UncountedRow(const char* name, const MAUncountedChange& change,
                                std::optional<std::uint64_t> referenceCount,
                                std::optional<std::uint64_t> newCount) {
    if (!change.referenceShare || !change.newShare || *referenceCount + *newCount == 0) return {};
    return Row{fmt::format("<i>{}, of all rows</i>", name), static_cast<double>(*referenceCount),
               static_cast<double>(*newCount), *change.referenceShare, *change.newShare};
}

std::vector<Row> RowsOf(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    const MAVariableComparison& comparison = checked.comparison;
    std::vector<Row> rows =
        checked.categorical ? CategoryRows(result, variable) : BinRows(result, variable);
    const double referenceSum = Sum(comparison.cells.reference);
    const double newSum = Sum(comparison.cells.observed);
    for (Row& row : rows) {
        row.referenceShare = Share(row.referenceCount, referenceSum);
        row.newShare = Share(row.newCount, newSum);
    }
    const MADocuments::UncountedData& reference = checked.referenceUncounted;
    const MADocuments::UncountedData& observed = checked.newUncounted;
    for (const std::optional<Row>& row :
         {UncountedRow("missing", comparison.missing, reference.missing, observed.missing),
          UncountedRow("unreadable", comparison.unreadable, reference.unreadable,
                       observed.unreadable)}) {
        if (row) rows.push_back(*row);
    }
    return rows;
}

}  // namespace

std::string DistributionTable(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    if (checked.comparison.cells.reference.empty()) return {};
    const std::vector<Row> rows = RowsOf(result, variable);
    double largest = 0.0;
    for (const Row& row : rows) largest = std::max({largest, row.referenceShare, row.newShare});
    const double scale = ScaleFor(largest);
    std::string html;
    const auto out = std::back_inserter(html);
    // The bars say nothing that the numbers do not, so a screen reader passes over them.
    fmt::format_to(out,
                   "<table><caption>{}</caption><tr><th>{} <u>0<b> to {:.0f}%</b></u>"
                   "<th colspan=2>Reference<th colspan=2>New\n",
                   HtmlText(NameOf(result, variable)), checked.categorical ? "Category" : "Value",
                   100.0 * scale);
    for (const Row& row : rows) {
        fmt::format_to(out, "<tr><th>{}<svg role=none>{}{}</svg><td>{}<td>{}<td>{}<td>{}\n",
                       row.name, Bar(row.referenceShare, scale), Bar(row.newShare, scale),
                       CountText(row.referenceCount), HtmlText(Percent(row.referenceShare)),
                       CountText(row.newCount), HtmlText(Percent(row.newShare)));
    }
    return html + "</table>\n";
}

}  // namespace app
