#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
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
    int FindCategory(std::string_view value);

    /// The same, fast, if the category is one of a few that were found last; otherwise -1.
    int FindRecent(std::string_view value) const {
        const Recent& recent = mRecent[RecentPlace(value)];
        return recent.value == value ? recent.code : -1;
    }

    /// The code of the category, which is added behind the others if it is new.
    int AddCategory(std::string_view value);

    /// The code of a new category behind the others that no value encodes to. It decodes to an
    /// empty string.
    int AddNamelessCategory();

    int GetValueType() const override { return ValueTypeString; }
    int GetNumCategories() const override { return Count(); }
    double EncodeString(const std::string& value) const override;
    /// Always -1.
    double EncodeNumber(double value) const override;
    /// The category, or an empty string for a code out of range.
    std::string DecodeString(int code) const override;
    /// Always the missing value.
    double DecodeNumber(int code) const override;

private:
    struct Recent {
        std::string_view value;
        int code = -1;
    };

    static constexpr std::size_t kRecent = 64;

    // Texts that differ at their ends, or in their length, mostly have different places.
    static std::size_t RecentPlace(std::string_view value) {
        if (value.empty()) return 0;
        const std::size_t front = static_cast<unsigned char>(value.front());
        const std::size_t back = static_cast<unsigned char>(value.back());
        return (value.size() + 5 * front + 11 * back) % kRecent;
    }

    int Count() const { return static_cast<int>(mCategories.size()); }

    // The texts are a stranger's, who could choose them so that a hash map becomes slow.
    std::map<std::string, int, std::less<>> mCodes;
    std::array<Recent, kRecent> mRecent;
    std::vector<const std::string*> mCategories;  // the keys by code, null for a nameless one
};

}  // namespace app
