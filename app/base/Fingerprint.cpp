#include "app/base/Fingerprint.h"

#include <cstddef>

namespace app {

namespace {

// The hash takes many rows at once faster than one.
constexpr std::size_t kPiece = std::size_t{1} << 16U;

}  // namespace

void Fingerprint::AddRow(const std::vector<std::string_view>& cells) {
    for (const std::string_view cell : cells) {
        AddCell(cell);
        mRows += ',';
    }
    mRows.back() = '\n';
    if (mRows.size() >= kPiece) Flush();
}

// In quotes, a comma or a line end within a cell is not taken for the end of one.
void Fingerprint::AddCell(std::string_view cell) {
    if (cell.find_first_of(",\"\n") == std::string_view::npos) {
        mRows += cell;
        return;
    }
    mRows += '"';
    for (const char byte : cell) mRows.append(byte == '"' ? 2 : 1, byte);
    mRows += '"';
}

void Fingerprint::AddPlainRow(std::string_view row) {
    mRows += row;
    mRows += '\n';
    if (mRows.size() >= kPiece) Flush();
}

void Fingerprint::Flush() {
    mHash.Add(mRows.data(), mRows.size());
    mRows.clear();
}

std::string Fingerprint::Text() {
    Flush();
    return "xxh128:" + mHash.Text();
}

}  // namespace app
