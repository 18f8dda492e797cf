#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct XXH3_state_s;

namespace app {

/// The hash of bytes that come piece by piece, whatever pieces they are: XXH3 with 128 bits. It is
/// no protection against bytes that are made to have the same one.
class ByteHash {
public:
    /// Of no bytes. Throws std::bad_alloc.
    ByteHash();

    void Add(const char* bytes, std::size_t size);

    /// The hash of the bytes so far, in 32 hexadecimal digits.
    std::string Text() const;

private:
    struct Free {
        void operator()(XXH3_state_s* state) const;
    };

    std::unique_ptr<XXH3_state_s, Free> mState;
};

}  // namespace app
