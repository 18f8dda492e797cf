#pragma once

#include <cstddef>
#include <cstdint>

#include "accredit/diststats/internal/BlockFold.h"
#include "accredit/host/MCMV.h"

#if ACCREDIT_LANES > 2
#include <immintrin.h>
#endif

/// @file
/// The arithmetic of a block of records. A source that includes this says in ACCREDIT_LANES how
/// many doubles are in a register: 8 with AVX-512, 4 with AVX2 and fused multiply-add, or 2.
/// Everything here is each source's own.

// NOLINTBEGIN(misc-definitions-in-headers): on purpose, see above.
// NOLINTBEGIN(modernize-avoid-c-arrays): see BlockFold.h.
namespace MADetail {
namespace {

constexpr std::size_t kLanes = ACCREDIT_LANES;
constexpr bool kHasMultiplyAdd = kLanes > 2;
// Not asked for in the functions below, because without optimisation each would call an inline
// function that is not this source's own.
constexpr double kMissing = MCMV::Missing();

// Doubles that are reckoned with at once, one for each of kLanes variables. Every lane is rounded
// as a double by itself is. They lie in the memory of groups and blocks.
using Lanes = double __attribute__((vector_size(kLanes * sizeof(double)), may_alias));
// The answer to a comparison: -1 where it holds, else 0.
using LaneMask = std::int64_t __attribute__((vector_size(kLanes * sizeof(double)), may_alias));
using LaneCodes =
    std::int32_t __attribute__((vector_size(kLanes * sizeof(std::int32_t)), may_alias));

inline Lanes All(double value) { return value - Lanes{}; }

// MultiplyAdd and SubtractProduct give a * b + c and c - a * b, rounded once. CountBelow adds 1
// where the limit is below x. Any tells whether a mask holds anywhere.
#if ACCREDIT_LANES == 8
inline Lanes MultiplyAdd(Lanes a, Lanes b, Lanes c) { return _mm512_fmadd_pd(a, b, c); }
inline Lanes SubtractProduct(Lanes a, Lanes b, Lanes c) { return _mm512_fnmadd_pd(a, b, c); }
inline LaneMask CountBelow(LaneMask count, Lanes limit, Lanes x) {
    const auto before = reinterpret_cast<__m512i>(count);
    const __mmask8 below = _mm512_cmp_pd_mask(limit, x, _CMP_LT_OQ);
    return reinterpret_cast<LaneMask>(
        _mm512_mask_add_epi64(before, below, before, _mm512_set1_epi64(1)));
}
inline bool Any(LaneMask mask) {
    const auto bits = reinterpret_cast<__m512i>(mask);
    return _mm512_test_epi64_mask(bits, bits) != 0;
}
#else
#if ACCREDIT_LANES == 4
inline Lanes MultiplyAdd(Lanes a, Lanes b, Lanes c) { return _mm256_fmadd_pd(a, b, c); }
inline Lanes SubtractProduct(Lanes a, Lanes b, Lanes c) { return _mm256_fnmadd_pd(a, b, c); }
inline bool Any(LaneMask mask) {
    const auto bits = reinterpret_cast<__m256i>(mask);
    return _mm256_testz_si256(bits, bits) == 0;
}
#else
inline bool Any(LaneMask mask) { return (mask[0] | mask[1]) != 0; }
#endif
inline LaneMask CountBelow(LaneMask count, Lanes limit, Lanes x) { return count - (limit < x); }
#endif

// All bits of a mask's lane, set, are a NaN.
inline Lanes NaNWhere(LaneMask mask, Lanes value) {
    return reinterpret_cast<Lanes>(reinterpret_cast<LaneMask>(value) | mask);
}

// NOLINTNEXTLINE(misc-redundant-expression)
inline LaneMask IsNaN(Lanes value) { return value != value; }

inline Lanes& LanesAt(double* values) { return *reinterpret_cast<Lanes*>(values); }

inline LaneMask& CountsAt(std::int64_t* counts) { return *reinterpret_cast<LaneMask*>(counts); }

inline Lanes ValuesAt(const Block& block, std::size_t record, std::size_t column) {
    return *reinterpret_cast<const Lanes*>(block.values + record * block.stride + column);
}

// ---- Moments

// Ways to divide by the number of cases n. All round as a division does.
enum class Quotients {
    // No variable misses a value, so that n is the number of records. What depends on n alone is
    // known, and the rest is Corrected.
    OfTheRecords,
    // By the reciprocal of n and two fused multiply-adds; see Quotient.
    Corrected,
    Divided,
};

constexpr double kMostCorrected = 0x1p50;
constexpr double kTinySquare = 0x1p-1000;

// Of one record: the number of cases, its reciprocal, and (n - 1) / n.
struct Cases {
    Lanes n, reciprocal, share;
};

// x / n for a whole number n, where `reciprocal` is 1 / n, rounded. If not divided, the product of
// the two is corrected by its remainder.
//
// Let x be positive; the signs of all that follows change with its own. Let u = 2^-53, q = x / n,
// r = (1 + d1) / n, and q0 = x r (1 + d2), where neither d1 nor d2 is more than u. Then q0 is off q
// by at most q (2 u + u^2). The remainder e = x - n q0 is a whole multiple of the last place of q0,
// as x is because q0 is not above it, and as n q0 is because n is whole. It is fewer than 2^53 of
// them while n is at most 2^50, so the first fused multiply-add gives it exactly. q0 + e r is q +
// (q - q0) d1, off q by at most q (2 u^2 + u^3), and the second one rounds that once. It gives q,
// rounded, unless a number m halfway between two doubles lies between the two or is one of them.
// None does. Let q be in [1, 2); then no m below 1 or above 2 is near enough, and one in between is
// a whole multiple of u. So is x = n q, because it is not below 1, and so is n (q - m). That is not
// 0: m has 54 binary digits, n m has no fewer, and x has 53. So m is off q by at least u / n, which
// is more than the 4 u^2 + 2 u^3 above while n is at most 2^50. All other q are such a one times a
// power of two, as long as nothing on the way is below the normal numbers, and nothing is if x is
// at least 2^-500. Nothing is larger than x. Where x is 0 the sign of the quotient may be another,
// which does not show in a sum with a mean that is never -0. Where x is infinite or a NaN, e is a
// NaN.
template <Quotients how>
inline Lanes Quotient(Lanes x, Lanes n, [[maybe_unused]] Lanes reciprocal) {
#if ACCREDIT_LANES > 2
    if constexpr (how != Quotients::Divided) {
        const Lanes near = x * reciprocal;
        return MultiplyAdd(SubtractProduct(near, n, x), reciprocal, near);
    }
#endif
    return x / n;
}

// The cases of each record of a block in which nothing is missing.
struct CasesOfRecords {
    explicit CasesOfRecords(const Block& block) {
        Lanes first = {};
        for (std::size_t lane = 0; lane < kLanes; ++lane) first[lane] = static_cast<double>(lane);
        for (std::size_t record = 0; record < block.records; record += kLanes) {
            const Lanes before = first + (block.recordsBefore + static_cast<double>(record));
            const Lanes count = before + 1.0;
            LanesAt(n + record) = count;
            const Lanes inverse = 1.0 / count;
            LanesAt(reciprocal + record) = inverse;
            LanesAt(share + record) = Quotient<Quotients::OfTheRecords>(before, count, inverse);
        }
    }

    alignas(64) double n[kBlockRecords];
    alignas(64) double reciprocal[kBlockRecords];
    alignas(64) double share[kBlockRecords];
};

// The moments of kLanes variables, in registers.
struct Slice {
    Lanes count, min, max, mean, squares;
    Lanes leastSquare;  // of the differences from the mean
};

template <Quotients how>
inline void FoldRecord(Slice& slice, Lanes x, const Cases& records) {
    const Lanes d = x - slice.mean;
    const Lanes square = d * d;
    slice.leastSquare = square < slice.leastSquare ? square : slice.leastSquare;
    if constexpr (how == Quotients::OfTheRecords) {
        slice.mean += Quotient<how>(d, records.n, records.reciprocal);
        slice.squares += records.share * square;
    } else {
        const LaneMask absent = x == All(kMissing);
        const Lanes n = slice.count + 1.0;
        const Lanes reciprocal = how == Quotients::Corrected ? 1.0 / n : Lanes{};  // else not used
        // Adding these 0 changes nothing: neither the mean nor the squares are ever -0.
        slice.mean += Quotient<how>(absent ? Lanes{} : d, n, reciprocal);
        slice.squares += Quotient<how>(slice.count, n, reciprocal) * (absent ? Lanes{} : square);
        slice.count = absent ? slice.count : n;
        x = NaNWhere(absent, x);
    }
    slice.min = x < slice.min ? x : slice.min;
    slice.max = x > slice.max ? x : slice.max;
}

// Where the quotients cannot be relied on, see Quotient. A variable whose values are all the same
// has differences of 0 only, behind the first value, which is divided by 1.
inline LaneMask IsInexact(const Slice& slice) {
    return ((slice.leastSquare < All(kTinySquare)) & (slice.min != slice.max)) | IsNaN(slice.mean);
}

enum class Outcome { Folded, MissesValues, IsInexact };

// Folds the block into the moments of kGroups groups that stand side by side. Nothing has changed
// if this way cannot do that.
template <Quotients how, std::size_t kGroups>
inline Outcome Fold(const Block& block, std::size_t column, Moments* groups,
                    const CasesOfRecords& cases) {
    constexpr std::size_t kSlices = kGroups * kGroup / kLanes;
    Slice slices[kSlices];
    for (std::size_t i = 0; i < kSlices; ++i) {
        Moments& group = groups[i * kLanes / kGroup];
        const std::size_t lane = i * kLanes % kGroup;
        slices[i] = Slice{LanesAt(group.count.lanes + lane),   LanesAt(group.min.lanes + lane),
                          LanesAt(group.max.lanes + lane),     LanesAt(group.mean.lanes + lane),
                          LanesAt(group.squares.lanes + lane), All(__builtin_inf())};
    }
    for (std::size_t record = 0; record < block.records; ++record) {
        Cases records = {};
        if constexpr (how == Quotients::OfTheRecords) {
            records = Cases{All(cases.n[record]), All(cases.reciprocal[record]),
                            All(cases.share[record])};
        }
        for (std::size_t i = 0; i < kSlices; ++i) {
            FoldRecord<how>(slices[i], ValuesAt(block, record, column + i * kLanes), records);
        }
    }
    LaneMask missesValues = {};
    LaneMask isInexact = {};
    for (Slice& slice : slices) {
        // The missing value is the least of all but -infinity.
        missesValues |= ~(slice.min > All(kMissing));
        isInexact |= IsInexact(slice);
        if (how == Quotients::OfTheRecords) slice.count += static_cast<double>(block.records);
    }
    if (how == Quotients::OfTheRecords && Any(missesValues)) return Outcome::MissesValues;
    if (how != Quotients::Divided && kHasMultiplyAdd && Any(isInexact)) return Outcome::IsInexact;
    for (std::size_t i = 0; i < kSlices; ++i) {
        Moments& group = groups[i * kLanes / kGroup];
        const std::size_t lane = i * kLanes % kGroup;
        LanesAt(group.count.lanes + lane) = slices[i].count;
        LanesAt(group.min.lanes + lane) = slices[i].min;
        LanesAt(group.max.lanes + lane) = slices[i].max;
        LanesAt(group.mean.lanes + lane) = slices[i].mean;
        LanesAt(group.squares.lanes + lane) = slices[i].squares;
    }
    return Outcome::Folded;
}

template <std::size_t kGroups>
inline void FoldGroups(const Block& block, std::size_t column, Moments* groups,
                       const CasesOfRecords& cases) {
    LaneMask missedValues = {};
    LaneMask isNaN = {};
    for (std::size_t i = 0; i < kGroups * kGroup; i += kLanes) {
        Moments& group = groups[i / kGroup];
        missedValues |= LanesAt(group.count.lanes + i % kGroup) != All(block.recordsBefore);
        isNaN |= IsNaN(LanesAt(group.mean.lanes + i % kGroup));
    }
    // A mean that is a NaN stays one, so that nothing else need be tried.
    const bool mayBeCorrected = block.recordsBefore < kMostCorrected - kBlockRecords && !Any(isNaN);
    Outcome outcome = Outcome::MissesValues;
    if (mayBeCorrected && !Any(missedValues)) {
        outcome = Fold<Quotients::OfTheRecords, kGroups>(block, column, groups, cases);
    }
    if (kHasMultiplyAdd && mayBeCorrected && outcome == Outcome::MissesValues) {
        outcome = Fold<Quotients::Corrected, kGroups>(block, column, groups, cases);
    }
    if (outcome != Outcome::Folded) {
        Fold<Quotients::Divided, kGroups>(block, column, groups, cases);
    }
}

// A difference must wait for the mean of the record before, so as many groups as the registers hold
// are folded side by side.
void FoldMoments(const Block& block, std::size_t column, Moments* groups, std::size_t size) {
    constexpr std::size_t kGroupsAtOnce = kLanes == 8 ? 2 : 1;
    const CasesOfRecords cases(block);
    std::size_t i = 0;
    for (; i + kGroupsAtOnce <= size; i += kGroupsAtOnce) {
        FoldGroups<kGroupsAtOnce>(block, column + i * kGroup, groups + i, cases);
    }
    for (; i < size; ++i) FoldGroups<1>(block, column + i * kGroup, groups + i, cases);
}

// ---- Bins

void CountAbove(const Block& block, std::size_t column, CutPointCounts* counts) {
    for (std::size_t lane = 0; lane < kGroup; lane += kLanes) {
        Lanes cutPoints[kCutPointsAtOnce];
        LaneMask above[kCutPointsAtOnce];
        for (std::size_t i = 0; i < kCutPointsAtOnce; ++i) {
            cutPoints[i] = LanesAt(counts->cutPoints[i].lanes + lane);
            above[i] = CountsAt(counts->above[i].lanes + lane);
        }
        LaneMask missing = CountsAt(counts->missing.lanes + lane);
        for (std::size_t record = 0; record < block.records; ++record) {
            const Lanes x = ValuesAt(block, record, column + lane);
            missing -= x == All(kMissing);
            for (std::size_t i = 0; i < kCutPointsAtOnce; ++i) {
                above[i] = CountBelow(above[i], cutPoints[i], x);
            }
        }
        CountsAt(counts->missing.lanes + lane) = missing;
        for (std::size_t i = 0; i < kCutPointsAtOnce; ++i) {
            CountsAt(counts->above[i].lanes + lane) = above[i];
        }
    }
}

// ---- Categories

// Where a value is counted: 0 if it is no category code, or 1 more than the code, which is the
// value truncated toward zero. All codes that are not few are counted as one.
inline LaneCodes CodeIndex(Lanes value) {
    const Lanes none = All(-1.0);
    const Lanes beyond = All(kFewCodes);
    const Lanes notBelow = value > none ? value : none;  // Also of NaN and of the missing value.
    return __builtin_convertvector(notBelow < beyond ? notBelow : beyond, LaneCodes) + 1;
}

// Equal codes of neighbouring records are counted in different copies, so that none waits until the
// last one is stored.
void CountCodes(const Block& block, std::size_t column, CodeCounts* counts, std::size_t size) {
    for (std::size_t record = 0; record < block.records; ++record) {
        alignas(64) std::int32_t indices[kGroup] = {};
        for (std::size_t lane = 0; lane < kGroup; lane += kLanes) {
            *reinterpret_cast<LaneCodes*>(indices + lane) =
                CodeIndex(ValuesAt(block, record, column + lane));
        }
        for (std::size_t lane = 0; lane < size; ++lane) {
            ++counts[lane].counts[indices[lane]][record % kCopies];
        }
    }
}

constexpr BlockFold kFoldHere = {kLanes, FoldMoments, CountAbove, CountCodes};

}  // namespace
}  // namespace MADetail
// NOLINTEND(modernize-avoid-c-arrays)
// NOLINTEND(misc-definitions-in-headers)
