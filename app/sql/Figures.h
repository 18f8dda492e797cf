#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "accredit/host/IMCEncoder.h"
#include "app/sql/Questions.h"

namespace app {

/// The numbers that tokens of missing values spell.
std::vector<double> NumbersAmong(const MADocuments::MissingTokens& missing);

/// Whether there is a NaN or an infinity among the numbers of a column.
bool HasBadNumbers(const ColumnAnswer& answer);

/// The numbers of a column: those that the engine has as numbers, and those that its texts spell.
class NumberFigures {
public:
    /// Puts what was grouped to what the engine has counted. `rows` is the number of rows of the
    /// table. The answer, which may lack the parts that are not asked for here, must outlive this.
    NumberFigures(const ColumnAnswer& answer, std::uint64_t rows,
                  const MADocuments::MissingTokens& missing);

    std::uint64_t Count() const { return mCount; }
    std::uint64_t Missing() const { return mMissing; }
    /// Values that are neither missing nor numbers, and the first of them in the order of bytes.
    std::uint64_t Unreadable() const { return mUnreadable; }
    const std::string& ExampleOfUnreadable() const { return mExample; }
    double Minimum() const { return mMinimum; }
    double Maximum() const { return mMaximum; }
    /// Whether the sum, or squares, may leave the range of doubles, so that they must be asked for
    /// with a scale.
    bool NeedsScale() const;
    /// A number near the mean, scaled as the sum is; 0 without any.
    double Center() const;
    /// Whether the engine's counts can be those of one table.
    bool IsConsistent() const;

    /// How many lie in each bin, one more than there are cut points.
    std::vector<double> Bins(const std::vector<double>& cutPoints) const;
    /// The mean and the sample deviation, by the deviations from the center; missing as in
    /// MADistStatsImp::GetMeanStdDev.
    double Mean() const;
    double Deviation() const;

private:
    double Scaled(double number) const;
    double Unscaled(double number) const;

    const ColumnAnswer& mAnswer;
    std::map<double, std::uint64_t> mSpelled;  // the numbers that texts spell
    std::uint64_t mCount;
    std::uint64_t mMissing = 0;
    std::uint64_t mUnreadable = 0;
    double mMinimum;
    double mMaximum;
    std::string mExample;
};

/// The categories of a column, each with its cases.
class CategoryFigures {
public:
    /// Puts equal ones together. Of number categories what spells no number is unreadable.
    CategoryFigures(const ColumnAnswer& answer, bool areNumbers,
                    const MADocuments::MissingTokens& missing);

    std::uint64_t Count() const { return mCount; }
    std::uint64_t Missing(std::uint64_t rows) const { return rows - mCount - mUnreadable; }
    std::uint64_t Unreadable() const { return mUnreadable; }
    const std::string& ExampleOfUnreadable() const { return mExample; }
    /// Whether there are numbers so large that several whole ones are one double.
    bool HasTooLargeNumbers() const { return mHasTooLargeNumbers; }
    /// What all categories take that `reference`, if it is not null, does not have; see
    /// MADocuments::CategoryBytes.
    std::size_t BytesWithout(const MCMTD_NAMESPACE::IMCEncoder* reference) const;
    /// Of a boolean column: gives the two the texts by which `reference` knows them.
    void SpellBooleansLike(const MCMTD_NAMESPACE::IMCEncoder& reference);

    /// An encoder with the categories in ascending order, and their cases by code.
    std::shared_ptr<MCMTD_NAMESPACE::IMCEncoder> Encoder() const;
    std::vector<double> Frequencies() const;

private:
    bool mAreNumbers;
    std::map<std::string, std::uint64_t> mTexts;
    std::map<double, std::uint64_t> mNumbers;
    std::uint64_t mCount = 0;
    std::uint64_t mUnreadable = 0;
    std::string mExample;
    bool mHasTooLargeNumbers = false;
};

}  // namespace app
