#include "app/data/CategoryEncoder.h"

#include "accredit/host/MCMV.h"

namespace app {

int CategoryEncoder::FindCategory(std::string_view value) {
    const auto found = mCodes.find(value);
    if (found == mCodes.end()) return -1;
    mRecent[RecentPlace(value)] = {found->first, found->second};
    return found->second;
}

int CategoryEncoder::AddCategory(std::string_view value) {
    const auto place = mCodes.lower_bound(value);
    if (place != mCodes.end() && place->first == value) return place->second;
    const auto added = mCodes.emplace_hint(place, value, Count());
    mCategories.push_back(&added->first);
    return added->second;
}

int CategoryEncoder::AddNamelessCategory() {
    mCategories.push_back(nullptr);
    return Count() - 1;
}

double CategoryEncoder::EncodeString(const std::string& value) const {
    const auto found = mCodes.find(value);
    return found == mCodes.end() ? -1.0 : found->second;
}

double CategoryEncoder::EncodeNumber(double /*value*/) const { return -1.0; }

std::string CategoryEncoder::DecodeString(int code) const {
    if (code < 0 || code >= Count()) return {};
    const std::string* const category = mCategories[static_cast<std::size_t>(code)];
    return category ? *category : std::string();
}

double CategoryEncoder::DecodeNumber(int /*code*/) const { return MCMV::Missing(); }

}  // namespace app
