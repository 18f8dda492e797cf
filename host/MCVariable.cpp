#include "accredit/host/MCVariable.h"

#include <utility>

namespace MCMTD_NAMESPACE {

MCVariable::MCVariable(std::string name, int measureLevel, VariableRole role, int numCategories)
    : mName(std::move(name)),
      mMeasureLevel(measureLevel),
      mRole(role),
      mNumCategories(numCategories) {}

int MCVariable::GetMeasureLevel() const { return mMeasureLevel; }

std::string MCVariable::GetName() const { return mName; }

int MCVariable::GetNumCategories() const { return mNumCategories; }

IMCVariable::VariableRole MCVariable::GetRole() const { return mRole; }

MCVariable MCVariable::Continuous(std::string name) {
    return {std::move(name), MeasureLevelContinuous};
}

MCVariable MCVariable::Categorical(std::string name, int numCategories) {
    return {std::move(name), MeasureLevelNominal, VariableRoleInput, numCategories};
}

}  // namespace MCMTD_NAMESPACE
