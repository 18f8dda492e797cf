#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace app {

/// A private copy of what can be read only once, in a file without a name: nobody else can open it,
/// and nothing is left of it, however the program ends. It lies in the folder that the environment
/// variable TMPDIR names, or in /var/tmp, which is meant for large files, or else in /tmp.
class TemporaryCopy {
public:
    /// An empty copy of the file that messages call `name`. Throws OutputError.
    explicit TemporaryCopy(const std::string& name);
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    ~TemporaryCopy();

    /// Adds `size` bytes at the end. Throws OutputError.
    void Append(const char* bytes, std::size_t size);

    std::uint64_t Size() const { return mSize; }

    /// The descriptor of the file, which has all that was added.
    int Descriptor() const { return mDescriptor; }

private:
    bool OpenIn(const std::string& folder);
    [[noreturn]] void Fail(int error) const;

    std::string mName;
    std::string mFolder;
    int mDescriptor = -1;
    std::uint64_t mSize = 0;
};

}  // namespace app
