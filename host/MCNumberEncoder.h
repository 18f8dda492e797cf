#pragma once

#include <map>
#include <string>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/IMCEncoder.h"

/// @file
/// Codes for categories that are numbers.

namespace MCMTD_NAMESPACE {

/// A ready-made encoder of number categories, compared by value: 0.0 and -0.0 are one category, and
/// so are all NaN.
class ACCREDIT_EXPORT MCNumberEncoder : public IMCEncoder {
public:
    /// No categories; AddCategory adds them.
    MCNumberEncoder() = default;

    /// The categories in code order. A number given twice keeps its first code.
    explicit MCNumberEncoder(const std::vector<double>& categories);

    MCNumberEncoder(const MCNumberEncoder& other);      ///< A whole copy.
    MCNumberEncoder(MCNumberEncoder&& other) noexcept;  ///< Takes over; `other` is left empty.
    /// The same. If memory runs out, the encoder stays as it was.
    MCNumberEncoder& operator=(MCNumberEncoder other) noexcept;
    ~MCNumberEncoder() override;

    /// The code of the category, which is added behind the others if it is new.
    int AddCategory(double value);

    int GetValueType() const override;
    int GetNumCategories() const override;
    /// Always -1: numbers are not compared by their text.
    double EncodeString(const std::string& value) const override;
    double EncodeNumber(double value) const override;
    /// Always an empty string.
    std::string DecodeString(int code) const override;
    /// The category, or the missing value for a code out of range.
    double DecodeNumber(int code) const override;

private:
    int Find(double value) const;

    std::vector<double> mCategories;
    std::map<double, int> mCodes;
    int mNaNCode = -1;
};

}  // namespace MCMTD_NAMESPACE
