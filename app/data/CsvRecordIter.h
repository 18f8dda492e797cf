#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/documents/MissingTokens.h"
#include "accredit/documents/Reference.h"
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
/// after a Rewind.
///
/// In columns that are compared with a reference, categories that the reference lacks get codes as
/// well, up to the limit for the categories of a reference, which they share with those of the
/// reference: whatever is new behind that is one category without a name. What is no number in a
/// column of numbers is counted and read as a missing value; so it is in a continuous column of a
/// reference.
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

    /// What the column at this position of the list holds besides its values, which a pass over the
    /// file found so many of.
    MADocuments::UncountedData Uncounted(int position, std::uint64_t cases) const;

    /// The file of the first unreadable datum of the column at this position, empty without one.
    std::string FirstUnreadableFile(int position) const { return At(position).unreadableFile; }

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
        bool isCompared;
        bool takesAnyNumber = false;  // because none is a missing value
        std::size_t bytes = 0;        // what its categories take
        MADocuments::UncountedData uncounted = {};
        std::string unreadableFile = {};
    };

    const Source& At(int position) const;

    void AddVariable(const Column& column, std::size_t position);
    double Value(Source& source);
    double UnreadableValue(Source& source, std::string_view text);
    int TextCategory(Source& source, std::string_view field);
    double NumberCategory(Source& source, double number, std::string_view text);
    bool HasRoomForUnknown(std::size_t length);
    int OtherCategories(Source& source);
    void CountCategory(Source& source, std::size_t length);

    CsvReader& mReader;
    const MADocuments::MissingTokens& mMissing;
    std::vector<Source> mSources;
    MCMTD_NAMESPACE::MCVarList mVarList;
    std::vector<double> mValues;
    MCCommon::Record mRecord;
    std::size_t mCategoryBytes = 0;
    bool mReferenceIsCounted = false;
    bool mNoRoom = false;
    bool mRewound = false;
    bool mHasRow = false;
    std::uint64_t mRecordCount = 0;
};

}  // namespace app
