#pragma once

#include <cstddef>
#include <cstdint>

/// @file
/// What is done to a block of records at once, in the widest registers that the processor has.
///
/// The functions are compiled once for each kind of registers, from BlockArithmetic.h. Their data
/// are plain memory for that reason: no function of the standard library, compiled for a newer
/// processor, may be linked into what runs on an older one.

namespace MADetail {

/// Continuous variables are kept in groups of so many, and so are categorical ones. The last group
/// is filled up with variables that nobody asks for, whose values are 0.
constexpr std::size_t kGroup = 8;

/// A block has at most so many records.
constexpr std::size_t kBlockRecords = 64;

/// The cut points of a group are counted so many at a time.
constexpr std::size_t kCutPointsAtOnce = 5;

/// Category codes below this one are counted in several copies of the counters.
constexpr std::size_t kFewCodes = 62;
constexpr std::size_t kCopies = 4;

// Arrays, because an std::array has functions; see above.
// NOLINTBEGIN(modernize-avoid-c-arrays)

/// A number of each variable of a group, as they stand side by side in one or more registers.
struct alignas(kGroup * sizeof(double)) GroupOfDoubles {
    double lanes[kGroup];
};
struct alignas(kGroup * sizeof(double)) GroupOfCounts {
    std::int64_t lanes[kGroup];
};

/// A block of records: of each record a row of `stride` values, a multiple of kGroup, aligned as a
/// group is. Values that do not exist are MCMV::Missing().
struct Block {
    const double* values = nullptr;
    std::size_t stride = 0;
    std::size_t records = 0;     ///< 1 to kBlockRecords.
    double recordsBefore = 0.0;  ///< Records of the pass before this block.
};

/// The running moments of a group of variables. A variable that has no value yet has the missing
/// value for its minimum and maximum.
struct Moments {
    GroupOfDoubles count, min, max, mean, squares;
};

/// Some cut points of a group of variables, and how many values lie above each. Where a variable
/// has fewer there is NaN, above which nothing lies. The missing value lies above -infinity only.
struct CutPointCounts {
    GroupOfDoubles cutPoints[kCutPointsAtOnce];
    GroupOfCounts above[kCutPointsAtOnce];
    GroupOfCounts missing;
};

/// The categories of one variable: of each code, increased by 1, the copies of its counter. First
/// the values that are no category, last those whose code is kFewCodes or more.
struct CodeCounts {
    static constexpr std::size_t kBeyond = kFewCodes + 1;

    std::uint64_t counts[kBeyond + 1][kCopies];
};

/// The functions for one kind of registers. Each takes the block from the column `column` on, a
/// multiple of kGroup.
struct BlockFold {
    std::size_t lanes;  ///< So many doubles are in a register.

    /// Folds the block into the moments of one group after the other.
    void (*foldMoments)(const Block& block, std::size_t column, Moments* groups, std::size_t size);
    /// Counts the values of one group that are above its cut points, and those that are missing.
    void (*countAbove)(const Block& block, std::size_t column, CutPointCounts* counts);
    /// Counts the categories of `size` variables, kGroup or fewer.
    void (*countCodes)(const Block& block, std::size_t column, CodeCounts* counts,
                       std::size_t size);
};

// NOLINTEND(modernize-avoid-c-arrays)

/// Of two doubles in a register; runs everywhere.
extern const BlockFold kFoldTwo;
#ifdef __x86_64__
/// Of four, for processors with AVX2 and fused multiply-add.
extern const BlockFold kFoldFour;
/// Of eight, for processors with AVX-512.
extern const BlockFold kFoldEight;
#endif

/// The widest one that this processor can run, of at most so many lanes.
const BlockFold& WidestBlockFold(std::size_t lanes);

/// The one that is in use: the widest of all. All give the same bits.
const BlockFold& BlockFoldInUse();

/// Has another one used by whatever begins from now on, in all threads; for tests.
void UseBlockFold(const BlockFold& fold);

}  // namespace MADetail
