#pragma once

#include <string>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/IMCVariable.h"

/// @file
/// A variable by its name, its kind and its role.

namespace MCMTD_NAMESPACE {

/// A ready-made variable: it answers what it was constructed with.
class ACCREDIT_EXPORT MCVariable : public IMCVariable {
public:
    /// `measureLevel` as in IMCVariable::MeasureLevel; `numCategories` is that of the variable's
    /// encoder, 0 for a continuous variable.
    MCVariable(std::string name, int measureLevel, VariableRole role = VariableRoleInput,
               int numCategories = 0);

    int GetMeasureLevel() const override;
    std::string GetName() const override;
    int GetNumCategories() const override;
    VariableRole GetRole() const override;

    /// A continuous input variable.
    static MCVariable Continuous(std::string name);

    /// A nominal input variable with this number of categories.
    static MCVariable Categorical(std::string name, int numCategories);

private:
    std::string mName;
    int mMeasureLevel;
    VariableRole mRole;
    int mNumCategories;
};

}  // namespace MCMTD_NAMESPACE
