// Archives, and files that only begin so, read in pieces of any size: all readings of a file, from
// memory and through a pipe, rewound and put back, give the same bytes or the same complaint, in
// bounded memory. Whole archives hold what their libraries find in them at one go, and others are
// refused. The first bytes of the input tell the way, what is behind the first slash is the file.

#include <sanitizer/allocator_interface.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>

#include "Fuzzing.h"
#include "MemoryFile.h"
#include "app/base/Decompressor.h"
#include "app/base/Errors.h"
#include "app/base/InputFile.h"

using fuzz::Require;

namespace {

constexpr std::size_t kMiB = 1'048'576;
// More is not looked at, except where it must be refused.
constexpr std::size_t kMostKept = 16 * kMiB;
// The largest window of an archive, and what else is needed besides.
constexpr std::int64_t kMostMemory = 130 * kMiB;
constexpr std::size_t kAlwaysBearable = 1024 * kMiB;
constexpr std::size_t kBearableFactor = 250;

std::atomic<bool> isCounting = false;
std::atomic<std::int64_t> inUse = 0;
std::atomic<std::int64_t> mostInUse = 0;

void CountMemory(const volatile void*, std::size_t size) {
    if (isCounting)
        mostInUse = std::max<std::int64_t>(mostInUse, inUse += static_cast<std::int64_t>(size));
}

void CountFreed(const volatile void* memory) {
    if (!isCounting || !memory) return;
    inUse -=
        static_cast<std::int64_t>(__sanitizer_get_allocated_size(const_cast<const void*>(memory)));
}

// Counts the memory that is taken while it lives.
class Counting {
public:
    Counting() { isCounting = true; }
    Counting(const Counting&) = delete;
    Counting& operator=(const Counting&) = delete;
    ~Counting() { isCounting = false; }
};

// An input without name that can be read only once, and holds less than pipes do.
class Pipe {
public:
    explicit Pipe(std::string_view content) {
        Require(pipe(mEnds) == 0, "there is a pipe");
        Require(
            write(mEnds[1], content.data(), content.size()) == static_cast<ssize_t>(content.size()),
            "the pipe takes the file");
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        EndInput();
        close(mEnds[0]);
    }

    static constexpr std::size_t kMostHeld = 65'536;

    // Whoever opens it waits for its end until this is called.
    std::string Path() const { return "/proc/self/fd/" + std::to_string(mEnds[0]); }

    void EndInput() {
        if (mEnds[1] >= 0) close(mEnds[1]);
        mEnds[1] = -1;
    }

private:
    int mEnds[2] = {-1, -1};
};

// The sizes of the pieces in which something is handed over. They grow, so that there are not too
// many of them.
class PieceSizes {
public:
    explicit PieceSizes(std::string_view letters) : mLetters(letters) {}

    std::size_t Next() {
        constexpr std::size_t kLargest = 17;
        const std::size_t rounds = mTaken / 64;
        const std::size_t letter =
            mLetters.empty() ? kLargest
                             : static_cast<unsigned char>(mLetters[mTaken % mLetters.size()]);
        ++mTaken;
        return std::size_t{1} << std::min(letter % kLargest + rounds, kLargest);
    }

private:
    std::string_view mLetters;
    std::size_t mTaken = 0;
};

// What a reading gives up to its end, to a complaint, or to as much as is looked at.
struct Content {
    std::string bytes;
    std::string complaint;

    bool operator==(const Content& other) const {
        return bytes == other.bytes && complaint == other.complaint;
    }
    bool IsCut() const { return bytes.size() >= kMostKept; }
    bool IsWhole() const { return complaint.empty() && !IsCut(); }
};

// Without the name of the file, which is not always the same.
std::string ComplaintOf(const app::InputError& error, const app::InputFile& file) {
    return std::string(error.what()).substr(file.Name().size());
}

Content ReadOn(app::InputFile& file, PieceSizes sizes) {
    Content content;
    std::vector<char> piece;
    try {
        while (!content.IsCut()) {
            piece.resize(sizes.Next());
            std::size_t got = 0;
            {
                const Counting counting;
                got = file.Read(piece.data(), piece.size());
            }
            content.bytes.append(piece.data(), got);
            if (got < piece.size()) break;
        }
    } catch (const app::InputError& error) {
        content.complaint = ComplaintOf(error, file);
    }
    return content;
}

// As ReadOn, of a file whose beginning is looked at and put back before.
Content LookAndRead(app::InputFile& file, std::size_t beginning, const PieceSizes& sizes) {
    std::string looked(beginning, '\0');
    try {
        looked.resize(file.Read(looked.data(), looked.size()));
    } catch (const app::InputError& error) {
        return {"", ComplaintOf(error, file)};
    }
    file.PutBack(looked);
    file.KeepForRewind();
    return ReadOn(file, sizes);
}

// What comes out of the archive in the middle of which pieces end, nothing if it is refused.
std::optional<std::string> DecompressedInPieces(std::string_view archive, PieceSizes sizes) {
    const auto decompressor = app::DecompressorFor(archive.substr(0, app::kArchiveMark));
    std::string all;
    std::vector<char> out;
    try {
        while (!archive.empty()) {
            std::string_view piece = archive.substr(0, sizes.Next());
            archive.remove_prefix(piece.size());
            for (std::size_t got = 1; got > 0 || !piece.empty();) {
                out.resize(sizes.Next());
                got = decompressor->Decompress(piece, out.data(), out.size());
                all.append(out.data(), got);
            }
        }
    } catch (const app::ArchiveError&) {
        return std::nullopt;
    }
    return decompressor->IsWhole() ? std::optional(all) : std::nullopt;
}

// Members one behind the other, and zeros behind them.
std::optional<std::string> Gunzipped(std::string archive) {
    std::string all;
    // No archive of this kind becomes longer than this.
    std::string out(1100 * archive.size(), '\0');
    for (std::size_t at = 0; at < archive.size();) {
        z_stream stream = {};
        Require(inflateInit2(&stream, 16 + MAX_WBITS) == Z_OK, "there is memory");
        stream.next_in = reinterpret_cast<Bytef*>(archive.data() + at);
        stream.avail_in = static_cast<uInt>(archive.size() - at);
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        const int status = inflate(&stream, Z_FINISH);
        all.append(out.data(), stream.total_out);
        at += stream.total_in;
        inflateEnd(&stream);
        if (status != Z_STREAM_END) return std::nullopt;
        while (at < archive.size() && archive[at] == '\0') ++at;
    }
    return all;
}

// Frames one behind the other. Nothing as well if there is more in them than what is expected.
std::optional<std::string> Unzstd(std::string_view archive, std::size_t expected) {
    std::string all(expected + 1, '\0');
    const std::size_t size =
        ZSTD_decompress(all.data(), all.size(), archive.data(), archive.size());
    if (ZSTD_isError(size) != 0) return std::nullopt;
    all.resize(size);
    return all;
}

void CheckAgainstLibraries(std::string_view archive, const PieceSizes& sizes, const Content& read) {
    const auto decompressor = app::DecompressorFor(archive.substr(0, app::kArchiveMark));
    if (!decompressor) {
        Require(read.IsWhole() && read.bytes == archive, "no archive is read as it is");
        return;
    }
    if (read.IsCut()) return;
    const std::optional<std::string> inPieces = DecompressedInPieces(archive, sizes);
    if (decompressor->Format() == std::string("gzip")) {
        const std::optional<std::string> expected = Gunzipped(std::string(archive));
        Require(read.IsWhole() == expected.has_value(), "gzip archives are refused if not whole");
        Require(!expected || read.bytes == *expected, "gzip archives hold what zlib finds");
        Require(inPieces == expected, "pieces of gzip archives are no other archives");
    } else if (read.IsWhole()) {
        Require(Unzstd(archive, read.bytes.size()) == read.bytes,
                "zstd archives hold what libzstd finds");
        Require(inPieces == read.bytes, "pieces of zstd archives are no other archives");
    } else {
        Require(!inPieces, "pieces of a refused zstd archive are no other archive");
    }
}

void CheckPipe(std::string_view archive, std::size_t beginning, const PieceSizes& sizes,
               const Content& expected) {
    app::Progress progress(nullptr);
    fuzz::NeverCancel cancel;
    Pipe pipe(archive);
    app::InputFile file(pipe.Path(), progress, cancel);
    pipe.EndInput();
    const Content read = LookAndRead(file, beginning, sizes);
    // How far an archive is read when damage is found depends on how much is wanted of it.
    Require(read == expected || (beginning > 0 && !read.complaint.empty() && !expected.IsWhole()),
            "a pipe gives what its file gives");
    if (!expected.IsWhole()) return;
    file.Rewind();
    Require(ReadOn(file, sizes) == expected, "a pipe gives the same again");
    file.Rewind();
    PieceSizes some = sizes;
    std::vector<char> ignored(some.Next());
    file.Read(ignored.data(), ignored.size());
    file.Rewind();
    Require(ReadOn(file, sizes) == expected, "a pipe gives the same after some of it");
}

// So many of an archive that all of them would take longer than is bearable of any archive. It is
// much longer than what is bearable of one of its length.
void CheckBomb(std::string_view archive, std::size_t content) {
    std::string bomb;
    for (std::size_t size = 0; size <= kAlwaysBearable; size += content) bomb += archive;
    const fuzz::MemoryFile memory(bomb);
    app::Progress progress(nullptr);
    fuzz::NeverCancel cancel;
    app::InputFile file(memory.Path(), progress, cancel);
    std::vector<char> piece(kMiB / 4);
    std::size_t read = 0;
    try {
        while (const std::size_t got = file.Read(piece.data(), piece.size())) {
            read += got;
            Require(read <= kAlwaysBearable, "no more is read than is bearable");
        }
        Require(false, "what is not bearable is refused");
    } catch (const app::InputError&) {
        Require(read + piece.size() >= kAlwaysBearable, "what is bearable is read");
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    Require(__sanitizer_install_malloc_and_free_hooks(CountMemory, CountFreed) > 0,
            "memory is counted");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const bool isPiped = input.Flag();
    const bool mayBeBomb = input.Byte() == 'B';
    const std::size_t beginning = input.Below(64);
    const std::string_view rest = input.Take(size);
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    const PieceSizes sizes(rest.substr(0, slash));
    const std::string_view archive = rest.substr(std::min(slash + 1, rest.size()));
    if (archive.size() > Pipe::kMostHeld) return 0;

    const fuzz::MemoryFile memory(archive);
    app::Progress progress(nullptr);
    fuzz::NeverCancel cancel;
    inUse = mostInUse = 0;
    app::InputFile file(memory.Path(), progress, cancel);
    const Content read = ReadOn(file, sizes);
    {
        const Counting counting;
        file.Rewind();
    }
    Require(ReadOn(file, sizes) == read, "a file gives the same again");
    Require(mostInUse <= kMostMemory, "memory is bounded");

    CheckAgainstLibraries(archive, sizes, read);
    if (isPiped) CheckPipe(archive, beginning, sizes, read);
    const std::size_t content = read.bytes.size();
    if (mayBeBomb && content >= kMiB && content / kBearableFactor / 2 > archive.size() &&
        read.IsWhole()) {
        CheckBomb(archive, content);
    }
    return 0;
}
