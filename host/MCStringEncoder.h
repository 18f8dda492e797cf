#pragma once

#include <map>
#include <string>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/IMCEncoder.h"

/// @file
/// Codes for categories that are texts.

namespace MCMTD_NAMESPACE {

/// A ready-made encoder of string categories, compared byte by byte.
class ACCREDIT_EXPORT MCStringEncoder : public IMCEncoder {
public:
    /// No categories; AddCategory adds them.
    MCStringEncoder() = default;

    /// The categories in code order. A string given twice keeps its first code.
    explicit MCStringEncoder(const std::vector<std::string>& categories);

    MCStringEncoder(const MCStringEncoder& other);      ///< A whole copy.
    MCStringEncoder(MCStringEncoder&& other) noexcept;  ///< Takes over; `other` is left empty.
    /// The same. If memory runs out, the encoder stays as it was.
    MCStringEncoder& operator=(MCStringEncoder other) noexcept;
    ~MCStringEncoder() override;

    /// The code of the category, which is added behind the others if it is new.
    int AddCategory(const std::string& value);

    int GetValueType() const override;
    int GetNumCategories() const override;
    double EncodeString(const std::string& value) const override;
    /// Always -1.
    double EncodeNumber(double value) const override;
    /// The category, or an empty string for a code out of range.
    std::string DecodeString(int code) const override;
    /// Always the missing value.
    double DecodeNumber(int code) const override;

private:
    std::vector<std::string> mCategories;
    std::map<std::string, int> mCodes;
};

}  // namespace MCMTD_NAMESPACE
