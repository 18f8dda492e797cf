#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/diststats/VarSummary.h"
#include "app/data/CsvReader.h"
#include "app/data/DistinctCounter.h"

namespace app {

/// A cell, or a row, that is to be shown.
struct ShownCell {
    std::string file;             ///< Its name, fit to be shown.
    unsigned long long line = 0;  ///< On which its row begins, from 1; 0 for no line.
    std::string text = {};        ///< As it stands.
};

/// What a whole reading of a column finds, besides its kind. Missing values do not count.
struct ColumnFacts {
    std::uint64_t present = 0;
    /// Cells that are no number, the first of them, and whether all have its text.
    std::uint64_t noNumbers = 0;
    ShownCell firstNoNumber;
    bool allNoNumbersAreOneText = true;
    /// Of these, the numbers as spreadsheets show them, the first one, those with a decimal comma
    /// that is the only thing about them, and those of which that is not certain.
    std::uint64_t spreadsheetNumbers = 0;
    ShownCell firstSpreadsheetNumber;
    std::uint64_t decimalCommas = 0;
    std::uint64_t ambiguousCommas = 0;
    /// Those that are plain numbers with a point, where a comma is the decimal sign.
    std::uint64_t points = 0;
    std::uint64_t dates = 0;
    /// The different texts and numbers, and whether they are counted and not estimated; see
    /// DistinctCounter.
    std::uint64_t distinct = 0;
    bool distinctIsExact = true;
    /// The different numbers if all are whole and there are no more than 20; else 0.
    std::size_t wholeNumbers = 0;
    /// Whether points of the numbers may set thousands apart: each has three digits behind it and
    /// up to three before it, and no number without one has more than three. Looked at only where
    /// semicolons are between fields.
    bool mayHaveThousands = false;
    /// Of a file of one column, the cells with each of the searched delimiters.
    std::array<std::uint64_t, 4> delimiters{};
};

/// The delimiters that a column's cells are searched for, in the order of ColumnFacts::delimiters.
inline constexpr std::string_view kSearchedDelimiters = ",;\t|";

/// Finds the facts of one column, whose cells are handed over one by one.
class ColumnScan {
public:
    /// `distinctLimit` is that of a DistinctCounter; a column of which all cells so far are numbers
    /// has a lower one, so that the many that stay so cost little.
    explicit ColumnScan(std::size_t distinctLimit);

    /// Takes a cell of the reader's row that is not missing: `field` as it stands, `text` without
    /// the blanks around it, and the number that it is, or a NaN.
    void Take(std::string_view field, std::string_view text, double number,
              const CsvReader& reader);

    /// Takes so many equal values of a table that are not missing, which stand on no line.
    void TakeGroup(std::string_view text, std::optional<double> number, std::uint64_t count);

    /// The facts of all cells so far.
    ColumnFacts Facts() const;

    /// The cut points that a data pass computes for the numbers among the cells that Take took;
    /// see MAComputeCutPoints.
    std::vector<double> CutPoints() const;

private:
    void TakeNumber(double number);
    void TakePoint(std::string_view number);
    // The texts are from the reader's row, unless it is null.
    void TakeText(std::string_view text, std::uint64_t count, const CsvReader* reader);
    void TakeSpreadsheetNumber(std::string_view text, std::uint64_t count, const CsvReader* reader);

    std::size_t mDistinctLimit;
    ColumnFacts mFacts;
    DistinctCounter mDistinct;
    VarSummary mMoments;                // not finished
    std::vector<double> mWholeNumbers;  // ascending
    bool mHasFewWholeNumbers = true;
    bool mHasPoints = false;
    bool mHasNoOtherPoints = true;
};

}  // namespace app
