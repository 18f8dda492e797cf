#include "accredit/host/MCStringEncoder.h"

#include <cstddef>

#include "accredit/host/MCMV.h"

namespace MCMTD_NAMESPACE {

MCStringEncoder::MCStringEncoder(const std::vector<std::string>& categories) {
    for (const std::string& category : categories) AddCategory(category);
}

MCStringEncoder::MCStringEncoder(const MCStringEncoder& other) = default;
MCStringEncoder::MCStringEncoder(MCStringEncoder&& other) noexcept {
    mCategories.swap(other.mCategories);
    mCodes.swap(other.mCodes);
}

MCStringEncoder::~MCStringEncoder() = default;

MCStringEncoder& MCStringEncoder::operator=(MCStringEncoder other) noexcept {
    mCategories.swap(other.mCategories);
    mCodes.swap(other.mCodes);
    return *this;
}

int MCStringEncoder::AddCategory(const std::string& value) {
    const auto found = mCodes.find(value);
    if (found != mCodes.end()) return found->second;
    const int code = static_cast<int>(mCategories.size());
    mCategories.push_back(value);
    try {
        mCodes.emplace(value, code);
    } catch (...) {
        mCategories.pop_back();
        throw;
    }
    return code;
}

int MCStringEncoder::GetValueType() const { return ValueTypeString; }

int MCStringEncoder::GetNumCategories() const { return static_cast<int>(mCategories.size()); }

double MCStringEncoder::EncodeString(const std::string& value) const {
    const auto found = mCodes.find(value);
    return found == mCodes.end() ? -1.0 : found->second;
}

double MCStringEncoder::EncodeNumber(double /*value*/) const { return -1.0; }

std::string MCStringEncoder::DecodeString(int code) const {
    const auto index = static_cast<std::size_t>(code);
    return code >= 0 && index < mCategories.size() ? mCategories[index] : std::string();
}

double MCStringEncoder::DecodeNumber(int /*code*/) const { return MCMV::Missing(); }

}  // namespace MCMTD_NAMESPACE
