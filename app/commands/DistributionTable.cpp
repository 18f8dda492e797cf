#include "app/commands/DistributionTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>
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
};

// One row more than there are names: a single remaining category needs no row for the rest.
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

double Share(double count, double sum) { return sum > 0.0 ? count / sum : 0.0; }

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
    Row others{fmt::format("{} others", order.end() - end)};
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

std::string Bar(double share, double scale) {
    const double percent = 100.0 * share / scale;
    return fmt::format("<rect width={:.{}f}% />", percent, percent < 9.95 ? 1 : 0);
}

}  // namespace

std::string DistributionTable(const CheckResult& result, std::size_t variable) {
    const CheckedVariable& checked = result.variables[variable];
    const MACells& cells = checked.comparison.cells;
    if (cells.reference.empty()) return {};
    const std::vector<Row> rows =
        checked.categorical ? CategoryRows(result, variable) : BinRows(result, variable);
    const double referenceSum = Sum(cells.reference);
    const double newSum = Sum(cells.observed);
    double largest = 0.0;
    for (const Row& row : rows) {
        largest = std::max(
            {largest, Share(row.referenceCount, referenceSum), Share(row.newCount, newSum)});
    }
    const double scale = ScaleFor(largest);
    std::string html;
    const auto out = std::back_inserter(html);
    // The bars say nothing that the numbers do not, so a screen reader passes over them.
    fmt::format_to(out,
                   "<table class=d><caption>Cases of {}</caption><thead><tr><th scope=col>{}"
                   "<td inert>0<b>{:.0f} %</b><th scope=col colspan=2>Reference"
                   "<th scope=col colspan=2>New data<tbody>\n",
                   HtmlText(NameOf(result, variable)), checked.categorical ? "Category" : "Value",
                   100.0 * scale);
    for (const Row& row : rows) {
        const double reference = Share(row.referenceCount, referenceSum);
        const double observed = Share(row.newCount, newSum);
        fmt::format_to(out, "<tr><th>{}<td inert><svg>{}{}</svg><td>{}<td>{}<td>{}<td>{}\n",
                       row.name, Bar(reference, scale), Bar(observed, scale),
                       CountText(row.referenceCount), Percent(reference), CountText(row.newCount),
                       Percent(observed));
    }
    return html + "</table>\n";
}

}  // namespace app
