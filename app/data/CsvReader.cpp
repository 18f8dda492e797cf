#include "app/data/CsvReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <thread>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/data/CellText.h"
#include "app/data/OtherFormats.h"
#include "app/data/RowSplitter.h"

namespace app {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kSeparatorLine = "sep=";
// Those that are found without being told, the preferred one first.
constexpr std::string_view kUsualDelimiters = ",;\t";

// More than these would wait for the one that reads the file and uses its rows.
constexpr unsigned int kMaxProcessors = 4;

std::size_t HelperCount() {
    return std::clamp(std::thread::hardware_concurrency(), 1U, kMaxProcessors) - 1;
}

bool IsLineEnd(char byte) { return byte == '\n' || byte == '\r'; }

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
    : mPaths(1), mReading(reading), mFormat(format), mHelpers(HelperCount()) {
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
      mCancel(&cancel),
      mHelpers(HelperCount()) {
    BeginFile();
}

std::string CsvReader::Name() const {
    const std::string first = mFiles.front()->Name();
    return mPaths.size() == 1 ? first : fmt::format("{} and {} more", first, mPaths.size() - 1);
}

// Opens the file at mFile, or takes it up again at its beginning, and reads its heading.
void CsvReader::BeginFile() {
    if (mFile == mFiles.size()) OpenFile();
    mQueue.reset();
    mPieces = std::make_unique<PieceReader>(*mFiles[mFile], mPieceSize);
    mPiece = std::make_unique<CsvPiece>();
    const std::vector<std::string> headings = ReadHeading();
    if (mFile == mFileHeadings.size()) mFileHeadings.push_back(headings);
    if (headings != mFileHeadings[mFile]) RefuseChanged();
    if (mFile == 0) mHeadings = headings;
    mHasRows = false;
    mPlaces = PlacesIn(*this);
    mRowFormat = {mDelimiter, mFormat.decimalComma, headings.size()};
    PlaceNumbers();
}

void CsvReader::ExpectNumbers(std::vector<std::size_t> columns) {
    mExpectedNumbers = std::move(columns);
    if (!mQueue) PlaceNumbers();
}

void CsvReader::PlaceNumbers() {
    mRowFormat.numbers.clear();
    mNumberPlaces.assign(mHeadings.size(), kNoPlace);
    for (const std::size_t column : mExpectedNumbers) {
        const std::size_t place = mPlaces.empty() ? column : mPlaces[column];
        if (place == kNoPlace) continue;
        mNumberPlaces[column] = mRowFormat.numbers.size();
        mRowFormat.numbers.push_back(place);
    }
}

void CsvReader::OpenFile() {
    mFiles.push_back(std::make_unique<InputFile>(mPaths[mFile], *mProgress, *mCancel));
    if (mReading == Reading::Repeated) mFiles.back()->KeepForRewind();
}

std::vector<std::string> CsvReader::ReadHeading() {
    CsvPiece& piece = *mPiece;
    mLine = 1;
    bool found = mPieces->Read(piece);
    const std::string_view beginning(piece.bytes.data(), piece.read);
    if (const auto problem = OtherFormat(beginning)) throw InputError(FileName() + ": " + *problem);
    if (beginning.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
        piece.begin = kByteOrderMark.size();
    }
    found = found && FindHeading();
    if (found && PassOverSeparatorLine()) {
        found = FindHeading();
    } else if (found && !mFormat.delimiter) {
        FindDelimiter();
    }
    if (!found) throw InputError(FileName() + ": the file is empty, there is no heading");
    mDelimiter = mFormat.delimiter.value_or(mDelimiter);
    const RowFormat format{mDelimiter};
    RowSplitter(format, piece).SplitRow();
    if (piece.error) Fail(*piece.error);
    mRowLine = mLine + piece.rows.front().line;
    std::vector<std::string> headings;
    for (std::size_t i = 0; i < piece.fieldCount; ++i) {
        headings.emplace_back(piece.Text(piece.fields[i]));
    }
    piece.rows.clear();
    mNextRow = 0;
    return headings;
}

// Goes to the next line that is not blank. False at the end of the file.
bool CsvReader::FindHeading() {
    const RowFormat format;
    while (!RowSplitter(format, *mPiece).FindRow()) {
        mLine += mPiece->lineEnds;
        if (!mPieces->Read(*mPiece)) return false;
    }
    return true;
}

// Goes behind a first line that names the delimiter, in quotes or not, and takes that.
bool CsvReader::PassOverSeparatorLine() {
    constexpr std::size_t kLongest = kSeparatorLine.size() + 3;
    std::string_view line = mPiece->Rest();
    line = line.substr(0, line.find_first_of("\r\n"));
    const std::size_t length = line.size();
    if (length == kLongest && line.front() == '"' && line.back() == '"') {
        line = line.substr(1, length - 2);
    }
    if (line.size() != kSeparatorLine.size() + 1 ||
        line.substr(0, kSeparatorLine.size()) != kSeparatorLine || !IsDelimiter(line.back())) {
        return false;
    }
    mDelimiter = line.back();
    mPiece->begin += length;
    return true;
}

// Takes the delimiter that the heading has most of.
void CsvReader::FindDelimiter() {
    std::array<std::size_t, kUsualDelimiters.size()> counts{};
    bool quoted = false;
    bool fieldBegins = true;
    const std::string_view text = mPiece->Rest();
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (!quoted && IsLineEnd(byte)) break;
        if (quoted && text.substr(at, 2) == "\"\"") {
            ++at;
        } else if (byte == '"') {
            quoted = !quoted && fieldBegins;
        }
        const std::size_t usual = quoted ? std::string_view::npos : kUsualDelimiters.find(byte);
        fieldBegins = usual != std::string_view::npos;
        if (fieldBegins) ++counts[usual];
    }
    const auto most = std::max_element(counts.begin(), counts.end());
    mDelimiter = kUsualDelimiters[static_cast<std::size_t>(most - counts.begin())];
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

const std::vector<std::string_view>& CsvReader::Fields() const {
    if (!mHasFields) {
        mFields.resize(mHeadings.size());
        for (std::size_t column = 0; column < mFields.size(); ++column) {
            mFields[column] = Field(column);
        }
        mHasFields = true;
    }
    return mFields;
}

double CsvReader::UnexpectedNumber(std::size_t column) const {
    return NumberIn(Field(column), mFormat.decimalComma);
}

bool CsvReader::Next() {
    while (mNextRow == mPiece->rows.size()) {
        if (!TakePiece() && !BeginNextFile()) return false;
    }
    const CsvPiece::Row& row = mPiece->rows[mNextRow];
    mFirstField = mNextRow * *mRowFormat.columns;
    mFirstNumber = mNextRow * mRowFormat.numbers.size();
    ++mNextRow;
    mRowLine = mLine + row.line;
    mHasRows = true;
    mHasFields = false;
    if (mFingerprint) AddToFingerprint(row);
    return true;
}

// Goes to the rows behind those of the piece. False at the end of the file.
bool CsvReader::TakePiece() {
    std::unique_ptr<CsvPiece> used;
    if (mQueue) {
        if (mPiece->error) Fail(*mPiece->error);
        mLine += mPiece->lineEnds;
        used = std::move(mPiece);
    } else {
        mQueue = std::make_unique<PieceQueue>(*mPieces, mRowFormat, std::move(mPiece), mHelpers);
    }
    mNextRow = 0;
    mPiece = mQueue->Take(std::move(used));
    if (mPiece) return true;
    mPiece = std::make_unique<CsvPiece>();
    return false;
}

// False if there is none.
bool CsvReader::BeginNextFile() {
    if (!mHasRows && mFileWithoutRows.empty()) mFileWithoutRows = FileName();
    if (mFingerprint) mFingerprints.push_back(mHasRows ? mFingerprint->Text() : std::string());
    mFingerprint.reset();
    if (mFile + 1 == mPaths.size()) return false;
    ++mFile;
    BeginFile();
    if (mFingerprints.size() == mFile) BeginFingerprint();
    return true;
}

void CsvReader::BeginFingerprint() {
    mFingerprint.emplace();
    for (const std::string& heading : mFileHeadings[mFile]) mFingerprint->AddRow({heading});
}

void CsvReader::AddToFingerprint(const CsvPiece::Row& row) {
    const CsvPiece::Field* const fields = RowFields();
    const std::size_t count = *mRowFormat.columns;
    if (row.hasQuotes || mDelimiter != ',') {
        mCells.resize(count);
        std::transform(fields, fields + count, mCells.begin(),
                       [this](const CsvPiece::Field& field) { return mPiece->Text(field); });
        mFingerprint->AddRow(mCells);
    } else {
        const CsvPiece::Field& last = fields[count - 1];
        mFingerprint->AddPlainRow(
            mPiece->Text({fields->begin, last.begin + last.size - fields->begin}));
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

void CsvReader::Fail(const CsvPiece::Error& error) const {
    Fail(mLine + error.line, error.place, error.problem);
}

void CsvReader::FailAt(std::size_t place, const std::string& problem) const {
    Fail(mRowLine, place, problem);
}

void CsvReader::Fail(unsigned long long line, std::size_t place, const std::string& problem) const {
    throw InputError(fmt::format("{}:{}: {}: {}", FileName(), line, Column(place), problem));
}

std::string CsvReader::Column(std::size_t place) const {
    if (mFile == mFileHeadings.size() || place >= mFileHeadings[mFile].size()) {
        return fmt::format("column {}", place + 1);
    }
    return fmt::format("column {} \"{}\"", place + 1, Shortened(mFileHeadings[mFile][place]));
}

}  // namespace app
