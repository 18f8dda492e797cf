#include "app/base/Fingerprint.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <new>

namespace app {

void Fingerprint::Free::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

Fingerprint::Fingerprint() : mState(XXH3_createState()) {
    if (!mState) throw std::bad_alloc();
    XXH3_128bits_reset(mState.get());
}

void Fingerprint::Add(const char* bytes, std::size_t size) {
    XXH3_128bits_update(mState.get(), bytes, size);
}

std::string Fingerprint::Text() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(mState.get());
    return fmt::format("xxh128:{:016x}{:016x}", hash.high64, hash.low64);
}

}  // namespace app
