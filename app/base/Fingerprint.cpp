#include "app/base/Fingerprint.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <new>

namespace app {

namespace {

// The separators of ASCII, which hardly ever stand in a cell.
constexpr char kBehindCell = '\x1F';
constexpr char kBehindRow = '\x1E';

// The hash takes many rows at once faster than one.
constexpr std::size_t kPiece = std::size_t{1} << 16U;

// Whether there is one byte between any two cells.
bool AreInLine(const std::vector<std::string_view>& cells) {
    for (std::size_t i = 1; i < cells.size(); ++i) {
        if (cells[i].data() != cells[i - 1].data() + cells[i - 1].size() + 1) return false;
    }
    return true;
}

}  // namespace

void Fingerprint::Free::operator()(XXH3_state_s* state) const { XXH3_freeState(state); }

Fingerprint::Fingerprint() : mState(XXH3_createState()) {
    if (!mState) throw std::bad_alloc();
    XXH3_128bits_reset(mState.get());
}

void Fingerprint::AddRow(const std::vector<std::string_view>& cells) {
    const std::size_t begin = mRows.size();
    if (AreInLine(cells)) {
        const char* const first = cells.front().data();
        const char* const last = cells.back().data() + cells.back().size();
        mRows.append(first, static_cast<std::size_t>(last - first));
        std::size_t end = begin;
        for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
            end += cells[i].size();
            mRows[end++] = kBehindCell;
        }
    } else {
        for (const std::string_view cell : cells) {
            mRows += cell;
            mRows += kBehindCell;
        }
        mRows.pop_back();
    }
    mRows += kBehindRow;
    if (mRows.size() >= kPiece) Flush();
}

void Fingerprint::Flush() {
    XXH3_128bits_update(mState.get(), mRows.data(), mRows.size());
    mRows.clear();
}

std::string Fingerprint::Text() {
    Flush();
    const XXH128_hash_t hash = XXH3_128bits_digest(mState.get());
    return fmt::format("xxh128:{:016x}{:016x}", hash.high64, hash.low64);
}

}  // namespace app
