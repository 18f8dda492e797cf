#pragma once

#include <cstddef>
#include <vector>

#include "app/base/InputFile.h"
#include "app/data/CsvPiece.h"

namespace app {

/// Reads a file piece by piece, each of which ends behind a line end outside of quotes, where a row
/// ends. Quotes before it tell whether it is outside: they come in pairs up to the first one that
/// stands where none may, and that one is found in its piece.
class PieceReader {
public:
    /// The pieces are about so long; longer where a row is. The file must outlive this.
    PieceReader(InputFile& file, std::size_t size) : mFile(file), mSize(size) {}

    /// Reads the next piece, in place of what the piece held. False at the end of the file. A piece
    /// that does not end with a row, because that is longer than the longest one, is the last that
    /// can be made use of. Throws InputError, OutputError, Cancelled.
    bool Read(CsvPiece& piece);

private:
    bool Fill(CsvPiece& piece);

    InputFile& mFile;
    std::size_t mSize;
    std::vector<char> mRest;  // what was read behind the last piece
    bool mIsOver = false;
    bool mFollowsLineEnd = false;
    bool mFollowsCarriageReturn = false;
};

}  // namespace app
