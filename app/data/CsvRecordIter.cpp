#include "app/data/CsvRecordIter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "accredit/documents/NewRecords.h"
#include "accredit/documents/NumberText.h"
#include "accredit/host/IMCVariable.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCVariable.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"
#include "app/data/CellText.h"

using MCCommon::Record;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCVariable;

using MADocuments::kCategorySize;
using MADocuments::kMaxCategoryBytes;
using MADocuments::MissingTokens;
using MADocuments::TrimBlanks;
using MADocuments::UncountedData;

namespace app {

namespace {

constexpr std::size_t kMiB = 1'048'576;

// Every whole number up to this one is a double of its own.
constexpr double kMaxWhole = 9007199254740992.0;

// Whether no other whole number than the one that `text` spells gives this double.
bool IsOneCategory(double number, std::string_view text) {
    if (std::abs(number) != kMaxWhole) return std::abs(number) < kMaxWhole;
    // The next whole number is rounded to this one.
    const std::string_view digits =
        text.substr(std::min(text.find_first_of("123456789"), text.size()));
    constexpr std::string_view kDigits = "9007199254740992";
    return digits.substr(0, kDigits.size()) == kDigits &&
           digits.find_first_not_of("0.,", kDigits.size()) == std::string_view::npos;
}

// A categorical variable whose encoder grows.
class GrowingVariable : public MCVariable {
public:
    GrowingVariable(std::string name, int measureLevel, std::shared_ptr<IMCEncoder> encoder)
        : MCVariable(std::move(name), measureLevel), mEncoder(std::move(encoder)) {}

    int GetNumCategories() const override { return mEncoder->GetNumCategories(); }

private:
    std::shared_ptr<IMCEncoder> mEncoder;
};

}  // namespace

CsvRecordIter::CsvRecordIter(CsvReader& reader, const std::vector<Column>& columns,
                             const MissingTokens& missing)
    : mReader(reader),
      mMissing(missing),
      mValues(columns.size(), MCMV::Missing()),
      mRecord(mValues.data(), static_cast<int>(mValues.size())) {
    for (std::size_t i = 0; i < columns.size(); ++i) AddVariable(columns[i], i);
    const std::vector<std::string> tokens = missing.Texts();
    const bool numbersCanBeMissing =
        std::any_of(tokens.begin(), tokens.end(), [&reader](const std::string& token) {
            return ParseCell(token, reader.HasDecimalComma()).has_value();
        });
    std::vector<std::size_t> numbers;
    for (Source& source : mSources) {
        source.takesAnyNumber = source.kind == ColumnKind::Continuous && !numbersCanBeMissing;
        if (source.kind != ColumnKind::TextCategory) numbers.push_back(source.column);
    }
    reader.ExpectNumbers(std::move(numbers));
}

void CsvRecordIter::AddVariable(const Column& column, std::size_t position) {
    Source source{position, column.kind, nullptr, nullptr, column.reference, column.isCompared};
    if (column.kind != ColumnKind::TextCategory) source.uncounted.unreadable = 0;
    std::shared_ptr<IMCEncoder> encoder;
    switch (column.kind) {
        case ColumnKind::Ignored:
            mVarList.Add(MCVariable(column.name, IMCVariable::MeasureLevelContinuous,
                                    IMCVariable::VariableRoleNone));
            return;
        case ColumnKind::Continuous:
            mVarList.Add(MCVariable::Continuous(column.name));
            break;
        case ColumnKind::TextCategory:
            encoder = source.texts = std::make_shared<CategoryEncoder>();
            break;
        case ColumnKind::NumberCategory:
            encoder = source.numbers = std::make_shared<MCNumberEncoder>();
            break;
    }
    if (encoder) {
        mVarList.AddShared(
            std::make_shared<GrowingVariable>(column.name, column.measureLevel, encoder), encoder);
    }
    mSources.push_back(std::move(source));
}

bool CsvRecordIter::HasMoreRecords() {
    if (!mHasRow) mHasRow = mReader.Next();
    return mHasRow;
}

const Record* CsvRecordIter::GetNextRecord() {
    if (!HasMoreRecords()) return nullptr;
    mHasRow = false;
    ++mRecordCount;
    for (Source& source : mSources) {
        double& value = mValues[source.column];
        value = source.takesAnyNumber ? mReader.Number(source.column) : MCMV::Missing();
        if (!source.takesAnyNumber || std::isnan(value)) value = Value(source);
    }
    return &mRecord;
}

const CsvRecordIter::Source& CsvRecordIter::At(int position) const {
    return *std::lower_bound(
        mSources.begin(), mSources.end(), static_cast<std::size_t>(position),
        [](const Source& each, std::size_t column) { return each.column < column; });
}

UncountedData CsvRecordIter::Uncounted(int position, std::uint64_t cases) const {
    UncountedData uncounted = At(position).uncounted;
    uncounted.missing = mRecordCount - cases - uncounted.unreadable.value_or(0);
    return uncounted;
}

int CsvRecordIter::GetErrorState() { return ErrorStateNone; }

int CsvRecordIter::Rewind() {
    mHasRow = false;
    mRewound = true;
    mRecordCount = 0;
    for (Source& source : mSources) {
        if (source.uncounted.unreadable) source.uncounted.unreadable = 0;
    }
    mReader.Rewind();
    return 0;
}

double CsvRecordIter::Value(Source& source) {
    const std::string_view field = mReader.Field(source.column);
    if (field.empty()) return MCMV::Missing();
    if (source.texts) {
        const int code = source.texts->FindRecent(field);
        if (code >= 0) return code;
    }
    const std::string_view text = TrimBlanks(field);
    if (mMissing.Contains(text)) return MCMV::Missing();
    if (source.texts) return TextCategory(source, field);
    const double number = mReader.Number(source.column);
    if (std::isnan(number)) return UnreadableValue(source, text);
    return source.kind == ColumnKind::Continuous ? number : NumberCategory(source, number, text);
}

double CsvRecordIter::UnreadableValue(Source& source, std::string_view text) {
    if (!source.isCompared && source.kind != ColumnKind::Continuous) mReader.RefuseChanged();
    if ((*source.uncounted.unreadable)++ == 0) {
        source.uncounted.firstUnreadableLine = mReader.RowLine();
        source.uncounted.firstUnreadableText = Shortened(text);
        source.unreadableFile = mReader.FileName();
    }
    return MCMV::Missing();
}

int CsvRecordIter::TextCategory(Source& source, std::string_view field) {
    const int code = source.texts->FindCategory(field);
    if (code >= 0) return code;
    if (!source.isCompared) {
        CountCategory(source, field.size());
    } else if (source.reference->EncodeString(std::string(field)) < 0.0 &&
               !HasRoomForUnknown(field.size())) {
        return OtherCategories(source);
    }
    return source.texts->AddCategory(field);
}

double CsvRecordIter::NumberCategory(Source& source, double number, std::string_view text) {
    if (!IsOneCategory(number, text)) {
        mReader.Refuse(source.column,
                       fmt::format("\"{}\" lies beyond {:.0f}, where several whole numbers are one "
                                   "double and would be one category; {} leaves the column out",
                                   Shortened(text), kMaxWhole,
                                   ShellOption("--ignore", mReader.Headings()[source.column])));
    }
    const double code = source.numbers->EncodeNumber(number);
    if (code >= 0.0) return code;
    if (!source.isCompared) {
        CountCategory(source, 0);
    } else if (source.reference->EncodeNumber(number) < 0.0 && !HasRoomForUnknown(0)) {
        return OtherCategories(source);
    }
    return source.numbers->AddCategory(number);
}

// Once there is no room for one category there is none for any later one, so that those with a name
// are the first of the file.
bool CsvRecordIter::HasRoomForUnknown(std::size_t length) {
    if (!mReferenceIsCounted) {
        for (const Source& each : mSources) {
            if (each.reference) mCategoryBytes += MADocuments::CategoryBytes(*each.reference);
        }
        mReferenceIsCounted = true;
    }
    if (mNoRoom) return false;
    mCategoryBytes += kCategorySize + length;
    mNoRoom = mCategoryBytes > kMaxCategoryBytes;
    return !mNoRoom;
}

// A NaN equals no number.
int CsvRecordIter::OtherCategories(Source& source) {
    int& code = source.uncounted.otherCategories;
    if (code < 0) {
        code = source.texts ? source.texts->AddNamelessCategory()
                            : source.numbers->AddCategory(std::numeric_limits<double>::quiet_NaN());
    }
    return code;
}

void CsvRecordIter::CountCategory(Source& source, std::size_t length) {
    if (mRewound) mReader.RefuseChanged();
    source.bytes += kCategorySize + length;
    mCategoryBytes += kCategorySize + length;
    if (mCategoryBytes <= kMaxCategoryBytes) return;
    const auto largest = std::max_element(
        mSources.begin(), mSources.end(),
        [](const Source& left, const Source& right) { return left.bytes < right.bytes; });
    mReader.Refuse(largest->column,
                   fmt::format("the categories take more than {} MiB, most of them in this column; "
                               "--ignore leaves it out; if it has numbers and texts for missing "
                               "ones, --missing reads those",
                               kMaxCategoryBytes / kMiB));
}

}  // namespace app
