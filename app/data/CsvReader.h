#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "app/base/InputFile.h"
#include "app/base/Progress.h"

namespace app {

/// Reads a file of comma-separated values as RFC 4180 has them, row by row: the first row is the
/// heading, a quoted field may hold commas, line ends and doubled quotes, and blanks belong to the
/// field. Lines end with LF, CR LF or CR; a byte-order mark is passed over, and so are blank lines,
/// except that behind the heading of a single column each is a row whose field is empty. The file
/// may be of any length, a row of it may not exceed 16 MiB or a million fields.
///
/// Whatever is not such a file is refused with InputError: a row with more or fewer fields than the
/// heading, a quote where none may stand or that is not closed, a NUL byte, a stored reference.
class CsvReader {
public:
    /// Reads the heading of a file of which nothing has been read yet, or all was put back. Throws
    /// InputError, Cancelled.
    explicit CsvReader(std::unique_ptr<InputFile> file);

    /// The same of a file that is opened here; see InputFile for the arguments.
    CsvReader(const std::string& path, Reading reading, Progress& progress, MCQueryCancel& cancel);

    /// The file's name for messages, fit to be shown.
    const std::string& Name() const { return mFile->Name(); }

    /// The headings, one for each column, one or more; they may be empty and the same.
    const std::vector<std::string>& Headings() const { return mHeadings; }

    /// Goes to the next row behind the heading, false at the end of the file.
    /// Throws InputError, Cancelled.
    bool Next();

    /// The fields of the row, as many as there are headings, without their quotes. They stay in
    /// place until the next call of Next or Rewind.
    const std::vector<std::string_view>& Fields() const { return mFields; }

    /// Goes back to before the first row of a file that is read repeatedly. Throws InputError, also
    /// when the file has changed.
    void Rewind();

    /// Throws the InputError of a file that has changed between its passes.
    [[noreturn]] void RefuseChanged() const { mFile->RefuseChanged(); }

    /// The line, from 1, on which the row begins.
    unsigned long long RowLine() const { return mRowLine; }

    /// Refuses the row for what it holds in this column, counted from 0. Throws InputError with the
    /// file, the line on which the row begins, the column and `problem`.
    [[noreturn]] void Refuse(std::size_t column, const std::string& problem) const;

private:
    void ReadHeading();
    enum class BlankLines { ArePassedOver, AreRows };

    bool ReadRow(BlankLines blankLines);
    bool FindRow(BlankLines blankLines);
    bool SplitRow();
    bool FindClosingQuote(const char*& at, unsigned long long line);
    void AddField(const char* begin, const char* end);
    [[noreturn]] void RefuseFurtherFields() const;
    void UndoubleQuotes();
    bool IsIncomplete(const char* at) const { return at == mEnd && !mAtEnd; }
    void Refill();
    [[noreturn]] void Fail(unsigned long long line, const std::string& problem) const;
    std::string Column(std::size_t column) const;

    std::unique_ptr<InputFile> mFile;
    std::vector<std::string> mHeadings;
    std::vector<std::string_view> mFields;
    std::vector<std::size_t> mDoubled;  // the fields of the row that hold doubled quotes
    std::size_t mMaxFields;

    // What has been read and not yet used is from mNext to mEnd. A line end stands at mEnd, so that
    // a search need not look out for the end.
    std::vector<char> mBuffer;
    const char* mNext;
    const char* mEnd;
    bool mAtEnd = false;

    unsigned long long mLine = 1;  // the line of mNext, from 1
    unsigned long long mRowLine = 1;
    bool mAfterCarriageReturn = false;
};

}  // namespace app
