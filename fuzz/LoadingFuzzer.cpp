// Loading operations with any values, one after the other: each is accepted exactly if what it is
// documented to look at is good; then it reads back, and nothing else has changed.

#include "SameSummary.h"
#include "accredit/diststats/MADistStatsImp.h"
#include "accredit/host/MCVariable.h"

using fuzz::Input;
using fuzz::Require;
using fuzz::Slot;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCUniStats;
using MCMTD_NAMESPACE::MCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

constexpr double kMissing = MCMV::Missing();

bool AreFrequencies(const std::vector<double>& values) {
    for (const double value : values) {
        if (!(value >= 0.0)) return false;
    }
    return true;
}

bool AscendFrom(std::size_t first, const std::vector<double>& values, std::size_t end) {
    for (std::size_t j = first + 1; j < end; ++j) {
        if (!(values[j - 1] < values[j])) return false;
    }
    return true;
}

struct Summary {
    explicit Summary(Input& input) : cases(input.Number()) {
        for (double* value : {&values.min, &values.max, &values.mean, &values.stdDev}) {
            *value = input.Number();
        }
    }

    bool IsGood(bool categorical, unsigned long count) const {
        if (categorical || count == 0) return true;
        if (values.mean == kMissing) return false;
        if (count == 1) return values.min == values.max;
        return values.min != kMissing && values.max != kMissing && values.stdDev != kMissing &&
               !(values.stdDev < 0.0) && !(values.max < values.min);
    }

    // Puts into `slot` what is to be read back.
    void StoreIn(Slot& slot, bool categorical, unsigned long count) const {
        const bool none = categorical || count == 0;
        slot.count = count;
        slot.min = none ? kMissing : values.min;
        slot.max = none ? kMissing : values.max;
        slot.mean = none ? kMissing : values.mean;
        slot.stdDev = none || count == 1 ? kMissing : values.stdDev;
    }

    double cases;
    MCUniStats::SummStats values;
};

class Fuzzer {
public:
    explicit Fuzzer(const MCVarList& list)
        : mList(list), mStats(list, nullptr), mExpected(fuzz::SlotsOf(mStats)) {}

    void Step(Input& input) {
        switch (input.Below(4)) {
            case 0:
                LoadCategories(input);
                break;
            case 1:
                LoadBins(input);
                break;
            case 2:
                LoadSummary(input);
                break;
            default:
                LoadAll(input);
        }
        Require(fuzz::SlotsOf(mStats) == mExpected, "what is accepted reads back, and only that");
    }

private:
    unsigned int SlotFrom(Input& input) const {
        return input.Below(16) == 9 ? ~0U : static_cast<unsigned int>(input.Below(8));
    }
    bool Exists(unsigned int slot) const { return slot < mStats.GetVarCount(); }

    bool CategoriesFit(unsigned int slot, const std::vector<double>& frequencies) const {
        const int categories = mList.GetVarAt(mStats.GetVarListIndex(slot))->GetNumCategories();
        return static_cast<int>(frequencies.size()) == categories && AreFrequencies(frequencies);
    }

    void LoadCategories(Input& input) {
        const unsigned int slot = SlotFrom(input);
        const std::vector<double> frequencies = input.Numbers();
        const bool good =
            Exists(slot) && mStats.IsCategorical(slot) && CategoriesFit(slot, frequencies);
        Require(mStats.SetFreqs(slot, frequencies) == good, "good frequencies are accepted");
        if (good) mExpected[slot].frequencies = frequencies;
    }

    void LoadBins(Input& input) {
        const unsigned int slot = SlotFrom(input);
        const std::vector<double> frequencies = input.Numbers();
        const std::vector<double> cuts = input.Numbers();
        const bool sizesFit = frequencies.empty()
                                  ? cuts.empty()
                                  : !cuts.empty() && frequencies.size() == cuts.size() + 1;
        const bool good = Exists(slot) && !mStats.IsCategorical(slot) && sizesFit &&
                          AreFrequencies(frequencies) && AscendFrom(0, cuts, cuts.size());
        Require(mStats.SetFreqs(slot, frequencies, cuts) == good, "good bins are accepted");
        if (!good) return;
        mExpected[slot].frequencies = frequencies;
        mExpected[slot].cutPoints = cuts;
    }

    void LoadSummary(Input& input) {
        const unsigned int slot = SlotFrom(input);
        const unsigned long count = input.Flag() ? input.Below(4) : ~0UL;
        const Summary s(input);
        const bool categorical = mStats.IsCategorical(slot);
        const bool good = Exists(slot) && s.IsGood(categorical, count);
        Require(mStats.SetSummStats(slot, count, s.values.min, s.values.max, s.values.mean,
                                    s.values.stdDev) == good,
                "a good summary is accepted");
        if (good) s.StoreIn(mExpected[slot], categorical, count);
    }

    void LoadAll(Input& input) {
        const std::string name = input.Text();
        const bool categorical = input.Flag();
        const bool openLeft = !input.Flag();
        const Summary s(input);
        std::vector<double> margins = input.Numbers();
        const std::vector<double> frequencies = input.Numbers();
        if (input.Flag()) {
            margins.insert(margins.begin(), kMissing);
            margins.push_back(kMissing);
        }
        MCUniStats stats = categorical ? MCUniStats(name, s.cases, frequencies)
                                       : MCUniStats(name, s.cases, s.values, margins, frequencies);
        stats.SetIntervalsOpenLeft(openLeft);
        const bool accepted = mStats.SetAllStats(stats);

        const unsigned int slot = SlotOf(name);
        const bool casesFit = s.cases > -1.0 && s.cases <= 0x1p64;
        const unsigned long count = !casesFit           ? 0
                                    : s.cases == 0x1p64 ? ~0UL
                                                        : static_cast<unsigned long>(s.cases);
        if (!Exists(slot) || mStats.IsCategorical(slot) != categorical || !casesFit ||
            !(categorical || openLeft) || !s.IsGood(categorical, count)) {
            return Require(!accepted, "what does not fit the variable is refused");
        }
        s.StoreIn(mExpected[slot], categorical, count);
        const bool good =
            categorical ? CategoriesFit(slot, frequencies) : BinsFit(margins, frequencies);
        Require(accepted == good, "good statistics are accepted");
        if (!good) return;
        mExpected[slot].frequencies = frequencies;
        if (categorical) return;
        mExpected[slot].cutPoints.clear();
        if (!margins.empty()) {
            mExpected[slot].cutPoints.assign(margins.begin() + 1, margins.end() - 1);
        }
    }

    static bool BinsFit(const std::vector<double>& margins,
                        const std::vector<double>& frequencies) {
        if (margins.empty()) return frequencies.empty();
        return margins.size() >= 3 && margins.front() == kMissing && margins.back() == kMissing &&
               frequencies.size() + 1 == margins.size() && AreFrequencies(frequencies) &&
               AscendFrom(1, margins, margins.size() - 1);
    }

    // The slot of the first variable of this name, if that is an input variable.
    unsigned int SlotOf(const std::string& name) const {
        unsigned int slot = 0;
        for (int i = 0; i < static_cast<int>(mList.Size()); ++i) {
            const bool input = mList.GetVariableRole(i) == IMCVariable::VariableRoleInput;
            if (mList.GetVarAt(i)->GetName() == name) return input ? slot : ~0U;
            if (input) ++slot;
        }
        return ~0U;
    }

    const MCVarList& mList;
    MADistStatsImp mStats;
    std::vector<Slot> mExpected;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    MCVarList list;
    const std::size_t variables = input.Below(8);
    for (std::size_t i = 0; i < variables; ++i) {
        const std::string name = input.Text();
        const int level = static_cast<int>(input.Below(5));
        const auto role =
            input.Below(8) == 7 ? IMCVariable::VariableRoleTarget : IMCVariable::VariableRoleInput;
        list.Add(MCVariable(name, level, role, static_cast<int>(input.Below(8)) - 1));
    }
    if (list.GetNumInputVars() == 0) return 0;
    Fuzzer fuzzer(list);
    while (!input.Empty()) fuzzer.Step(input);
    return 0;
}
