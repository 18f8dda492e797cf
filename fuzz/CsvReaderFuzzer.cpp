// A file of any bytes, beside a plainer reader of all of it at once: the same rows, and the
// first bad one, or a file that begins like a stored reference, refused by both. After a rewind it
// is read once more with a buffer so small that its end falls anywhere; the first byte of the input
// tells how small.

#include <sys/mman.h>
#include <unistd.h>

#include <optional>

#include "Fuzzing.h"
#include "accredit/documents/Reference.h"
#include "app/base/Errors.h"
#include "app/data/CsvReader.h"

using fuzz::Require;
using namespace std::string_view_literals;

namespace {

using Row = std::vector<std::string>;

class NeverCancel : public MCQueryCancel {
public:
    bool QueryCancel() override { return false; }
};

class MemoryFile {
public:
    explicit MemoryFile(const std::string& content) : mDescriptor(memfd_create("fuzz", 0)) {
        Require(write(mDescriptor, content.data(), content.size()) ==
                    static_cast<ssize_t>(content.size()),
                "memory takes the file");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(mDescriptor); }

    std::string Path() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

private:
    int mDescriptor;
};

// What a file holds up to its end or its first bad row.
struct Content {
    std::vector<Row> rows;
    bool good = true;

    bool operator==(const Content& other) const { return rows == other.rows && good == other.good; }
};

// The row that begins at `at`, which goes to the line end behind it; nothing if it is bad.
std::optional<Row> PlainRow(const std::string& file, std::size_t& at) {
    enum { Start, Unquoted, Quoted, Closed } state = Start;
    Row row(1);
    while (at < file.size()) {
        const std::string_view rest = std::string_view(file).substr(at);
        const std::string_view plain =
            rest.substr(0, rest.find_first_of(state == Quoted ? "\"\0"sv : ",\n\r\"\0"sv));
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
        } else if (byte == ',') {
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

Content PlainContent(const std::string& file) {
    Content content;
    if (MADocuments::BeginsLikeDocument(file)) {
        content.good = false;
        return content;
    }
    std::size_t at = file.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    for (; at < file.size(); ++at) {
        // Between two of its line ends a file of one column has an empty field, any other nothing.
        const bool blank = file[at] == '\n' || file[at] == '\r';
        if (blank && (content.rows.empty() || content.rows.front().size() > 1)) continue;
        std::optional<Row> row = PlainRow(file, at);
        if (!row || (!content.rows.empty() && row->size() != content.rows.front().size())) {
            content.good = false;
            return content;
        }
        content.rows.push_back(std::move(*row));
        if (file.compare(at, 2, "\r\n") == 0) ++at;
    }
    content.good = !content.rows.empty();
    return content;
}

Content ReadRows(app::CsvReader& reader) {
    Content content{{reader.Headings()}, true};
    try {
        while (reader.Next()) {
            content.rows.emplace_back(reader.Fields().begin(), reader.Fields().end());
        }
    } catch (const app::InputError&) {
        content.good = false;
    }
    return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    // A byte-order mark and the line end behind the buffer are the least that it must hold.
    const std::size_t bufferSize = 4 + input.Below(64);
    const std::string file(input.Take(size));
    const Content expected = PlainContent(file);
    const MemoryFile memory(file);
    app::Progress progress(nullptr);
    NeverCancel cancel;
    try {
        app::CsvReader reader({memory.Path()}, app::Reading::Repeated, {}, {}, progress, cancel);
        Require(ReadRows(reader) == expected, "the rows are those of the file");
        reader.mBuffer = std::vector<char>(bufferSize);
        reader.Rewind();
        Require(ReadRows(reader) == expected, "the rows are the same in a small buffer");
    } catch (const app::InputError&) {
        Require(expected.rows.empty() && !expected.good, "a good heading is read");
    }
    return 0;
}
