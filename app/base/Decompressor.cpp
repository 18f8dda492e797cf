#include "app/base/Decompressor.h"

#include <fmt/format.h>

// What zlib reads it does not change.
#define ZLIB_CONST
#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

#include <algorithm>
#include <limits>
#include <new>

namespace app {

namespace {

constexpr std::string_view kGzipMark = "\x1F\x8B";
constexpr std::string_view kZstdMark = "\x28\xB5\x2F\xFD";
// A frame that holds no data begins with one of sixteen bytes and these.
constexpr std::string_view kSkippableMark = "\x2A\x4D\x18";

bool BeginsSkippable(char first) { return (static_cast<unsigned char>(first) & 0xF0U) == 0x50U; }

constexpr const char* kFurtherBytes = "the bytes from here on belong to no archive";

// Any number of members one behind the other, which zeros may follow, as tapes have them (RFC
// 1952).
class GzipDecompressor : public Decompressor {
public:
    GzipDecompressor() {
        // The most window bits there are, and 16 for the gzip format.
        if (inflateInit2(&mStream, MAX_WBITS + 16) != Z_OK) throw std::bad_alloc();
    }
    ~GzipDecompressor() override { inflateEnd(&mStream); }

    const char* Format() const override { return "gzip"; }
    bool IsWhole() const override { return mBetween; }

    std::size_t Decompress(std::string_view& archive, char* out, std::size_t size) override {
        if (mBetween) {
            archive.remove_prefix(std::min(archive.find_first_not_of('\0'), archive.size()));
            if (archive.empty()) return 0;
            if (archive.front() != kGzipMark.front()) throw ArchiveError(kFurtherBytes);
            inflateReset(&mStream);
            mBetween = false;
        }
        mStream.next_in = reinterpret_cast<const Bytef*>(archive.data());
        mStream.avail_in = Limited(archive.size());
        const uInt taken = mStream.avail_in;
        mStream.next_out = reinterpret_cast<Bytef*>(out);
        mStream.avail_out = Limited(size);
        const uInt room = mStream.avail_out;
        const int status = inflate(&mStream, Z_NO_FLUSH);
        archive.remove_prefix(taken - mStream.avail_in);
        if (status == Z_MEM_ERROR) throw std::bad_alloc();
        // Without anything to take or room to write there is no step, and no harm.
        if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
            throw ArchiveError(fmt::format("the gzip archive is damaged here ({})",
                                           mStream.msg ? mStream.msg : "no reason known"));
        }
        mBetween = status == Z_STREAM_END;
        return room - mStream.avail_out;
    }

private:
    static uInt Limited(std::size_t size) {
        return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
    }

    z_stream mStream = {};
    bool mBetween = false;  // two members
};

// Any number of frames one behind the other (RFC 8878).
class ZstdDecompressor : public Decompressor {
public:
    ZstdDecompressor() : mContext(ZSTD_createDCtx(), &ZSTD_freeDCtx) {
        if (!mContext) throw std::bad_alloc();
        ZSTD_DCtx_setParameter(mContext.get(), ZSTD_d_windowLogMax, kMaxWindowLog);
    }

    const char* Format() const override { return "zstd"; }
    bool IsWhole() const override { return mBetween; }

    std::size_t Decompress(std::string_view& archive, char* out, std::size_t size) override {
        if (mBetween) {
            if (archive.empty()) return 0;
            // The library also knows frames of the format's drafts, for which it takes further
            // memory.
            const char first = archive.front();
            if (first != kZstdMark.front() && !BeginsSkippable(first)) {
                throw ArchiveError(kFurtherBytes);
            }
        }
        ZSTD_inBuffer in = {archive.data(), archive.size(), 0};
        ZSTD_outBuffer written = {out, size, 0};
        const std::size_t status = ZSTD_decompressStream(mContext.get(), &written, &in);
        if (ZSTD_isError(status) != 0) Fail(status);
        archive.remove_prefix(in.pos);
        mBetween = status == 0;
        return written.pos;
    }

private:
    // The window that the format's own program takes as well unless it is told otherwise.
    static constexpr int kMaxWindowLog = 27;

    [[noreturn]] void Fail(std::size_t status) const {
        const ZSTD_ErrorCode code = ZSTD_getErrorCode(status);
        if (code == ZSTD_error_memory_allocation) throw std::bad_alloc();
        if (code == ZSTD_error_frameParameter_windowTooLarge) {
            throw ArchiveError(
                "the zstd archive needs a window of more than 128 MiB; 'zstd -dc --long=31 FILE' "
                "and a pipe to '-' can give it that");
        }
        if (code == ZSTD_error_prefix_unknown && mBetween) throw ArchiveError(kFurtherBytes);
        throw ArchiveError(fmt::format("the zstd archive is damaged at this byte or behind it ({})",
                                       ZSTD_getErrorName(status)));
    }

    std::unique_ptr<ZSTD_DCtx, std::size_t (*)(ZSTD_DCtx*)> mContext;
    bool mBetween = false;  // two frames
};

// Whether a file that begins so is one of those with the mark, which may be cut short.
bool Begins(std::string_view beginning, std::string_view mark) {
    return beginning.size() < mark.size() && beginning.size() > 1
               ? beginning == mark.substr(0, beginning.size())
               : beginning.substr(0, mark.size()) == mark;
}

bool IsSkippable(std::string_view beginning) {
    return !beginning.empty() && BeginsSkippable(beginning.front()) &&
           beginning.substr(1) == kSkippableMark;
}

}  // namespace

std::unique_ptr<Decompressor> DecompressorFor(std::string_view beginning) {
    if (Begins(beginning, kGzipMark)) return std::make_unique<GzipDecompressor>();
    if (Begins(beginning, kZstdMark) || IsSkippable(beginning)) {
        return std::make_unique<ZstdDecompressor>();
    }
    return nullptr;
}

}  // namespace app
