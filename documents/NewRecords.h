#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "accredit/documents/Reference.h"
#include "accredit/host/AccreditExport.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/MCStatus.h"

/// @file
/// New data that comes record by record.

namespace MADocuments {

/// One value of a record: a number, a text, or none. A text that is not a temporary is not copied:
/// it must live until the record has been added.
class RecordValue {
public:
    /// What a value is.
    enum class Kind { None, Number, Text };

    /// No value.
    RecordValue() = default;
    /// A number of any type.
    template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
    RecordValue(Number number) : mKind(Kind::Number), mNumber(static_cast<double>(number)) {}
    /// A character is neither a number nor a text.
    RecordValue(char character) = delete;
    /// A text in UTF-8.
    RecordValue(std::string_view text) : mKind(Kind::Text), mText(text) {}
    /// The same.
    RecordValue(const std::string& text) : RecordValue(std::string_view(text)) {}
    /// The same of a temporary, which is kept.
    RecordValue(std::string&& text)
        : mKind(Kind::Text), mOwnsText(true), mOwnText(std::move(text)) {}
    /// The same; null is no value.
    RecordValue(const char* text)
        : mKind(text ? Kind::Text : Kind::None), mText(text ? text : std::string_view()) {}

    /// Which of the three it is.
    Kind GetKind() const { return mKind; }
    /// The number, 0 if it is none.
    double Number() const { return mNumber; }
    /// The text, empty if it is none.
    std::string_view Text() const { return mOwnsText ? std::string_view(mOwnText) : mText; }

private:
    Kind mKind = Kind::None;
    bool mOwnsText = false;
    double mNumber = 0.0;
    std::string_view mText;
    std::string mOwnText;
};

/// What the categories of a reference and of new data may take of memory. What has more has keys or
/// free texts among its variables, and no summary of those can be compared.
inline constexpr std::size_t kMaxCategoryBytes = 128 * std::size_t{1'048'576};
/// What a category takes of it besides its text: about its places in the encoder and the summary.
inline constexpr std::size_t kCategorySize = 128;

/// What the categories of an encoder take of it. One that takes more is not looked at to its end.
ACCREDIT_EXPORT std::size_t CategoryBytes(const MCMTD_NAMESPACE::IMCEncoder& encoder);

/// The cut points of each input variable of a reference with which new data is summarised, by slot;
/// see MACutPointsFor. Values that hardly vary at their size, or are so far apart that their
/// moments overflow, have cut points that do not ascend, which no data pass takes: there are none
/// then.
ACCREDIT_EXPORT std::vector<std::vector<double>> UsableCutPoints(const MADistStats& reference);

/// Summarises new data with the bins of a reference, from records that an application has one at a
/// time. It gives what `accredit learn --bins-of` makes of a file with the same rows, where that
/// takes them, and the comparison with the reference is the same to the last bit.
///
/// Nothing of the reference is kept but a copy. An object is used by one thread at a time; each
/// thread has its own, and Merge puts their summaries together. One that was moved from can only be
/// assigned to or destroyed.
class NewRecords {
public:
    /// No records yet. The categories that the reference lacks are kept by name as long as they
    /// take no more than `categoryBytes` together with those of the reference; all that come later
    /// are counted as one without a name, and so is a text that no document can hold: one that is
    /// not UTF-8 or has control characters other than tab and line end. Throws DocumentError,
    /// without a place, for a reference without variables.
    ACCREDIT_EXPORT explicit NewRecords(const Reference& reference,
                                        std::size_t categoryBytes = kMaxCategoryBytes);

    /// Takes over.
    ACCREDIT_EXPORT NewRecords(NewRecords&& other) noexcept;
    /// The same.
    ACCREDIT_EXPORT NewRecords& operator=(NewRecords&& other) noexcept;
    ACCREDIT_EXPORT ~NewRecords();

    /// Folds a record in: one value for each variable of the reference's list, in list order, whose
    /// places MCVarList::FindVariable tells. Those of variables that are no input variables are not
    /// looked at.
    ///
    /// No value, NaN, MCMV::Missing(), and a text that is one of the reference's missing tokens are
    /// missing. For numbers, a text counts as the number that it spells (see ParseNumber); one that
    /// spells none, and an infinity, are counted as unreadable. For categories of texts a number
    /// counts as the shortest text that gives it back. Blanks around a text do not count, but for
    /// categories of texts.
    ///
    /// Gives MAStatusRecordSize, and nothing changes, for a record of another length. If memory
    /// runs out, the record is not counted.
    ACCREDIT_EXPORT MCCommon::MCStatus Add(const std::vector<RecordValue>& record);

    /// The number of records that were folded in.
    ACCREDIT_EXPORT std::uint64_t RecordCount() const;

    /// The summary of the records so far, with the counts of missing and unreadable data and the
    /// tokens of the reference. In the place of the line of the first unreadable datum it has the
    /// number of its record, from 1. It shares nothing with this object, which goes on as if it had
    /// not been asked. What made it and its sources are left open.
    ACCREDIT_EXPORT Reference Summary() const;

    /// Forgets all records, and the categories that came with them.
    ACCREDIT_EXPORT void Clear();

private:
    struct State;

    std::unique_ptr<State> mState;
};

}  // namespace MADocuments
