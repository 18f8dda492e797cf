#include "accredit/host/MCUniStats.h"

namespace MCMTD_NAMESPACE {

MCUniStats::MCUniStats() = default;

MCUniStats::MCUniStats(const std::string& name, double cases,
                       const std::vector<double>& frequencies)
    : mName(name), mCases(cases), mFrequencies(frequencies) {}

MCUniStats::MCUniStats(const std::string& name, double cases, const SummStats& summStats,
                       const std::vector<double>& cutPoints, const std::vector<double>& frequencies)
    : mName(name),
      mCases(cases),
      mCategorical(false),
      mSummStats(summStats),
      mCutPoints(cutPoints),
      mFrequencies(frequencies) {}

MCUniStats::MCUniStats(const MCUniStats& other) = default;
MCUniStats::MCUniStats(MCUniStats&& other) noexcept = default;
MCUniStats& MCUniStats::operator=(const MCUniStats& other) { return *this = MCUniStats(other); }
MCUniStats& MCUniStats::operator=(MCUniStats&& other) noexcept = default;
MCUniStats::~MCUniStats() = default;

void MCUniStats::SetIntervalsOpenLeft(bool openLeft) { mOpenLeft = openLeft; }

void MCUniStats::SetMissing(double missing) { mMissing = missing; }

void MCUniStats::SetInvalid(double invalid) { mInvalid = invalid; }

bool MCUniStats::IsCategorical() const { return mCategorical; }

bool MCUniStats::AreIntervalsOpenLeft() const { return mOpenLeft; }

const std::vector<double>& MCUniStats::GetFrequencies() const { return mFrequencies; }

const std::vector<double>& MCUniStats::GetCutPoints() const { return mCutPoints; }

std::string MCUniStats::GetVarName() const { return mName; }

double MCUniStats::GetNumberOfCases() const { return mCases; }

bool MCUniStats::HasMissing() const { return !MCMV::IsMissing(mMissing); }

double MCUniStats::GetMissing() const { return mMissing; }

bool MCUniStats::HasInvalid() const { return !MCMV::IsMissing(mInvalid); }

double MCUniStats::GetInvalid() const { return mInvalid; }

const MCUniStats::SummStats& MCUniStats::GetSummStats() const { return mSummStats; }

}  // namespace MCMTD_NAMESPACE
