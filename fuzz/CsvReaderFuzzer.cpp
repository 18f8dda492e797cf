// Files of any bytes, up to three read as one, beside a plainer reader of all of it at once: the
// same rows on the same lines, and the first bad one, or a file of another format, refused by both.
// After a rewind they are read once more in pieces so small that they end anywhere; the first byte
// of the input tells how small, the second the delimiter, if it is given. The ASCII separator of
// files stands between files.

#include <algorithm>
#include <array>
#include <memory>
#include <optional>

#include "Fuzzing.h"
#include "MemoryFile.h"
#include "app/base/Decompressor.h"
#include "app/base/Errors.h"
#include "app/data/CsvReader.h"
#include "app/data/OtherFormats.h"

using fuzz::Require;
using namespace std::string_view_literals;

namespace {

using Fields = std::vector<std::string>;

constexpr std::size_t kMostFiles = 3;
constexpr char kFileSeparator = '\x1C';
// A column of this name may be absent from some of the files.
constexpr const char* kOptional = "o";

struct Row {
    unsigned long long line = 0;
    Fields fields;

    bool operator==(const Row& other) const { return line == other.line && fields == other.fields; }
};

// What files hold, the heading first, up to their end or the first bad row.
struct Content {
    std::vector<Row> rows;
    bool good = true;
    std::string fileWithoutRows = {};

    bool operator==(const Content& other) const {
        return rows == other.rows && good == other.good && fileWithoutRows == other.fileWithoutRows;
    }
};

bool IsLineEnd(char byte) { return byte == '\n' || byte == '\r'; }

unsigned long long LineEndsIn(std::string_view text) {
    unsigned long long ends = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.substr(at, 2) == "\r\n") ++at;
        if (IsLineEnd(text[at])) ++ends;
    }
    return ends;
}

// The delimiter of a first line that is there to name it.
std::optional<char> NamedDelimiter(std::string_view line) {
    if (line.size() == 7 && line.front() == '"' && line.back() == '"') line = line.substr(1, 5);
    if (line.size() != 5 || line.substr(0, 4) != "sep=") return std::nullopt;
    const char named = line.back();
    const bool isOfNames =
        std::isalnum(static_cast<unsigned char>(named)) || "_.-+"sv.find(named) != "_.-+"sv.npos;
    const bool isOther = isOfNames || named == '"' || named <= 0 || named == '\x7F';
    return isOther ? std::nullopt : std::optional(named);
}

// The one that the heading has most of, at the beginning of the text.
char MostFrequentDelimiter(std::string_view text) {
    std::array<std::pair<char, int>, 3> counts = {{{',', 0}, {';', 0}, {'\t', 0}}};
    bool beginsField = true;
    for (std::size_t at = 0; at < text.size() && !IsLineEnd(text[at]); ++at) {
        if (beginsField && text[at] == '"') {
            beginsField = false;
            do {
                at = text.find('"', at + 1);
                if (at == text.npos) break;
            } while (text.substr(at, 2) == "\"\"" && ++at);
            if (at == text.npos) break;
            continue;
        }
        beginsField = false;
        for (auto& [delimiter, count] : counts) {
            if (text[at] != delimiter) continue;
            beginsField = true;
            ++count;
        }
    }
    return std::max_element(
               counts.begin(), counts.end(),
               [](const auto& left, const auto& right) { return left.second < right.second; })
        ->first;
}

// The row that begins at `at`, which goes to the line end behind it; nothing if it is bad.
std::optional<Fields> PlainRow(const std::string& file, char delimiter, std::size_t& at) {
    enum { Start, Unquoted, Quoted, Closed } state = Start;
    const std::string stops = std::string("\n\r\"\0"sv) + delimiter;
    Fields row(1);
    while (at < file.size()) {
        const std::string_view rest = std::string_view(file).substr(at);
        const std::string_view plain =
            rest.substr(0, rest.find_first_of(state == Quoted ? "\"\0"sv : stops));
        if (!plain.empty()) {
            if (state == Closed) return std::nullopt;
            if (state == Start) state = Unquoted;
            row.back() += plain;
            at += plain.size();
            continue;
        }
        const char byte = file[at];
        if (byte == '"') {
            if (state == Unquoted) return std::nullopt;
            if (state == Closed) row.back() += byte;
            state = state == Quoted ? Closed : Quoted;
        } else if (byte == delimiter) {
            row.emplace_back();
            state = Start;
        } else if (byte == '\0') {
            return std::nullopt;
        } else {
            break;
        }
        ++at;
    }
    if (state == Quoted) return std::nullopt;
    return row;
}

Content PlainContent(const std::string& file, std::optional<char> delimiter) {
    Content content;
    content.good = false;
    if (app::OtherFormat(file)) return content;
    std::size_t at = file.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    unsigned long long line = 1;
    std::size_t counted = at;
    for (bool isFirst = true; at < file.size(); ++at) {
        // Between two of its line ends a file of one column has an empty field, any other nothing.
        const bool oneColumn = !content.rows.empty() && content.rows.front().fields.size() == 1;
        if (IsLineEnd(file[at]) && !oneColumn) continue;
        line += LineEndsIn(std::string_view(file).substr(counted, at - counted));
        counted = at;
        if (isFirst) {
            isFirst = false;
            const std::string_view rest = std::string_view(file).substr(at);
            const std::string_view first = rest.substr(0, rest.find_first_of("\n\r"));
            const std::optional<char> named = NamedDelimiter(first);
            if (!delimiter) delimiter = named ? *named : MostFrequentDelimiter(rest);
            if (named) {
                at += first.size();
                continue;
            }
        }
        std::optional<Fields> row = PlainRow(file, *delimiter, at);
        if (!row || (!content.rows.empty() && row->size() != content.rows.front().fields.size())) {
            return content;
        }
        content.rows.push_back({line, std::move(*row)});
        if (file.compare(at, 2, "\r\n") == 0) ++at;
    }
    content.good = !content.rows.empty();
    return content;
}

// Where the columns of the first file stand in another; nothing where an optional one is absent.
// Nothing at all if the two are not files of the same columns.
using Places = std::vector<std::optional<std::size_t>>;

std::optional<Places> PlacesOf(const Fields& first, const Fields& other) {
    const auto counted = [](const Fields& headings, const std::string& name) {
        return std::count(headings.begin(), headings.end(), name);
    };
    Places places;
    for (std::size_t column = 0; column < first.size(); ++column) {
        if (first == other) {
            places.emplace_back(column);
            continue;
        }
        const auto found = std::find(other.begin(), other.end(), first[column]);
        places.emplace_back();
        if (found != other.end()) places.back() = static_cast<std::size_t>(found - other.begin());
    }
    if (first == other) return places;
    for (const Fields& headings : {first, other}) {
        for (const std::string& name : headings) {
            if (name == kOptional) continue;
            if (counted(first, name) != 1 || counted(other, name) != 1) return std::nullopt;
        }
    }
    return places;
}

// The files as one, of the names that messages give them.
Content PlainContent(const std::vector<std::string>& files, const std::vector<std::string>& names,
                     std::optional<char> delimiter) {
    Content all;
    for (std::size_t i = 0; i < files.size() && all.good; ++i) {
        const Content one = PlainContent(files[i], delimiter);
        all.good = one.good;
        if (one.rows.empty()) return all;
        if (i == 0) all.rows.push_back(one.rows.front());
        const auto places = PlacesOf(all.rows.front().fields, one.rows.front().fields);
        if (!places) {
            all.good = false;
            return all;
        }
        if (one.good && one.rows.size() == 1 && all.fileWithoutRows.empty()) {
            all.fileWithoutRows = names[i];
        }
        for (auto row = one.rows.begin() + 1; row != one.rows.end(); ++row) {
            all.rows.push_back({row->line, {}});
            for (const std::optional<std::size_t>& place : *places) {
                all.rows.back().fields.push_back(place ? row->fields[*place] : "");
            }
        }
    }
    return all;
}

Content ReadRows(app::CsvReader& reader) {
    Content content{{{reader.RowLine(), reader.Headings()}}, true};
    try {
        while (reader.Next()) {
            const std::vector<std::string_view>& fields = reader.Fields();
            content.rows.push_back({reader.RowLine(), {fields.begin(), fields.end()}});
        }
    } catch (const app::InputError&) {
        content.good = false;
    }
    content.fileWithoutRows = reader.FileWithoutRows();
    return content;
}

std::optional<char> GivenDelimiter(fuzz::Input& input) {
    constexpr std::string_view kGiven = ",;\t| ";
    const std::size_t choice = input.Below(2 * kGiven.size());
    if (choice >= kGiven.size()) return kGiven[choice - kGiven.size()];
    return std::nullopt;
}

std::vector<std::string> FilesFrom(std::string_view input) {
    std::vector<std::string> files;
    while (files.size() + 1 < kMostFiles && input.find(kFileSeparator) != input.npos) {
        const std::size_t length = input.find(kFileSeparator);
        files.emplace_back(input.substr(0, length));
        input.remove_prefix(length + 1);
    }
    files.emplace_back(input);
    return files;
}

// The size of a piece, at least `size`, that holds enough of all beginnings to know their formats.
std::size_t PieceSize(const std::vector<std::string>& files, std::size_t size) {
    // So many bytes besides blanks tell every format.
    constexpr std::size_t kTelling = 16;
    for (const std::string& file : files) {
        const bool isOther = app::OtherFormat(file).has_value();
        std::size_t telling = 0;
        for (std::size_t i = 0; i < file.size() && telling < kTelling; ++i) {
            if (" \t\r\n"sv.find(file[i]) == std::string_view::npos) ++telling;
            const bool seemsOther = app::OtherFormat(file.substr(0, i)).has_value();
            if (seemsOther != isOther) size = std::max(size, i + 1);
        }
    }
    return size;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    // A byte-order mark is the least that a piece must hold.
    const std::size_t pieceSize = 3 + input.Below(64);
    const std::optional<char> delimiter = GivenDelimiter(input);
    const std::vector<std::string> files = FilesFrom(input.Take(size));
    std::vector<std::unique_ptr<fuzz::MemoryFile>> memory;
    std::vector<std::string> names;
    for (const std::string& file : files) {
        // ArchiveFuzzer has these.
        if (app::DecompressorFor(std::string_view(file).substr(0, app::kArchiveMark))) return 0;
        memory.push_back(std::make_unique<fuzz::MemoryFile>(file));
        names.push_back(memory.back()->Path());
    }
    const Content expected = PlainContent(files, names, delimiter);
    app::Progress progress(nullptr);
    fuzz::NeverCancel cancel;
    try {
        const auto isOptional = [](const std::string& name) { return name == kOptional; };
        app::CsvReader reader(names, app::Reading::Repeated, {delimiter}, isOptional, progress,
                              cancel);
        Require(ReadRows(reader) == expected, "the rows are those of the files");
        // Threads take their time to start.
        reader.ReadInPieces(PieceSize(files, pieceSize), pieceSize % 8 == 0 ? 2 : 0);
        reader.Rewind();
        Require(ReadRows(reader) == expected, "the rows are the same in small pieces");
    } catch (const app::InputError&) {
        Require(expected.rows.empty() && !expected.good, "a good heading is read");
    }
    return 0;
}
