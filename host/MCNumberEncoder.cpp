#include "accredit/host/MCNumberEncoder.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "accredit/host/MCMV.h"

namespace MCMTD_NAMESPACE {

MCNumberEncoder::MCNumberEncoder(const std::vector<double>& categories) {
    for (const double category : categories) AddCategory(category);
}

MCNumberEncoder::MCNumberEncoder(const MCNumberEncoder& other) = default;
MCNumberEncoder::MCNumberEncoder(MCNumberEncoder&& other) noexcept {
    mCategories.swap(other.mCategories);
    mCodes.swap(other.mCodes);
    std::swap(mNaNCode, other.mNaNCode);
}
MCNumberEncoder::~MCNumberEncoder() = default;

MCNumberEncoder& MCNumberEncoder::operator=(MCNumberEncoder other) noexcept {
    mCategories.swap(other.mCategories);
    mCodes.swap(other.mCodes);
    std::swap(mNaNCode, other.mNaNCode);
    return *this;
}

int MCNumberEncoder::AddCategory(double value) {
    const int known = Find(value);
    if (known >= 0) return known;
    const int code = static_cast<int>(mCategories.size());
    mCategories.push_back(value);
    if (std::isnan(value)) {
        mNaNCode = code;
        return code;
    }
    try {
        mCodes.emplace(value, code);
    } catch (...) {
        mCategories.pop_back();
        throw;
    }
    return code;
}

int MCNumberEncoder::GetValueType() const { return ValueTypeNumber; }

int MCNumberEncoder::GetNumCategories() const { return static_cast<int>(mCategories.size()); }

double MCNumberEncoder::EncodeString(const std::string& /*value*/) const { return -1.0; }

double MCNumberEncoder::EncodeNumber(double value) const { return Find(value); }

// A NaN is kept apart: it is neither below nor above anything, not even itself.
int MCNumberEncoder::Find(double value) const {
    if (std::isnan(value)) return mNaNCode;
    const auto found = mCodes.find(value);
    return found == mCodes.end() ? -1 : found->second;
}

std::string MCNumberEncoder::DecodeString(int /*code*/) const { return {}; }

double MCNumberEncoder::DecodeNumber(int code) const {
    const auto index = static_cast<std::size_t>(code);
    return code >= 0 && index < mCategories.size() ? mCategories[index] : MCMV::Missing();
}

}  // namespace MCMTD_NAMESPACE
