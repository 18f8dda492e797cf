#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "app/base/Screen.h"

namespace app {

/// A table for a terminal or a pipe: columns aligned by display width, and never wider than the
/// screen. What does not fit is cut, and of columns that still do not fit the least important ones
/// are left out.
class TextTable {
public:
    enum class Align { Left, Right };

    struct Column {
        std::string title;
        Align align = Align::Left;
        /// Columns are left out from the highest number down; those with 0 stay.
        int leftOut = 0;
        /// To how few columns of the screen it may be cut before others are left out.
        std::size_t leastWidth = static_cast<std::size_t>(-1);
    };

    struct Entry {
        std::string text;    ///< Fit to be shown.
        std::string colour;  ///< Escape sequence that is set before the text, if any.
    };

    explicit TextTable(std::vector<Column> columns) : mColumns(std::move(columns)) {}

    /// One entry for each column.
    void AddRow(std::vector<Entry> row) { mRows.push_back(std::move(row)); }

    /// The lines, each with its line end.
    std::string Text(const Screen& screen) const;

private:
    std::vector<Column> mColumns;
    std::vector<std::vector<Entry>> mRows;
};

/// A text of words in lines that fit the screen, each with its line end. Words that are longer than
/// the screen are cut.
std::string Wrapped(const std::string& text, const Screen& screen);

}  // namespace app
