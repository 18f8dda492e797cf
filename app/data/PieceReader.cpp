#include "app/data/PieceReader.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "app/data/ByteSet.h"

namespace app {

namespace {

// Whether there is an odd number of quotes; so many bytes can be read behind the text as are looked
// at together.
bool HasOddQuotes(const char* text, std::size_t size) {
    const ByteSet<1> quote({'"'});
    std::uint64_t odd = 0;
    std::size_t at = 0;
    for (; at + kBlock <= size; at += kBlock) odd ^= quote.Find(text + at);
    if (at < size) odd ^= quote.Find(text + at) & ~(~std::uint64_t{0} << (size - at));
    return __builtin_parityll(odd) != 0;
}

// The end of the last line that ends outside of quotes; 0 if there is none.
std::size_t FindEndOfRows(const char* text, std::size_t size) {
    bool isQuoted = HasOddQuotes(text, size);
    for (std::size_t at = size; at > 0; --at) {
        const char byte = text[at - 1];
        if (byte == '"') isQuoted = !isQuoted;
        if (!isQuoted && (byte == '\n' || byte == '\r')) return at;
    }
    return 0;
}

}  // namespace

bool PieceReader::Read(CsvPiece& piece) {
    if (mIsOver) return false;
    piece.begin = 0;
    piece.lineEnds = 0;
    piece.followsLineEnd = mFollowsLineEnd;
    piece.followsCarriageReturn = mFollowsCarriageReturn;
    piece.read = mRest.size();
    piece.bytes.resize(std::max(piece.bytes.size(), mRest.size()));
    std::copy(mRest.begin(), mRest.end(), piece.bytes.begin());
    do {
        piece.endsFile = !Fill(piece);
        piece.end = piece.endsFile ? piece.read : FindEndOfRows(piece.bytes.data(), piece.read);
        mIsOver = piece.endsFile || piece.read > kMaxRowSize;
    } while (piece.end == 0 && !mIsOver);
    if (piece.end == 0) piece.end = piece.read;
    const char* const text = piece.bytes.data();
    mRest.assign(text + piece.end, text + piece.read);
    mFollowsLineEnd = true;
    mFollowsCarriageReturn = piece.end > 0 && text[piece.end - 1] == '\r';
    return piece.end > 0;
}

// Reads on until the piece is as long as it is meant to be, or twice as long as it was. False at
// the end of the file.
bool PieceReader::Fill(CsvPiece& piece) {
    const std::size_t size = std::min(std::max(mSize, 2 * piece.read), kMaxRowSize + 1);
    piece.bytes.resize(size + kBlock);
    const std::size_t room = size - piece.read;
    const std::size_t got = mFile.Read(piece.bytes.data() + piece.read, room);
    piece.read += got;
    piece.bytes[piece.read] = '\n';
    return got == room;
}

}  // namespace app
