#include "app/data/CsvReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/data/OtherFormats.h"

namespace app {

namespace {

constexpr std::size_t kMiB = 1'048'576;
constexpr std::size_t kFirstBufferSize = kMiB / 4;
constexpr std::size_t kMaxRowSize = 16 * kMiB;
constexpr std::size_t kMaxFields = 1'000'000;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparatorLine = "sep=";
constexpr std::string_view kNulByte = ": a NUL byte, this is not a text file in UTF-8";
constexpr std::string_view kQuoteWithin =
    ": a quote in a field that does not begin with one; CSV has such a field in quotes, and its "
    "own quotes doubled";

// Those that are found without being told, the preferred one first.
constexpr std::string_view kUsualDelimiters = ",;\t";

bool IsLineEnd(char byte) { return byte == '\n' || byte == '\r'; }

unsigned long long CountLineEnds(std::string_view text) {
    unsigned long long count = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool pair = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
        if (text[i] == '\n' || (text[i] == '\r' && !pair)) ++count;
    }
    return count;
}

}  // namespace

bool IsDelimiter(char byte) {
    const bool isPartOfName = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
                              (byte >= 'A' && byte <= 'Z') || byte == '_' || byte == '.' ||
                              byte == '-' || byte == '+';
    return !isPartOfName && byte > '\0' && byte < '\x7F' && byte != '"' && !IsLineEnd(byte);
}

std::string DelimiterName(char delimiter) {
    switch (delimiter) {
        case ',':
            return "commas";
        case ';':
            return "semicolons";
        case '\t':
            return "tabs";
        default:
            return fmt::format("'{}'", Printable({&delimiter, 1}));
    }
}

std::string DelimiterOption(char delimiter) {
    if (delimiter == '\t') return "--delimiter tab";
    return fmt::format("--delimiter {}", ShellQuoted({&delimiter, 1}));
}

CsvReader::CsvReader(std::unique_ptr<InputFile> file, Reading reading, const CsvFormat& format)
    : mPaths(1), mReading(reading), mFormat(format) {
    if (reading == Reading::Repeated) file->KeepForRewind();
    mFiles.push_back(std::move(file));
    BeginFile();
}

CsvReader::CsvReader(std::vector<std::string> paths, Reading reading, const CsvFormat& format,
                     std::function<bool(const std::string&)> isOptional, Progress& progress,
                     MCQueryCancel& cancel)
    : mPaths(std::move(paths)),
      mReading(reading),
      mFormat(format),
      mIsOptional(std::move(isOptional)),
      mProgress(&progress),
      mCancel(&cancel) {
    BeginFile();
}

std::string CsvReader::Name() const {
    const std::string first = mFiles.front()->Name();
    return mPaths.size() == 1 ? first : fmt::format("{} and {} more", first, mPaths.size() - 1);
}

// Opens the file at mFile, or takes it up again at its beginning, and reads its heading.
void CsvReader::BeginFile() {
    if (mFile == mFiles.size()) OpenFile();
    if (mBuffer.empty()) mBuffer.resize(kFirstBufferSize + 1);
    BeginBuffer();
    ReadHeading();
    const std::vector<std::string> headings(mFields.begin(), mFields.end());
    if (mFile == mFileHeadings.size()) mFileHeadings.push_back(headings);
    if (headings != mFileHeadings[mFile]) RefuseChanged();
    if (mFile == 0) mHeadings = headings;
    mMaxFields = headings.size();
    mReadsHeading = false;
    mHasRows = false;
    mPlaces = PlacesIn(*this);
}

void CsvReader::OpenFile() {
    mFiles.push_back(std::make_unique<InputFile>(mPaths[mFile], *mProgress, *mCancel));
    if (mReading == Reading::Repeated) mFiles.back()->KeepForRewind();
}

void CsvReader::BeginBuffer() {
    mNext = mEnd = mBuffer.data();
    mAtEnd = false;
    mLine = 1;
    mAfterCarriageReturn = false;
    mMaxFields = kMaxFields;
    mReadsHeading = true;
    Refill();
}

void CsvReader::ReadHeading() {
    const std::string_view beginning(mNext, static_cast<std::size_t>(mEnd - mNext));
    if (const auto problem = OtherFormat(beginning)) throw InputError(FileName() + ": " + *problem);
    if (beginning.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        mNext += kByteOrderMark.size();
    }
    bool found = FindRow(BlankLines::ArePassedOver);
    if (found && PassOverSeparatorLine()) {
        found = FindRow(BlankLines::ArePassedOver);
    } else if (found && !mFormat.delimiter) {
        FindDelimiter();
    }
    if (mFormat.delimiter) UseDelimiter(*mFormat.delimiter);
    if (!found || !ReadRow(BlankLines::ArePassedOver)) {
        throw InputError(FileName() + ": the file is empty, there is no heading");
    }
}

// Goes behind a first line that names the delimiter, in quotes or not, and takes that.
bool CsvReader::PassOverSeparatorLine() {
    constexpr std::size_t kLongest = kSeparatorLine.size() + 3;
    while (!mAtEnd && static_cast<std::size_t>(mEnd - mNext) <= kLongest) Refill();
    std::string_view line(mNext, static_cast<std::size_t>(mEnd - mNext));
    line = line.substr(0, line.find_first_of("\r\n"));
    const std::size_t length = line.size();
    if (length == kLongest && line.front() == '"' && line.back() == '"') {
        line = line.substr(1, length - 2);
    }
    if (line.size() != kSeparatorLine.size() + 1 ||
        line.substr(0, kSeparatorLine.size()) != kSeparatorLine || !IsDelimiter(line.back())) {
        return false;
    }
    UseDelimiter(line.back());
    mNext += length;
    return true;
}

// Takes the delimiter that the heading at mNext has most of.
void CsvReader::FindDelimiter() {
    std::array<std::size_t, kUsualDelimiters.size()> counts{};
    bool quoted = false;
    bool fieldBegins = true;
    for (std::size_t at = 0;; ++at) {
        // A quote needs the byte behind it.
        while (!mAtEnd && static_cast<std::size_t>(mEnd - mNext) <= at + 1) Refill();
        if (mNext + at == mEnd || (!quoted && IsLineEnd(mNext[at]))) break;
        const char byte = mNext[at];
        if (byte == '"' && quoted && mNext[at + 1] == '"') {
            ++at;
        } else if (byte == '"') {
            quoted = !quoted && fieldBegins;
        }
        const std::size_t usual = quoted ? std::string_view::npos : kUsualDelimiters.find(byte);
        fieldBegins = usual != std::string_view::npos;
        if (fieldBegins) ++counts[usual];
    }
    const auto most = std::max_element(counts.begin(), counts.end());
    UseDelimiter(kUsualDelimiters[static_cast<std::size_t>(most - counts.begin())]);
}

void CsvReader::UseDelimiter(char delimiter) {
    mDelimiter = delimiter;
    mStops.fill(false);
    for (const char stop : {delimiter, '\n', '\r', '"', '\0'}) {
        mStops[static_cast<unsigned char>(stop)] = true;
    }
}

void CsvReader::RequireSameColumns(const CsvReader& further) const { PlacesIn(further); }

// Where the columns stand in the headings of a further file.
std::vector<std::size_t> CsvReader::PlacesIn(const CsvReader& further) const {
    const std::vector<std::string>& headings = further.mFileHeadings[further.mFile];
    if (headings == mHeadings) return {};
    const auto isOptional = [this](const std::string& name) {
        return mIsOptional && mIsOptional(name);
    };
    const std::string& first = mFiles.front()->Name();
    std::set<std::string_view> wanted;
    for (std::size_t column = 0; column < mHeadings.size(); ++column) {
        const std::string& heading = mHeadings[column];
        if (!wanted.insert(heading).second && !isOptional(heading)) {
            throw InputError(fmt::format("{}: column {} \"{}\": {}", first, column + 1,
                                         Shortened(heading), kHeadingTwice));
        }
    }
    std::map<std::string_view, std::size_t> places;
    for (std::size_t place = 0; place < headings.size(); ++place) {
        const bool isNew = places.emplace(headings[place], place).second;
        if (isOptional(headings[place])) continue;
        if (!isNew) further.FailAt(place, kHeadingTwice);
        if (wanted.count(headings[place]) == 0) {
            further.FailAt(place, fmt::format("{} has no such column; {} leaves it out", first,
                                              ShellOption("--ignore", headings[place])));
        }
    }
    std::vector<std::size_t> found;
    for (const std::string& heading : mHeadings) {
        const auto place = places.find(heading);
        if (place == places.end() && !isOptional(heading)) {
            throw InputError(fmt::format(
                "{}: there is no column \"{}\", which {} has; {} leaves it out", further.FileName(),
                Shortened(heading), first, ShellOption("--ignore", heading)));
        }
        found.push_back(place == places.end() ? kNoPlace : place->second);
    }
    return found;
}

void CsvReader::PutInOrder() {
    mOrdered.resize(mPlaces.size());
    for (std::size_t column = 0; column < mPlaces.size(); ++column) {
        const std::size_t place = mPlaces[column];
        mOrdered[column] = place == kNoPlace ? std::string_view() : mFields[place];
    }
}

bool CsvReader::Next() {
    const auto blankLines = [this] {
        return mMaxFields == 1 ? BlankLines::AreRows : BlankLines::ArePassedOver;
    };
    while (!ReadRow(blankLines())) {
        if (!mHasRows && mFileWithoutRows.empty()) mFileWithoutRows = FileName();
        if (mFingerprint) mFingerprints.push_back(mHasRows ? mFingerprint->Text() : std::string());
        mFingerprint.reset();
        if (mFile + 1 == mPaths.size()) return false;
        ++mFile;
        BeginFile();
        if (mFingerprints.size() == mFile) BeginFingerprint();
    }
    mHasRows = true;
    if (mFields.size() < mMaxFields) {
        FailAt(mFields.size() - 1,
               fmt::format("the row ends here, the heading has {} columns", mMaxFields));
    }
    if (mFingerprint) AddToFingerprint();
    if (!mPlaces.empty()) PutInOrder();
    return true;
}

void CsvReader::BeginFingerprint() {
    mFingerprint.emplace();
    for (const std::string& heading : mFileHeadings[mFile]) mFingerprint->AddRow({heading});
}

void CsvReader::AddToFingerprint() {
    if (mRowHasQuotes || mDelimiter != ',') {
        mFingerprint->AddRow(mFields);
    } else {
        const char* const begin = mFields.front().data();
        const char* const end = mFields.back().data() + mFields.back().size();
        mFingerprint->AddPlainRow({begin, static_cast<std::size_t>(end - begin)});
    }
}

void CsvReader::Rewind() {
    for (const std::unique_ptr<InputFile>& file : mFiles) file->Rewind();
    mFile = 0;
    mFingerprint.reset();
    BeginFile();
}

void CsvReader::Refuse(std::size_t column, const std::string& problem) const {
    FailAt(mPlaces.empty() ? column : mPlaces[column], problem);
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
    mRowHasQuotes = false;
    unsigned long long line = mRowLine;
    for (const char* at = mNext;; ++at) {
        const char* const begin = at;
        if (*at == '"') {
            mRowHasQuotes = true;
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
            while (!mStops[static_cast<unsigned char>(*at)]) ++at;
            if (IsIncomplete(at)) return false;
            AddField(begin, at);
            if (!EndsField(*at)) {
                Fail(line, Column(mFields.size() - 1) +
                               std::string(*at == '"' ? kQuoteWithin : kNulByte));
            }
        }
        if (*at != mDelimiter) {
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
    FailAt(mMaxFields,
           fmt::format("the row goes on, {} {}",
                       mMaxFields == 1 ? "1 column is" : fmt::format("{} columns are", mMaxFields),
                       mReadsHeading ? "the most that are read" : "all that the heading has"));
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
        FailAt(mFields.size(), fmt::format("the row is longer than {} MiB; is a quote not closed?",
                                           kMaxRowSize / kMiB));
    }
    std::memmove(mBuffer.data(), mNext, kept);
    if (kept > mBuffer.size() / 2) mBuffer.resize(2 * mBuffer.size());
    const std::size_t room = mBuffer.size() - 1 - kept;
    const std::size_t got = mFiles[mFile]->Read(mBuffer.data() + kept, room);
    mAtEnd = got < room;
    mNext = mBuffer.data();
    mEnd = mNext + kept + got;
    mBuffer[kept + got] = '\n';
}

void CsvReader::Fail(unsigned long long line, const std::string& problem) const {
    throw InputError(fmt::format("{}:{}: {}", FileName(), line, problem));
}

void CsvReader::FailAt(std::size_t place, const std::string& problem) const {
    Fail(mRowLine, Column(place) + ": " + problem);
}

std::string CsvReader::Column(std::size_t place) const {
    if (mFile == mFileHeadings.size() || place >= mFileHeadings[mFile].size()) {
        return fmt::format("column {}", place + 1);
    }
    return fmt::format("column {} \"{}\"", place + 1, Shortened(mFileHeadings[mFile][place]));
}

}  // namespace app
