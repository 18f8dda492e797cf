#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/Fingerprint.h"
#include "app/base/InputFile.h"
#include "app/base/Progress.h"
#include "app/data/CsvPiece.h"
#include "app/data/PieceQueue.h"
#include "app/data/PieceReader.h"

namespace app {

/// Whether fields can be set apart by this byte: one of ASCII that is no quote, line end or NUL,
/// and cannot be part of a number or a name.
bool IsDelimiter(char byte);

/// How files of data are written.
struct CsvFormat {
    /// What stands between fields; nothing if the heading of each file is to tell.
    std::optional<char> delimiter = {};
    /// Whether numbers have a comma where others have a point.
    bool decimalComma = false;
};

/// How often files are read.
enum class Reading { Once, Repeated };

/// Reads files of comma-separated values as RFC 4180 has them, row by row: the first row is the
/// heading, a quoted field may hold delimiters, line ends and doubled quotes, and blanks belong to
/// the field. Unless it is given, the delimiter is the most frequent one of comma, semicolon and
/// tab in the heading outside of quotes, the first of these on ties. Lines end with LF, CR LF or
/// CR; a byte-order mark is passed over, and so are a first line "sep=" with the delimiter behind
/// it, which some spreadsheets write, and blank lines, except that behind the heading of a single
/// column each is a row whose field is empty. A file may be of any length, a row of it may not
/// exceed 16 MiB or a million fields.
///
/// Several files are read one behind the other as if they were one. They have the same headings, in
/// any order, and each a delimiter of its own.
///
/// Whatever is not such a file is refused with InputError: a row with more or fewer fields than the
/// heading, a quote where none may stand or that is not closed, a NUL byte, a stored reference, and
/// files of other formats that begin with a mark of their own.
class CsvReader {
public:
    /// Reads the heading of a file of which nothing has been read yet, or all was put back. Throws
    /// InputError, Cancelled.
    CsvReader(std::unique_ptr<InputFile> file, Reading reading, const CsvFormat& format);

    /// The same of the first of one file or more, which are opened here, each when its turn comes;
    /// see InputFile for the arguments. `isOptional` says of which names columns may be absent from
    /// some of the files; null stands for none.
    CsvReader(std::vector<std::string> paths, Reading reading, const CsvFormat& format,
              std::function<bool(const std::string&)> isOptional, Progress& progress,
              MCQueryCancel& cancel);

    /// The name of the data for messages, fit to be shown: that of the first file, and how many
    /// there are besides.
    std::string Name() const;

    /// The name of the file that the row is from, fit to be shown.
    const std::string& FileName() const { return mFiles[mFile]->Name(); }

    /// That of a file that has been opened, counted from 0.
    const std::string& FileName(std::size_t file) const { return mFiles[file]->Name(); }

    std::size_t FileCount() const { return mPaths.size(); }

    /// The headings, one for each column, one or more; they may be empty and the same. Of several
    /// files, those of the first.
    const std::vector<std::string>& Headings() const { return mHeadings; }

    /// The headings of all files that have been opened so far, in their order.
    const std::vector<std::vector<std::string>>& FileHeadings() const { return mFileHeadings; }

    /// Refuses the file that another reader begins if it could not be one of these: because of a
    /// column that only one of them has, or one that stands twice. Throws InputError.
    void RequireSameColumns(const CsvReader& further) const;

    /// What stands between the fields of the file that the row is from.
    char Delimiter() const { return mDelimiter; }

    bool HasDecimalComma() const { return mFormat.decimalComma; }

    /// Goes to the next row behind the heading, false at the end of the last file.
    /// Throws InputError, OutputError, Cancelled.
    bool Next();

    /// The fields of the row, as many as there are headings and in their order, without their
    /// quotes. They stay in place until the next call of Next or Rewind.
    const std::vector<std::string_view>& Fields() const;

    /// The field of the row in this column, counted from 0; the same as in Fields, faster for a few
    /// of them.
    std::string_view Field(std::size_t column) const {
        const std::size_t place = mPlaces.empty() ? column : mPlaces[column];
        return place == kNoPlace ? std::string_view() : mPiece->Text(RowFields()[place]);
    }

    /// Has the fields of these columns read as numbers while rows are split, so that Number is fast
    /// for them. Takes effect before the first row, with the next file and with Rewind.
    void ExpectNumbers(std::vector<std::size_t> columns);

    /// The number that the field of the row in this column spells, blanks around it aside; see
    /// ParseCell. A NaN, which no text spells, for any other text.
    double Number(std::size_t column) const {
        const std::size_t place = mNumberPlaces[column];
        return place == kNoPlace ? UnexpectedNumber(column) : mPiece->numbers[mFirstNumber + place];
    }

    /// Takes the fingerprint of every file while it is read for the first time. To be called before
    /// the first row.
    void TakeFingerprints() { BeginFingerprint(); }

    /// Those of the files that have been read to their end, in their order; empty for a file
    /// without rows.
    const std::vector<std::string>& Fingerprints() const { return mFingerprints; }

    /// The name of the first file that turned out to have no rows, fit to be shown; empty if none
    /// has so far.
    const std::string& FileWithoutRows() const { return mFileWithoutRows; }

    /// Has files read in pieces of about so many bytes, at least 3, and split with the help of so
    /// many threads, from the next file and the next Rewind on. What is read is the same.
    void ReadInPieces(std::size_t size, std::size_t helpers) {
        mPieceSize = size;
        mHelpers = helpers;
    }

    /// Goes back to before the first row of files that are read repeatedly. Throws InputError, also
    /// when a file has changed, OutputError, Cancelled.
    void Rewind();

    /// Throws the InputError of a file that has changed between its passes.
    [[noreturn]] void RefuseChanged() const { mFiles[mFile]->RefuseChanged(); }

    /// The line, from 1, on which the row begins in its file.
    unsigned long long RowLine() const { return mRowLine; }

    /// Refuses the row for what it holds in this column, counted from 0. Throws InputError with the
    /// file, the line on which the row begins, the column and `problem`.
    [[noreturn]] void Refuse(std::size_t column, const std::string& problem) const;

private:
    static constexpr auto kNoPlace = static_cast<std::size_t>(-1);
    static constexpr std::size_t kPieceSize = std::size_t{1} << 17U;

    void BeginFile();
    void OpenFile();
    void BeginFingerprint();
    void AddToFingerprint(const CsvPiece::Row& row);
    std::vector<std::string> ReadHeading();
    bool FindHeading();
    bool PassOverSeparatorLine();
    void FindDelimiter();
    std::vector<std::size_t> PlacesIn(const CsvReader& further) const;
    void PlaceNumbers();
    double UnexpectedNumber(std::size_t column) const;
    bool TakePiece();
    bool BeginNextFile();
    const CsvPiece::Field* RowFields() const { return mPiece->fields.data() + mFirstField; }
    [[noreturn]] void Fail(const CsvPiece::Error& error) const;
    [[noreturn]] void FailAt(std::size_t place, const std::string& problem) const;
    [[noreturn]] void Fail(unsigned long long line, std::size_t place,
                           const std::string& problem) const;
    std::string Column(std::size_t place) const;

    // Every file that was opened stays open, so that it can be gone back in.
    std::vector<std::string> mPaths;
    std::vector<std::unique_ptr<InputFile>> mFiles;
    std::size_t mFile = 0;  // the one that is read
    Reading mReading;
    CsvFormat mFormat;
    std::function<bool(const std::string&)> mIsOptional;
    Progress* mProgress = nullptr;
    MCQueryCancel* mCancel = nullptr;

    std::vector<std::string> mHeadings;
    std::vector<std::vector<std::string>> mFileHeadings;  // of each file that was opened
    // Where the columns stand in the file that is read; empty if they stand in their order.
    std::vector<std::size_t> mPlaces;

    std::string mFileWithoutRows;             // the first one
    std::optional<Fingerprint> mFingerprint;  // of the file that is read, if it is taken
    std::vector<std::string> mFingerprints;
    std::vector<std::string_view> mCells;  // of the row, as the file has them, for the fingerprint
    char mDelimiter = ',';
    bool mHasRows = false;  // the file that is read

    std::size_t mPieceSize = kPieceSize;
    std::size_t mHelpers;
    std::unique_ptr<PieceReader> mPieces;
    RowFormat mRowFormat;                       // of the rows behind the heading
    std::vector<std::size_t> mExpectedNumbers;  // columns
    // Of each column, where its numbers are among those of a row.
    std::vector<std::size_t> mNumberPlaces;
    std::unique_ptr<CsvPiece> mPiece;
    std::unique_ptr<PieceQueue> mQueue;  // of the pieces behind it, null before the first row
    std::size_t mNextRow = 0;            // in the piece
    std::size_t mFirstField = 0;         // of the row
    std::size_t mFirstNumber = 0;
    // Made when they are first asked for.
    mutable std::vector<std::string_view> mFields;
    mutable bool mHasFields = false;

    unsigned long long mLine = 1;  // that on which the piece begins
    unsigned long long mRowLine = 1;
};

/// The complaint about a heading that cannot tell which column is meant.
inline constexpr const char* kHeadingTwice = "an earlier column has this heading";

/// The delimiter as messages name it, and the option that sets it.
std::string DelimiterName(char delimiter);
std::string DelimiterOption(char delimiter);

}  // namespace app
