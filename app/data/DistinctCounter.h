#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace app {

/// Counts the different texts and numbers of a column in bounded memory: exactly up to a limit,
/// from there on by a sample of them, with a standard error of about the limit's inverse root. The
/// sample holds the texts whose hashes begin with so many zero bits that no more than the limit do
/// (M. Wegman's adaptive sampling; P. Flajolet, "On adaptive sampling", Computing 34, 1990). The
/// same texts give the same count in any order.
class DistinctCounter {
public:
    explicit DistinctCounter(std::size_t limit);

    /// The limit from here on. What has been estimated stays so.
    void SetLimit(std::size_t limit) { mLimit = limit; }

    /// False if the text or number was met before, or one that has the same hash.
    bool Add(std::string_view text);
    bool Add(double number);

    std::uint64_t Count() const { return std::uint64_t{mSample.size()} << mZeroBits; }

    /// Whether the count is no estimate.
    bool IsExact() const { return mZeroBits == 0; }

private:
    bool AddHash(std::uint64_t hash);
    void AddSampled(std::uint64_t hash);
    void ForgetMet(std::size_t size);
    bool IsSampled(std::uint64_t hash) const {
        return mZeroBits == 0 || hash >> (64U - mZeroBits) == 0;
    }

    std::size_t mLimit;
    unsigned int mZeroBits = 0;
    // Ascending, because a file can be made in which all hashes would fall into one place of a
    // table.
    std::vector<std::uint64_t> mSample;
    // The hash that was met last for each value of its last bits, so that most need not be searched
    // for. A place that none was met for has one that belongs elsewhere.
    std::vector<std::uint64_t> mMet;
};

}  // namespace app
