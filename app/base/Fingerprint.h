#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct XXH3_state_s;

namespace app {

/// Tells contents apart by a hash of all their bytes: the same bytes, in whatever pieces they come,
/// give the same text. It finds what is given twice by accident, and is no protection against
/// contents that are made to have the same one.
class Fingerprint {
public:
    /// Of no bytes. Throws std::bad_alloc.
    Fingerprint();

    void Add(const char* bytes, std::size_t size);

    /// The hash, XXH3 with 128 bits: "xxh128:" and 32 hexadecimal digits.
    std::string Text() const;

private:
    struct Free {
        void operator()(XXH3_state_s* state) const;
    };

    std::unique_ptr<XXH3_state_s, Free> mState;
};

}  // namespace app
