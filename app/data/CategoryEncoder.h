#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "accredit/host/IMCEncoder.h"

namespace app {

/// An encoder of string categories for a file that is being read: a category is found by a view of
/// its text, without making a string of it.
class CategoryEncoder : public MCMTD_NAMESPACE::IMCEncoder {
public:
    CategoryEncoder() = default;
    CategoryEncoder(const CategoryEncoder&) = delete;
    CategoryEncoder& operator=(const CategoryEncoder&) = delete;

    /// The code of the category, -1 if there is no such category.
    int FindCategory(std::string_view value) const;

    /// The code of the category, which is added behind the others if it is new.
    int AddCategory(std::string_view value);

    /// The code of a new category behind the others that no value encodes to. It decodes to an
    /// empty string.
    int AddNamelessCategory();

    int GetValueType() const override { return ValueTypeString; }
    int GetNumCategories() const override { return static_cast<int>(mCategories.size()); }
    double EncodeString(const std::string& value) const override;
    /// Always -1.
    double EncodeNumber(double value) const override;
    /// The category, or an empty string for a code out of range.
    std::string DecodeString(int code) const override;
    /// Always the missing value.
    double DecodeNumber(int code) const override;

private:
    // Each on its own, so that the keys can be views of them.
    std::vector<std::unique_ptr<const std::string>> mCategories;
    std::unordered_map<std::string_view, int> mCodes;
};

}  // namespace app
