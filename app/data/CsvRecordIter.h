#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCNumberEncoder.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"
#include "app/data/CategoryEncoder.h"
#include "app/data/Column.h"
#include "app/data/CsvReader.h"

namespace app {

/// The rows of a file as records, one value for each column. Categories get their codes in the
/// order in which they first appear, and the encoders grow while the file is read, but no more
/// after a Rewind. In a column that is compared with a reference, all that is no category of the
/// reference is one category.
///
/// What is wrong with the file is thrown as InputError, through whoever reads the records: a record
/// source can otherwise only say that it failed.
class CsvRecordIter : public MCCommon::MultiPassRecordIter {
public:
    /// The file and the missing tokens must outlive this. `columns` has one entry for each column
    /// of the file.
    CsvRecordIter(CsvReader& reader, const std::vector<Column>& columns,
                  const MADocuments::MissingTokens& missing);

    /// The list that describes the records: a variable for each column, an input variable unless
    /// the column is ignored. It shares the encoders with this.
    const MCMTD_NAMESPACE::MCVarList& VarList() const { return mVarList; }

    /// The number of records given out since the beginning or the last Rewind.
    std::uint64_t RecordCount() const { return mRecordCount; }

    /// The first text, shortened and fit to be shown, that the column at this position of the list
    /// holds and its reference does not; empty if there is none.
    std::string UnknownCategory(int position) const;

    /// Throws InputError, Cancelled.
    bool HasMoreRecords() override;
    /// Throws InputError, Cancelled.
    const MCCommon::Record* GetNextRecord() override;
    int GetErrorState() override;
    /// Throws InputError.
    int Rewind() override;

private:
    // A column that is not ignored. It has the encoder of its kind.
    struct Source {
        std::size_t column;
        ColumnKind kind;
        std::shared_ptr<CategoryEncoder> texts;
        std::shared_ptr<MCMTD_NAMESPACE::MCNumberEncoder> numbers;
        const MCMTD_NAMESPACE::IMCEncoder* reference;  // null if it has none
        int unknown = -1;       // the code of all that is no category of the reference
        std::size_t bytes = 0;  // what its categories take
    };

    void AddVariable(const Column& column, std::size_t position);
    double Value(Source& source, std::string_view field);
    int TextCategory(Source& source, std::string_view field);
    int NumberCategory(Source& source, std::string_view text);
    int UnknownCode(Source& source, std::string_view text);
    void CountCategory(Source& source, std::size_t length);

    CsvReader& mReader;
    const MADocuments::MissingTokens& mMissing;
    std::vector<Source> mSources;
    MCMTD_NAMESPACE::MCVarList mVarList;
    std::vector<double> mValues;
    MCCommon::Record mRecord;
    std::map<std::size_t, std::string> mUnknown;  // by column
    std::size_t mCategoryBytes = 0;
    bool mRewound = false;
    bool mHasRow = false;
    std::uint64_t mRecordCount = 0;
};

}  // namespace app
