#include "accredit/diststats/MADistStats.h"

#include "accredit/host/internal/NeverDestroyed.h"

using MCCommon::MCStatus;
using MCDetail::NeverDestroyed;
using MCMTD_NAMESPACE::MCVarList;

MADistStats::MADistStats() = default;

MADistStats::MADistStats(MADistStatsImp* imp) : mImp(imp) {}

MADistStats::MADistStats(const MADistStats& other)
    : mImp(other.mImp ? std::make_unique<MADistStatsImp>(*other.mImp) : nullptr) {}

MADistStats& MADistStats::operator=(const MADistStats& other) {
    if (this == &other) return *this;
    mImp.reset();
    if (other.mImp) mImp = std::make_unique<MADistStatsImp>(*other.mImp);
    return *this;
}

MADistStats::MADistStats(MADistStats&& other) noexcept = default;
MADistStats& MADistStats::operator=(MADistStats&& other) noexcept = default;
MADistStats::~MADistStats() = default;

const MCVarList& MADistStats::GetVarList() const {
    return mImp ? mImp->GetVarList() : NeverDestroyed<MCVarList>();
}

unsigned int MADistStats::GetVarCount() const { return mImp ? mImp->GetVarCount() : 0; }

int MADistStats::GetVarListIndex(unsigned int slot) const {
    return mImp ? mImp->GetVarListIndex(slot) : -1;
}

bool MADistStats::IsCategorical(unsigned int slot) const {
    return mImp ? mImp->IsCategorical(slot) : true;
}

const std::vector<double>& MADistStats::GetFrequencies(unsigned int slot) const {
    return mImp ? mImp->GetFrequencies(slot) : NeverDestroyed<std::vector<double>>();
}

const std::vector<double>& MADistStats::GetCutPoints(unsigned int slot) const {
    return mImp ? mImp->GetCutPoints(slot) : NeverDestroyed<std::vector<double>>();
}

unsigned long MADistStats::GetNumberOfCases(unsigned int slot) const {
    return mImp ? mImp->GetNumberOfCases(slot) : 0;
}

void MADistStats::GetMinMax(unsigned int slot, double& min, double& max) const {
    if (mImp) mImp->GetMinMax(slot, min, max);
}

void MADistStats::GetMeanStdDev(unsigned int slot, double& mean, double& stdDev) const {
    if (mImp) mImp->GetMeanStdDev(slot, mean, stdDev);
}

void MADistStats::Display(const std::string& title, std::ostream& out) const {
    if (mImp) mImp->Display(title, out);
}

MCStatus MADistStats::ExportAsXML(const MCApplicInfo4XML* info, std::ostream& out) const {
    return mImp ? mImp->ExportAsXML(info, out) : MCStatus(MAStatusNoDistStats, false);
}
