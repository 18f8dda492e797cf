#include "app/base/ByteHash.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <new>

namespace app {

void ByteHash::Free::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

ByteHash::ByteHash() : mState(XXH3_createState()) {
    if (!mState) throw std::bad_alloc();
    XXH3_128bits_reset(mState.get());
}

void ByteHash::Add(const char* bytes, std::size_t size) {
    XXH3_128bits_update(mState.get(), bytes, size);
}

std::string ByteHash::Text() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(mState.get());
    return fmt::format("{:016x}{:016x}", hash.high64, hash.low64);
}

}  // namespace app
