#include "app/data/CategoryEncoder.h"

#include <cstddef>

#include "accredit/host/MCMV.h"

namespace app {

int CategoryEncoder::FindCategory(std::string_view value) const {
    const auto found = mCodes.find(value);
    return found == mCodes.end() ? -1 : found->second;
}

int CategoryEncoder::AddCategory(std::string_view value) {
    const int known = FindCategory(value);
    if (known >= 0) return known;
    const int code = GetNumCategories();
    mCategories.push_back(std::make_unique<const std::string>(value));
    mCodes.emplace(*mCategories.back(), code);
    return code;
}

int CategoryEncoder::AddNamelessCategory() {
    mCategories.push_back(std::make_unique<const std::string>());
    return GetNumCategories() - 1;
}

double CategoryEncoder::EncodeString(const std::string& value) const { return FindCategory(value); }

double CategoryEncoder::EncodeNumber(double /*value*/) const { return -1.0; }

std::string CategoryEncoder::DecodeString(int code) const {
    if (code < 0 || code >= GetNumCategories()) return {};
    return *mCategories[static_cast<std::size_t>(code)];
}

double CategoryEncoder::DecodeNumber(int /*code*/) const { return MCMV::Missing(); }

}  // namespace app
