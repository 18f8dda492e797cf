#include "app/commands/TextTable.h"

#include <algorithm>
#include <sstream>

#include "app/base/Characters.h"
#include "app/base/Printable.h"

namespace app {

namespace {

constexpr std::size_t kGap = 2;
constexpr const char* kPlain = "\x1b[0m";

// The columns of a table that are shown, and their widths.
struct Layout {
    std::vector<std::size_t> shown;
    std::vector<std::size_t> widths;

    std::size_t Width() const {
        std::size_t width = 0;
        for (const std::size_t column : shown) width += widths[column] + kGap;
        return width - std::min(width, kGap);
    }
};

// Cuts columns as far as they allow, the last ones first.
void Shrink(Layout& layout, const std::vector<TextTable::Column>& columns, std::size_t limit) {
    for (auto column = layout.shown.rbegin(); column != layout.shown.rend(); ++column) {
        std::size_t& width = layout.widths[*column];
        const std::size_t total = layout.Width();
        if (total <= limit) return;
        const std::size_t least = std::min(width, columns[*column].leastWidth);
        width = std::max(least, width - std::min(width, total - limit));
    }
}

bool LeaveOut(Layout& layout, const std::vector<TextTable::Column>& columns) {
    const auto least = std::max_element(layout.shown.begin(), layout.shown.end(),
                                        [&columns](std::size_t left, std::size_t right) {
                                            return columns[left].leftOut < columns[right].leftOut;
                                        });
    if (columns[*least].leftOut == 0) return false;
    layout.shown.erase(least);
    return true;
}

std::string Aligned(const std::string& text, std::size_t width, TextTable::Align align) {
    const std::string blanks(width - std::min(width, DisplayWidth(text)), ' ');
    return align == TextTable::Align::Right ? blanks + text : text + blanks;
}

}  // namespace

std::string TextTable::Text(const Screen& screen) const {
    Layout layout;
    for (std::size_t column = 0; column < mColumns.size(); ++column) {
        layout.shown.push_back(column);
        layout.widths.push_back(DisplayWidth(mColumns[column].title));
        for (const auto& row : mRows) {
            layout.widths.back() = std::max(layout.widths.back(), DisplayWidth(row[column].text));
        }
    }
    if (screen.width > 0) {
        const std::vector<std::size_t> whole = layout.widths;
        Shrink(layout, mColumns, screen.width);
        while (layout.Width() > screen.width && LeaveOut(layout, mColumns)) {
            layout.widths = whole;
            Shrink(layout, mColumns, screen.width);
        }
    }

    const auto line = [&](const auto& entryAt) {
        std::string text;
        std::size_t room = screen.width > 0 ? screen.width : static_cast<std::size_t>(-1);
        for (const std::size_t column : layout.shown) {
            const Entry entry = entryAt(column);
            const bool isLast = column == layout.shown.back();
            std::string shown = Cut(entry.text, std::min(layout.widths[column], room));
            if (!isLast || mColumns[column].align == Align::Right) {
                shown =
                    Aligned(shown, std::min(layout.widths[column], room), mColumns[column].align);
            }
            room -= std::min(room, layout.widths[column] + kGap);
            const bool hasColour = screen.hasColour && !entry.colour.empty();
            text += hasColour ? entry.colour + shown + kPlain : shown;
            if (room == 0) break;
            if (!isLast) text.append(kGap, ' ');
        }
        return text.erase(text.find_last_not_of(' ') + 1) + "\n";
    };
    std::string text = line([this](std::size_t column) {
        return Entry{mColumns[column].title, ""};
    });
    for (const auto& row : mRows) {
        text += line([&row](std::size_t column) { return row[column]; });
    }
    return text;
}

std::string Wrapped(const std::string& text, const Screen& screen) {
    if (screen.width == 0) return text + "\n";
    std::string lines;
    std::string line;
    std::istringstream words(text);
    for (std::string word; std::getline(words, word, ' ');) {
        word = Cut(word, screen.width);
        const bool fits = DisplayWidth(line) + 1 + DisplayWidth(word) <= screen.width;
        if (!line.empty() && !fits) {
            lines += line + "\n";
            line.clear();
        }
        // Between two blanks there is an empty word.
        line += line.empty() ? word : " " + word;
    }
    return lines + line + "\n";
}

}  // namespace app
