#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

// Replaces the global allocation functions, so that they fail on command. For one source of a test
// program.

namespace fakes {

/// So many allocations succeed before all others fail; negative: none fails.
inline long gAllocationsUntilFailure = -1;
inline long gLiveAllocations = 0;

inline void* Allocate(std::size_t size) {
    if (gAllocationsUntilFailure == 0) throw std::bad_alloc();
    if (gAllocationsUntilFailure > 0) --gAllocationsUntilFailure;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (!memory) throw std::bad_alloc();
    ++gLiveAllocations;
    return memory;
}

inline void Release(void* memory) noexcept {
    if (memory) --gLiveAllocations;
    std::free(memory);
}

}  // namespace fakes

void* operator new(std::size_t size) { return fakes::Allocate(size); }
void* operator new[](std::size_t size) { return fakes::Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    try {
        return fakes::Allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* memory) noexcept { fakes::Release(memory); }
void operator delete[](void* memory) noexcept { fakes::Release(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { fakes::Release(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { fakes::Release(memory); }
