#include "app/data/CsvReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "accredit/documents/Reference.h"
#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

namespace {

constexpr std::size_t kMiB = 1'048'576;
constexpr std::size_t kFirstBufferSize = kMiB / 4;
constexpr std::size_t kMaxRowSize = 16 * kMiB;
constexpr std::size_t kMaxFields = 1'000'000;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNulByte = ": a NUL byte, this is not a text file";
constexpr std::string_view kQuoteWithin = ": a quote in a field that does not begin with one";

// The bytes at which an unquoted field ends, or must not go on.
constexpr std::array<bool, 256> kStops = [] {
    std::array<bool, 256> stops{};
    for (const char stop : {',', '\n', '\r', '"', '\0'})
        stops[static_cast<unsigned char>(stop)] = true;
    return stops;
}();

bool EndsField(char byte) { return byte == ',' || byte == '\n' || byte == '\r'; }

unsigned long long CountLineEnds(std::string_view text) {
    unsigned long long count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (text[i] == '\n' || (text[i] == '\r' && !pair)) ++count;
    }
    return count;
}

}  // namespace

CsvReader::CsvReader(const std::string& path, Reading reading, Progress& progress,
                     MCQueryCancel& cancel)
    : CsvReader(std::make_unique<InputFile>(path, reading, progress, cancel)) {}

CsvReader::CsvReader(std::unique_ptr<InputFile> file)
    : mFile(std::move(file)),
      mMaxFields(kMaxFields),
      mBuffer(kFirstBufferSize + 1),
      mNext(mBuffer.data()),
      mEnd(mBuffer.data()) {
    Refill();
    if (MADocuments::BeginsLikeDocument({mNext, static_cast<std::size_t>(mEnd - mNext)})) {
        throw InputError(mFile->Name() + ": this looks like a stored reference, not data");
    }
    ReadHeading();
    mHeadings.assign(mFields.begin(), mFields.end());
    mMaxFields = mHeadings.size();
}

void CsvReader::ReadHeading() {
    const std::string_view beginning(mNext, static_cast<std::size_t>(mEnd - mNext));
    if (beginning.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        mNext += kByteOrderMark.size();
    }
    if (!ReadRow(BlankLines::ArePassedOver))
        throw InputError(mFile->Name() + ": the file is empty, there is no heading");
}

bool CsvReader::Next() {
    const bool oneColumn = mHeadings.size() == 1;
    if (!ReadRow(oneColumn ? BlankLines::AreRows : BlankLines::ArePassedOver)) return false;
    if (mFields.size() < mHeadings.size()) {
        Refuse(mFields.size() - 1,
               fmt::format("the row ends here, the heading has {} columns", mHeadings.size()));
    }
    return true;
}

void CsvReader::Rewind() {
    mFile->Rewind();
    mNext = mEnd = mBuffer.data();
    mAtEnd = false;
    mLine = 1;
    mAfterCarriageReturn = false;
    Refill();
    ReadHeading();
    if (!std::equal(mFields.begin(), mFields.end(), mHeadings.begin(), mHeadings.end())) {
        RefuseChanged();
    }
}

void CsvReader::Refuse(std::size_t column, const std::string& problem) const {
    Fail(mRowLine, Column(column) + ": " + problem);
}

bool CsvReader::ReadRow(BlankLines blankLines) {
    if (!FindRow(blankLines)) return false;
    while (!SplitRow()) Refill();
    UndoubleQuotes();
    return true;
}

// Goes from the end of a row to the first byte of the next, false if there is none. A blank line
// begins, as a row, with its line end.
bool CsvReader::FindRow(BlankLines blankLines) {
    bool passedOne = false;
    for (;;) {
        if (mNext == mEnd) {
            if (mAtEnd) return false;
            Refill();
            continue;
        }
        if (*mNext != '\n' && *mNext != '\r') break;
        const bool endsPair = *mNext == '\n' && mAfterCarriageReturn;
        if (!endsPair) {
            if (passedOne && blankLines == BlankLines::AreRows) break;
            passedOne = true;
            ++mLine;
        }
        mAfterCarriageReturn = *mNext == '\r';
        ++mNext;
    }
    mAfterCarriageReturn = false;
    mRowLine = mLine;
    return true;
}

inline void CsvReader::AddField(const char* begin, const char* end) {
    if (mFields.size() == mMaxFields) RefuseFurtherFields();
    mFields.emplace_back(begin, static_cast<std::size_t>(end - begin));
}

// Splits the row at mNext and goes to its end. False, with nothing changed but the fields, if the
// buffer does not hold all of the row.
bool CsvReader::SplitRow() {
    mFields.clear();
    mDoubled.clear();
    unsigned long long line = mRowLine;
    for (const char* at = mNext;; ++at) {
        const char* const begin = at;
        if (*at == '"') {
            if (!FindClosingQuote(at, line)) return false;
            AddField(begin + 1, at);
            if (mFields.back().find('\0') != std::string_view::npos) {
                Fail(line, Column(mFields.size() - 1) + std::string(kNulByte));
            }
            line += CountLineEnds(mFields.back());
            ++at;
            if (!EndsField(*at)) {
                Fail(line, Column(mFields.size() - 1) + ": text behind the closing quote");
            }
        } else {
            while (!kStops[static_cast<unsigned char>(*at)]) ++at;
            if (IsIncomplete(at)) return false;
            AddField(begin, at);
            if (!EndsField(*at)) {
                Fail(line, Column(mFields.size() - 1) +
                               std::string(*at == '"' ? kQuoteWithin : kNulByte));
            }
        }
        if (*at != ',') {
            mNext = at;
            mLine = line;
            return true;
        }
    }
}

// Moves `at` from the opening quote to the closing one. False if the buffer does not reach that
// far; throws if the file does not.
bool CsvReader::FindClosingQuote(const char*& at, unsigned long long line) {
    for (const char* from = at + 1;;) {
        const void* const found = std::memchr(from, '"', static_cast<std::size_t>(mEnd - from));
        if (!found) {
            if (!mAtEnd) return false;
            Fail(line, Column(mFields.size()) + ": the quote at its beginning is not closed");
        }
        const char* const quote = static_cast<const char*>(found);
        if (IsIncomplete(quote + 1)) return false;
        if (quote[1] != '"') {
            at = quote;
            return true;
        }
        if (mDoubled.empty() || mDoubled.back() != mFields.size()) {
            mDoubled.push_back(mFields.size());
        }
        from = quote + 2;
    }
}

void CsvReader::RefuseFurtherFields() const {
    Refuse(mMaxFields,
           fmt::format("the row goes on, {} columns are {}", mMaxFields,
                       mHeadings.empty() ? "the most that are read" : "all that the heading has"));
}

// Done in place, once the row is complete: fields only become shorter.
void CsvReader::UndoubleQuotes() {
    for (const std::size_t index : mDoubled) {
        std::string_view& field = mFields[index];
        char* const begin = mBuffer.data() + (field.data() - mBuffer.data());
        char* to = begin;
        for (std::size_t i = 0; i < field.size(); ++i) {
            *to++ = field[i];
            if (field[i] == '"') ++i;
        }
        field = std::string_view(begin, static_cast<std::size_t>(to - begin));
    }
}

// Moves what is not yet used to the front and fills the rest of the buffer, which grows when a row
// takes more than half of it: splitting such a row again from its beginning then costs no more than
// twice the row in all.
void CsvReader::Refill() {
    const auto kept = static_cast<std::size_t>(mEnd - mNext);
    if (kept > kMaxRowSize) {
        Refuse(mFields.size(), fmt::format("the row is longer than {} MiB; is a quote not closed?",
                                           kMaxRowSize / kMiB));
    }
    std::memmove(mBuffer.data(), mNext, kept);
    if (kept > mBuffer.size() / 2) mBuffer.resize(2 * mBuffer.size());
    const std::size_t room = mBuffer.size() - 1 - kept;
    const std::size_t got = mFile->Read(mBuffer.data() + kept, room);
    mAtEnd = got < room;
    mNext = mBuffer.data();
    mEnd = mNext + kept + got;
    mBuffer[kept + got] = '\n';
}

void CsvReader::Fail(unsigned long long line, const std::string& problem) const {
    throw InputError(fmt::format("{}:{}: {}", mFile->Name(), line, problem));
}

std::string CsvReader::Column(std::size_t column) const {
    if (column >= mHeadings.size()) return fmt::format("column {}", column + 1);
    return fmt::format("column {} \"{}\"", column + 1, Shortened(mHeadings[column]));
}

}  // namespace app
