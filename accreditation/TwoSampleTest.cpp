// Two samples over the same cells: whether they differ, by how much, and where.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <numeric>

#include "accredit/accreditation/MAComparison.h"
#include "accredit/distfun/MCDistFun.h"

using MAMath::MCDistFun;

namespace {

constexpr double kLeastExpected = 5.0;

struct Cell {
    double reference = 0.0;
    double observed = 0.0;

    double Sum() const { return reference + observed; }
};

Cell operator+(const Cell& left, const Cell& right) {
    return {left.reference + right.reference, left.observed + right.observed};
}

// The sums of both samples; nothing if they are no counts over the same cells.
std::optional<Cell> SumsOf(const std::vector<double>& reference,
                           const std::vector<double>& observed) {
    if (reference.size() != observed.size()) return std::nullopt;
    Cell sums;
    for (std::size_t c = 0; c < reference.size(); ++c) {
        // A NaN is neither.
        if (!(reference[c] >= 0.0) || !(observed[c] >= 0.0)) return std::nullopt;
        sums = sums + Cell{reference[c], observed[c]};
    }
    if (!std::isfinite(sums.Sum())) return std::nullopt;
    return sums;
}

// The expected count of a cell in the smaller sample.
double LeastExpected(const Cell& cell, const Cell& sums) {
    return std::min(sums.reference, sums.observed) * cell.Sum() / sums.Sum();
}

bool IsSmall(const Cell& cell, const Cell& sums) {
    return LeastExpected(cell, sums) < kLeastExpected;
}

bool HasFewerCases(const Cell& left, const Cell& right) { return left.Sum() < right.Sum(); }

double Term(double count, double expected) {
    return (count - expected) * (count - expected) / expected;
}

double Statistic(const std::vector<Cell>& cells, const Cell& sums) {
    double statistic = 0.0;
    for (const Cell& cell : cells) {
        statistic += Term(cell.reference, sums.reference * cell.Sum() / sums.Sum());
        statistic += Term(cell.observed, sums.observed * cell.Sum() / sums.Sum());
    }
    return statistic;
}

double StabilityIndex(const std::vector<Cell>& cells, const Cell& sums) {
    const double halves = 0.5 * static_cast<double>(cells.size());
    double index = 0.0;
    for (const Cell& cell : cells) {
        const double p = (cell.reference + 0.5) / (sums.reference + halves);
        const double q = (cell.observed + 0.5) / (sums.observed + halves);
        index += (q - p) * std::log(q / p);
    }
    return index;
}

// Whether both samples have cases, and not so many or so few that the product of the sums is none.
bool HaveCases(const Cell& sums) {
    const double product = sums.reference * sums.observed;
    return product > 0.0 && std::isfinite(product);
}

// The change of a cell's share times both sums. Shares are rounded, and then equal changes, such as
// both of a table with two cells, are not equal any more; products of counts are exact up to 2^53.
double ScaledChange(const Cell& cell, const Cell& sums) {
    return std::fabs(cell.reference * sums.observed - cell.observed * sums.reference);
}

}  // namespace

std::optional<MATwoSampleTest> MATestTwoSamples(const std::vector<double>& reference,
                                                const std::vector<double>& observed) {
    const std::optional<Cell> sums = SumsOf(reference, observed);
    if (!sums) return std::nullopt;
    std::vector<Cell> cells;
    Cell pool;
    MATwoSampleTest test;
    for (std::size_t c = 0; c < reference.size(); ++c) {
        const Cell cell{reference[c], observed[c]};
        if (cell.Sum() == 0.0) continue;
        if (IsSmall(cell, *sums)) {
            pool = pool + cell;
            ++test.pooledCells;
        } else {
            cells.push_back(cell);
        }
    }
    if (cells.empty()) return std::nullopt;
    if (test.pooledCells > 0) {
        if (IsSmall(pool, *sums)) {
            const auto smallest = std::min_element(cells.begin(), cells.end(), HasFewerCases);
            pool = pool + *smallest;
            cells.erase(smallest);
            ++test.pooledCells;
        }
        cells.push_back(pool);
    }

    test.cells = static_cast<int>(cells.size());
    test.degreesOfFreedom = static_cast<double>(cells.size() - 1);
    if (cells.size() == 1) return test;
    test.statistic = Statistic(cells, *sums);
    test.stabilityIndex = StabilityIndex(cells, *sums);
    if (!std::isfinite(test.statistic) || !std::isfinite(test.stabilityIndex)) return std::nullopt;
    test.pValue = 1.0 - MCDistFun::CdfChi(test.statistic, test.degreesOfFreedom);
    return test;
}

std::optional<double> MAShareMoved(const std::vector<double>& reference,
                                   const std::vector<double>& observed) {
    const std::optional<Cell> sums = SumsOf(reference, observed);
    if (!sums || !HaveCases(*sums)) return std::nullopt;
    double moved = 0.0;
    for (std::size_t c = 0; c < reference.size(); ++c) {
        moved += ScaledChange({reference[c], observed[c]}, *sums);
    }
    return std::min(1.0, moved / (sums->reference * sums->observed) / 2.0);
}

int MAMostChangedCell(const std::vector<double>& reference, const std::vector<double>& observed) {
    const std::optional<Cell> sums = SumsOf(reference, observed);
    if (!sums || !HaveCases(*sums)) return -1;
    int most = -1;
    double largest = 0.0;
    for (std::size_t c = 0; c < reference.size(); ++c) {
        const double change = ScaledChange({reference[c], observed[c]}, *sums);
        if (change > largest) {
            largest = change;
            most = static_cast<int>(c);
        }
    }
    return most;
}

std::vector<double> MAAdjustPValues(const std::vector<double>& pValues) {
    std::vector<std::size_t> order(pValues.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&pValues](std::size_t left, std::size_t right) {
        return pValues[left] < pValues[right];
    });
    std::vector<double> adjusted(pValues.size());
    double least = 0.0;
    for (std::size_t rank = 0; rank < order.size(); ++rank) {
        const auto factor = static_cast<double>(order.size() - rank);
        least = std::max(least, std::min(1.0, factor * pValues[order[rank]]));
        adjusted[order[rank]] = least;
    }
    return adjusted;
}

double MAExpectedPValue(std::size_t cells, std::size_t filledCells, double refCases,
                        double newCases) {
    if (filledCells < 2) return 1.0;
    const auto k = static_cast<double>(cells - 1);
    const auto filled = static_cast<double>(filledCells - 1);
    return 1.0 - MCDistFun::CdfF((1.0 + newCases / refCases) * filled / k, k, filled);
}
