#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace app {

/// An archive is damaged, or not one that is read. The text says what is wrong and needs the place.
class ArchiveError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Undoes the compression of an archive that is handed over in pieces. Takes memory that is bounded
/// whatever the archive claims.
class Decompressor {
public:
    Decompressor() = default;
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    virtual ~Decompressor() = default;

    /// What the archive is called, such as "gzip".
    virtual const char* Format() const = 0;

    /// Writes up to `size` bytes to `out` and gives their number. Moves `archive` behind what was
    /// taken of it. If nothing is written and nothing is left of `archive`, more of it is needed.
    /// Throws ArchiveError and std::bad_alloc.
    virtual std::size_t Decompress(std::string_view& archive, char* out, std::size_t size) = 0;

    /// Whether the archive may end behind what was taken of it.
    virtual bool IsWhole() const = 0;
};

/// So many bytes tell an archive from other files.
inline constexpr std::size_t kArchiveMark = 4;

/// For a file that begins like this, of which fewer bytes than kArchiveMark are all of it. Null if
/// it is neither gzip nor zstd. Throws std::bad_alloc.
std::unique_ptr<Decompressor> DecompressorFor(std::string_view beginning);

}  // namespace app
