#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "Fuzzing.h"
#include "accredit/host/MCQueryCancel.h"

namespace fuzz {

/// A file without a name on any disk. It can be opened by its path as long as this lives.
class MemoryFile {
public:
    explicit MemoryFile(std::string_view content) : mDescriptor(memfd_create("fuzz", 0)) {
        Require(write(mDescriptor, content.data(), content.size()) ==
                    static_cast<ssize_t>(content.size()),
                "memory takes the file");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(mDescriptor); }

    std::string Path() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

private:
    int mDescriptor;
};

class NeverCancel : public MCQueryCancel {
public:
    bool QueryCancel() override { return false; }
};

}  // namespace fuzz
