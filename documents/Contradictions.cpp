#include "accredit/documents/internal/Contradictions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "accredit/host/MCMV.h"

using MCMTD_NAMESPACE::MCUniStats;

namespace MADocuments {

namespace {

// Values this close have squared deviations near the smallest double, and values this far apart
// near the largest, so that the standard deviation says little about them.
constexpr double kClose = 1e-140;
constexpr double kFar = 1e140;

// Squared deviations of values closer than this are below the smallest double, so that the standard
// deviation of different ones can come out as 0.
constexpr double kEqual = 1e-150;

// How far the rounding of a running mean may carry it, relative to the size of the values.
constexpr double kRounding = 1e-6;

// Where the values of one bin lie, and how many they are.
struct Cell {
    double low;
    double high;
    double frequency;
};

// Which values the sum and the sum of squared deviations can have, with the smallest value at 0 and
// the largest at 1.
struct Bounds {
    double leastSum = 0.0;
    double mostSum = 0.0;
    double leastSquares = 0.0;
    double mostSquares = 0.0;
};

Bounds BoundsOf(const std::vector<Cell>& cells, double mean, double slack) {
    Bounds bounds;
    for (const auto& [low, high, frequency] : cells) {
        const double near = std::max({low - mean, mean - high, 0.0});
        const double far = std::max(high - mean, mean - low);
        bounds.leastSum += frequency * low;
        bounds.mostSum += frequency * high;
        bounds.leastSquares += frequency * std::pow(std::max(near - slack, 0.0), 2);
        bounds.mostSquares += frequency * std::pow(far + slack, 2);
    }
    return bounds;
}

std::string OfMoments(const std::vector<Cell>& cells, double cases,
                      const MCUniStats::SummStats& summary) {
    const double range = summary.max - summary.min;
    if (!(range > kClose && range < kFar)) return {};
    const double size = std::max(std::fabs(summary.min), std::fabs(summary.max));
    const double slack = kRounding * std::max(size / range, 1.0);
    const double mean = (summary.mean - summary.min) / range;
    const double deviation = summary.stdDev / range;
    Bounds bounds = BoundsOf(cells, mean, slack);
    // The smallest and the largest value are there, and all others lie between them.
    bounds.leastSquares = std::max(bounds.leastSquares, mean * mean + (1.0 - mean) * (1.0 - mean));
    bounds.mostSquares = std::min(bounds.mostSquares, cases * (mean * (1.0 - mean) + slack));

    const double allowed = slack * cases;
    if (cases * mean < bounds.leastSum - allowed || cases * mean > bounds.mostSum + allowed) {
        return "the mean does not fit the bins";
    }
    if ((cases - 1.0) * std::pow(deviation + slack, 2) < bounds.leastSquares * (1.0 - slack) ||
        (cases - 1.0) * std::pow(std::max(deviation - slack, 0.0), 2) >
            bounds.mostSquares * (1.0 + slack)) {
        return "the standard deviation does not fit minimum, maximum, mean and bins";
    }
    return {};
}

// The bins that hold values, each no wider than the range of the values; false if one lies outside.
bool CellsOf(const Bins& bins, const MCUniStats::SummStats& summary, std::vector<Cell>& cells) {
    const double range = summary.max - summary.min;
    const std::size_t last = bins.frequencies.size() - 1;
    for (std::size_t bin = 0; bin <= last; ++bin) {
        const double left = bin == 0 ? std::numeric_limits<double>::lowest() : bins.margins[bin];
        const double right =
            bin == last ? std::numeric_limits<double>::max() : bins.margins[bin + 1];
        const double frequency = bins.frequencies[bin];
        const bool possible = left < summary.max && right >= summary.min;
        const bool hasEnd = (left < summary.min && right >= summary.min) ||
                            (left < summary.max && right >= summary.max);
        if (frequency > 0.0 ? !possible : hasEnd) return false;
        if (frequency > 0.0) {
            cells.push_back({(std::max(left, summary.min) - summary.min) / range,
                             (std::min(right, summary.max) - summary.min) / range, frequency});
        }
    }
    return true;
}

}  // namespace

std::string Contradiction(double cases, const MCUniStats::SummStats& summary, const Bins& bins) {
    const auto& [min, max, mean, stdDev] = summary;
    const bool hasRange = !MCMV::IsMissing(min) && !MCMV::IsMissing(max);
    if (cases == 0.0) {
        // Of a variable that nothing was loaded into, mean and deviation are 0.
        const bool none = MCMV::IsMissing(mean) && MCMV::IsMissing(stdDev);
        const bool untouched = mean == 0.0 && stdDev == 0.0;
        const bool noRange = MCMV::IsMissing(min) && MCMV::IsMissing(max);
        return noRange && (none || untouched) ? "" : "a summary of no cases";
    }
    if (!hasRange || MCMV::IsMissing(mean)) {
        return "minimum, maximum and mean are there if there are cases";
    }
    if (cases == 1.0 && !MCMV::IsMissing(stdDev)) return "a standard deviation of one case";
    if (stdDev == 0.0 && max - min > kEqual) {
        return "the standard deviation is 0, but the values differ";
    }
    if (stdDev > 0.0 && max == min) {
        return "the standard deviation is not 0, but the values are equal";
    }
    const double slack = min == max ? 0.0 : kRounding * std::max(std::fabs(min), std::fabs(max));
    if (min <= max && (mean < min - slack || mean > max + slack)) {
        return "the mean does not lie between minimum and maximum";
    }

    // Frequencies that do not sum to the cases are weights, which say nothing of single values.
    double sum = 0.0;
    for (const double frequency : bins.frequencies) sum += frequency;
    std::vector<Cell> cells;
    if (sum == cases && !CellsOf(bins, summary, cells)) {
        return "the bins do not fit minimum and maximum";
    }
    if (cells.empty()) cells.push_back({0.0, 1.0, cases});
    return cases > 1.0 && min < max ? OfMoments(cells, cases, summary) : std::string();
}

}  // namespace MADocuments
