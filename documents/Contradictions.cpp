#include "accredit/documents/Contradictions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "accredit/diststats/MAUniStats.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCUniStats.h"

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
bool CellsOf(const MCUniStats& variable, std::vector<Cell>& cells) {
    const MCUniStats::SummStats& summary = variable.GetSummStats();
    const std::vector<double>& margins = variable.GetCutPoints();
    const std::vector<double>& frequencies = variable.GetFrequencies();
    const double range = summary.max - summary.min;
    for (std::size_t bin = 0; bin < frequencies.size(); ++bin) {
        const double left = margins[bin];  // The missing value, an open end, is the lowest double.
        const double right =
            bin + 1 == frequencies.size() ? std::numeric_limits<double>::max() : margins[bin + 1];
        const double frequency = frequencies[bin];
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

bool AreFinite(const std::vector<double>& numbers) {
    return std::all_of(numbers.begin(), numbers.end(),
                       [](double number) { return std::isfinite(number); });
}

}  // namespace

std::string FindContradiction(const MADistStats& stats, unsigned int slot) {
    const MCUniStats variable = MAUniStatsOf(stats, slot);
    const MCUniStats::SummStats& summary = variable.GetSummStats();
    const auto& [min, max, mean, stdDev] = summary;
    const double cases = variable.GetNumberOfCases();
    if (variable.IsCategorical() || cases == 0.0 || !AreFinite({min, max, mean, stdDev}) ||
        !AreFinite(variable.GetCutPoints()) || !AreFinite(variable.GetFrequencies())) {
        return {};
    }
    if (MCMV::IsMissing(min) || MCMV::IsMissing(max)) return "there is no minimum and maximum";
    if (stdDev == 0.0 && max - min > kEqual) {
        return "the standard deviation is 0, but the values differ";
    }
    if (stdDev > 0.0 && max == min) {
        return "the standard deviation is not 0, but the values are equal";
    }
    const double slack = min == max ? 0.0 : kRounding * std::max(std::fabs(min), std::fabs(max));
    if (mean < min - slack || mean > max + slack) {
        return "the mean does not lie between minimum and maximum";
    }

    // Frequencies that do not sum to the cases are weights, which say nothing of single values.
    double sum = 0.0;
    for (const double frequency : variable.GetFrequencies()) sum += frequency;
    std::vector<Cell> cells;
    if (sum == cases && !CellsOf(variable, cells)) {
        return "the bins do not fit minimum and maximum";
    }
    if (cells.empty()) cells.push_back({0.0, 1.0, cases});
    return cases > 1.0 && min < max ? OfMoments(cells, cases, summary) : std::string();
}

}  // namespace MADocuments
