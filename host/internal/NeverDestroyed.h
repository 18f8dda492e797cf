#pragma once

#include <array>
#include <cstddef>
#include <new>

namespace MCDetail {

/// The one object of this type that stands in for missing data. It is made at first use, without
/// memory from the heap, and never destroyed, so that it also serves the destructors of an
/// application's static objects.
template <class T>
const T& NeverDestroyed() {
    alignas(T) static std::array<std::byte, sizeof(T)> memory;
    static const T& object = *new (memory.data()) T;
    return object;
}

}  // namespace MCDetail
