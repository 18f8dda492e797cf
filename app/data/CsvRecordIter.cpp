#include "app/data/CsvRecordIter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "accredit/documents/NumberText.h"
#include "accredit/host/IMCVariable.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCVariable.h"
#include "app/base/Printable.h"
#include "app/base/ShellText.h"

using MCCommon::Record;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCNumberEncoder;
using MCMTD_NAMESPACE::MCVariable;

using MADocuments::MissingTokens;
using MADocuments::ParseNumber;
using MADocuments::TrimBlanks;

namespace app {

namespace {

// Every category takes memory for as long as the run lasts: its text, and about so much for its
// places in the encoder and the summary. Columns with more than this are keys or free texts, and no
// summary of them can be compared.
constexpr std::size_t kCategorySize = 128;
constexpr std::size_t kMiB = 1'048'576;
constexpr std::size_t kMaxCategoryBytes = 128 * kMiB;

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
           digits.find_first_not_of("0.", kDigits.size()) == std::string_view::npos;
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
}

void CsvRecordIter::AddVariable(const Column& column, std::size_t position) {
    Source source{position, column.kind, nullptr, nullptr, column.reference};
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
    const std::vector<std::string_view>& fields = mReader.Fields();
    for (Source& source : mSources) mValues[source.column] = Value(source, fields[source.column]);
    return &mRecord;
}

std::string CsvRecordIter::UnknownCategory(int position) const {
    const auto found = mUnknown.find(static_cast<std::size_t>(position));
    return found == mUnknown.end() ? std::string() : found->second;
}

int CsvRecordIter::GetErrorState() { return ErrorStateNone; }

int CsvRecordIter::Rewind() {
    mHasRow = false;
    mRewound = true;
    mRecordCount = 0;
    mReader.Rewind();
    return 0;
}

double CsvRecordIter::Value(Source& source, std::string_view field) {
    const std::string_view text = TrimBlanks(field);
    if (mMissing.Contains(text)) return MCMV::Missing();
    if (source.kind == ColumnKind::Continuous) {
        const std::optional<double> number = ParseNumber(text);
        if (number) return *number;
        if (!source.reference) mReader.RefuseChanged();
        const std::string& name = mReader.Headings()[source.column];
        mReader.Refuse(source.column,
                       fmt::format("{}; the column is continuous in the reference: {} when that is "
                                   "read or learned, or {}",
                                   NotANumber(text), ShellOption("--categorical", name),
                                   ShellOption("--ignore", name)));
    }
    return source.texts ? TextCategory(source, field) : NumberCategory(source, text);
}

int CsvRecordIter::TextCategory(Source& source, std::string_view field) {
    const int code = source.texts->FindCategory(field);
    if (code >= 0) return code;
    if (source.reference && source.reference->EncodeString(std::string(field)) < 0.0) {
        return UnknownCode(source, field);
    }
    CountCategory(source, field.size());
    return source.texts->AddCategory(field);
}

int CsvRecordIter::NumberCategory(Source& source, std::string_view text) {
    const std::optional<double> number = ParseNumber(text);
    if (!number && !source.reference) mReader.RefuseChanged();
    if (!number) return UnknownCode(source, text);
    if (!IsOneCategory(*number, text)) {
        mReader.Refuse(source.column,
                       fmt::format("\"{}\" lies beyond {:.0f}, where several whole numbers are one "
                                   "double and would be one category; {} leaves the column out",
                                   Shortened(text), kMaxWhole,
                                   ShellOption("--ignore", mReader.Headings()[source.column])));
    }
    const double code = source.numbers->EncodeNumber(*number);
    if (code >= 0.0) return static_cast<int>(code);
    if (source.reference && source.reference->EncodeNumber(*number) < 0.0) {
        return UnknownCode(source, text);
    }
    CountCategory(source, 0);
    return source.numbers->AddCategory(*number);
}

// Whatever the reference does not know gives the same status, be it one category or many: either
// the new data has more categories than the reference, or one of them has no partner there. One
// code for all of it keeps a new file from taking more memory than its reference. A NaN equals none
// of the reference's numbers.
int CsvRecordIter::UnknownCode(Source& source, std::string_view text) {
    if (source.unknown < 0) {
        source.unknown =
            source.texts ? source.texts->AddNamelessCategory()
                         : source.numbers->AddCategory(std::numeric_limits<double>::quiet_NaN());
        mUnknown.emplace(source.column, Shortened(text));
    }
    return source.unknown;
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
                               "--ignore leaves it out",
                               kMaxCategoryBytes / kMiB));
}

}  // namespace app
