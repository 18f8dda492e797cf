// Any records from a source that may fail, with any cut points: a failure has its cause in the
// case, and a summary agrees with one that is computed from the records in a plainer way. So does
// one of records that are pushed in, and what is merged of two halves.

#include <algorithm>

#include "SameSummary.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/diststats/MAMerge.h"
#include "accredit/diststats/MASummaryBuilder.h"
#include "accredit/host/MAStatus.h"
#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/MCVariable.h"
#include "fakes/Seams.h"

using fuzz::Input;
using fuzz::Require;
using fuzz::Same;
using fuzz::Slot;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

// The memory that a code takes is the caller's, so codes beyond this would only find that there is
// not enough of it.
constexpr double kMaxCode = 65536.0;

using Lists = std::vector<std::vector<double>>;

struct Case {
    explicit Case(Input& input) {
        const std::size_t variables = input.Below(9);
        for (std::size_t i = 0; i < variables; ++i) AddVariable(input);
        cutPoints.resize(input.Below(8));
        for (std::vector<double>& cuts : cutPoints) cuts = input.Numbers();
        cancelAt = static_cast<int>(input.Below(8));
        failAt = input.Below(32);
        errorState = static_cast<int>(input.Below(4));
        rewindAnswer = static_cast<int>(input.Below(2));
        while (!input.Empty()) AddRow(input);
    }

    void AddVariable(Input& input) {
        const std::size_t kind = input.Below(5);
        const auto role =
            kind == 4 ? IMCVariable::VariableRoleNone : IMCVariable::VariableRoleInput;
        const MCVariable variable("v", static_cast<int>(kind), role);
        if (kind == IMCVariable::MeasureLevelNominal) {
            list.Add(variable, MCMTD_NAMESPACE::MCStringEncoder({"a", "b", "c"}));
        } else {
            list.Add(variable);
        }
    }

    void AddRow(Input& input) {
        std::vector<double> row(list.Size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = input.Number();
            const int level = list.GetVarAt(static_cast<int>(i))->GetMeasureLevel();
            if (MCMTD_NAMESPACE::IsCategoricalLevel(level) && row[i] < 0x1p31) {
                row[i] = std::min(row[i], kMaxCode);
            }
        }
        if (input.Below(32) == 9) row.resize(input.Below(12));
        rows.push_back(std::move(row));
    }

    MADistStatsImp Run(const Lists& cuts) {
        fakes::RecordSource source(rows);
        if (failAt != 0) source.FailAt(failAt, errorState);
        source.FailRewind(rewindAnswer);
        fakes::Query query(cancelAt);
        MADistStatsImp stats(list, source, cuts, &query);
        Require(source.fetches == rows.size() * static_cast<std::size_t>(source.rewinds + 1),
                "every record is read once a pass");
        Require(failAt == 0 || source.fetches < failAt, "the source's failure is seen");
        Require(source.rewinds <= (cuts.empty() ? 1 : 0), "given cut points make one pass");
        Require(source.rewinds == 0 || rewindAnswer == 0, "the failure to rewind is seen");
        Require(cancelAt == 0 || query.polls < cancelAt, "the cancellation is seen");
        return stats;
    }

    bool HasShortRow() const {
        return std::any_of(rows.begin(), rows.end(),
                           [this](const auto& row) { return row.size() != list.Size(); });
    }

    MCVarList list;
    Lists cutPoints;
    Lists rows;
    int cancelAt = 0;
    std::size_t failAt = 0;
    int errorState = 0;
    int rewindAnswer = 0;
};

// All slots; the lists of categorical variables may hold anything.
bool CutPointsFit(const MADistStatsImp& empty, const Lists& cuts) {
    if (cuts.empty()) return true;
    if (cuts.size() != empty.GetVarCount()) return false;
    for (unsigned int slot = 0; slot < empty.GetVarCount(); ++slot) {
        if (empty.IsCategorical(slot)) continue;
        for (std::size_t j = 1; j < cuts[slot].size(); ++j) {
            if (!(cuts[slot][j - 1] < cuts[slot][j])) return false;
        }
    }
    return true;
}

void CheckFailure(const Case& c, long code) {
    switch (code) {
        case MAStatusNoInputVars:
            return Require(c.list.GetNumInputVars() == 0, "no input variable");
        case MAStatusBadCutPoints:
            return Require(!CutPointsFit(MADistStatsImp(c.list, nullptr), c.cutPoints),
                           "cut points that do not fit");
        case MAStatusRecordSource:
            return Require((c.failAt != 0 && c.errorState != 2) || c.rewindAnswer != 0,
                           "a source that fails");
        case MAStatusRecordSize:
            return Require(c.HasShortRow(), "a record of another size");
        case MAStatusCancelled:
            return Require(c.cancelAt != 0 || (c.failAt != 0 && c.errorState == 2),
                           "a cancellation");
        default:
            Require(false, "the code is one of those documented");
    }
}

void CheckCategorical(const Slot& slot, const std::vector<double>& values) {
    std::vector<double> frequencies;
    unsigned long count = 0;
    for (const double value : values) {
        if (!(value > -1.0 && value <= kMaxCode)) continue;
        const auto code = static_cast<std::size_t>(value);
        frequencies.resize(std::max(frequencies.size(), code + 1));
        ++frequencies[code];
        ++count;
    }
    Require(Same(slot.frequencies, frequencies) && slot.count == count, "categories are counted");
    Require(MCMV::IsMissing(slot.min) && MCMV::IsMissing(slot.max) && MCMV::IsMissing(slot.mean) &&
                MCMV::IsMissing(slot.stdDev),
            "a categorical variable has no summary values");
}

void CheckBins(const Slot& slot, const std::vector<double>& values) {
    Require(slot.cutPoints.empty() ? slot.frequencies.empty()
                                   : slot.frequencies.size() == slot.cutPoints.size() + 1,
            "k cut points make k + 1 bins");
    double below = 0.0;
    for (std::size_t j = 0; j < slot.frequencies.size(); ++j) {
        below += slot.frequencies[j];
        if (j == slot.cutPoints.size()) {
            Require(below == static_cast<double>(values.size()), "every value is in a bin");
        } else if (std::none_of(slot.cutPoints.begin(), slot.cutPoints.end(),
                                [](double cut) { return std::isnan(cut); })) {
            const auto expected = std::count_if(values.begin(), values.end(), [&](double value) {
                return !(value > slot.cutPoints[j]);
            });
            Require(below == static_cast<double>(expected), "bins are closed on the right");
        }
    }
}

// Where squares neither overflow nor vanish; the bounds are those of Welford's update.
void CheckMoments(const Slot& slot, const std::vector<double>& values) {
    const bool tame = std::all_of(values.begin(), values.end(), [](double value) {
        const double size = std::fabs(value);
        return size == 0.0 || (size > 1e-100 && size < 1e100);
    });
    if (values.empty() || !tame) return;
    const auto [min, max] = std::minmax_element(values.begin(), values.end());
    Require(slot.min == *min && slot.max == *max, "minimum and maximum are those of the values");
    const auto n = static_cast<long double>(values.size());
    long double sum = 0.0L;
    for (const double value : values) sum += value;
    const long double mean = sum / n;
    long double squares = 0.0L;
    for (const double value : values) squares += (value - mean) * (value - mean);
    const double bound =
        8e-16 * static_cast<double>(n) * std::max(std::fabs(slot.min), std::fabs(slot.max));
    Require(std::fabs(static_cast<double>(slot.mean - mean)) <= bound, "the mean");
    if (values.size() == 1) return Require(MCMV::IsMissing(slot.stdDev), "no deviation of one");
    const long double stdDev = std::sqrt(squares / (n - 1.0L));
    Require(std::fabs(static_cast<double>(slot.stdDev - stdDev)) <= bound, "the deviation");
}

MADistStats Pushed(const Case& c, const Lists& cuts, std::size_t from, std::size_t to) {
    MASummaryBuilder builder(c.list, cuts);
    for (std::size_t i = from; i < to; ++i) {
        Require(builder.Add(c.rows[i]).IsOK(), "a record is taken");
    }
    Require(builder.Add(std::vector<double>(c.list.Size() + 1)).GetCode() == MAStatusRecordSize,
            "a record of another size is refused");
    Require(builder.GetRecordCount() == to - from, "records are counted");
    return builder.GetDistStats();
}

void CheckMerged(const Case& c, const MADistStats& whole, const MADistStats& first,
                 const MADistStats& second) {
    const MAMerged merged = MAMergeDistStats(first, second);
    if (merged.problem == MAMergeProblem::OtherCutPoints) {
        const auto& cuts = whole.GetCutPoints(static_cast<unsigned int>(merged.slot));
        return Require(cuts.size() == 1 && std::isnan(cuts[0]), "cut points that do not differ");
    }
    Require(merged.problem == MAMergeProblem::None, "halves can be merged");
    for (unsigned int s = 0; s < whole.GetVarCount(); ++s) {
        const Slot wanted(whole, s);
        const Slot got(merged.stats, s);
        const int position = whole.GetVarListIndex(s);
        Require(got.count == wanted.count && Same(got.cutPoints, wanted.cutPoints),
                "cases are added up");
        Require(Same(got.frequencies, wanted.frequencies), "frequencies are added up");
        if (whole.IsCategorical(s)) continue;
        std::vector<double> values;
        for (const std::vector<double>& row : c.rows) {
            const double value = row[static_cast<std::size_t>(position)];
            if (!MCMV::IsMissing(value)) values.push_back(value);
        }
        if (std::any_of(values.begin(), values.end(), [](double v) { return std::isnan(v); })) {
            continue;
        }
        Require(Same(got.min, wanted.min) && Same(got.max, wanted.max), "the range is of both");
        Require(got.min != got.max || got.count < 2 || got.stdDev == 0.0,
                "what does not vary has the deviation 0");
        CheckMoments(got, values);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Case c(input);
    try {
        const MADistStatsImp stats = c.Run(c.cutPoints);
        Require(!c.HasShortRow(), "a record of another size is seen");
        Require(CutPointsFit(stats, c.cutPoints), "bad cut points are seen");
        Lists cuts;
        for (unsigned int s = 0; s < stats.GetVarCount(); ++s) {
            std::vector<double> values;
            const auto column = static_cast<std::size_t>(stats.GetVarListIndex(s));
            for (const std::vector<double>& row : c.rows) {
                if (!MCMV::IsMissing(row[column])) values.push_back(row[column]);
            }
            const Slot slot(stats, s);
            cuts.push_back(slot.cutPoints);
            if (stats.IsCategorical(s)) {
                CheckCategorical(slot, values);
                continue;
            }
            Require(slot.count == values.size(), "cases are counted");
            CheckBins(slot, values);
            CheckMoments(slot, values);
        }
        if (!CutPointsFit(stats, cuts)) return 0;
        Require(fuzz::SlotsOf(c.Run(cuts)) == fuzz::SlotsOf(stats),
                "one pass with the cut points gives what two passes gave");
        const std::size_t half = c.rows.size() / 2;
        const MADistStats whole = Pushed(c, cuts, 0, c.rows.size());
        Require(fuzz::SlotsOf(whole) == fuzz::SlotsOf(stats),
                "records that are pushed in give what a pass gives");
        CheckMerged(c, whole, Pushed(c, cuts, 0, half), Pushed(c, cuts, half, c.rows.size()));
    } catch (const MCCommon::MCStatus& status) {
        CheckFailure(c, status.GetCode());
    }
    return 0;
}
