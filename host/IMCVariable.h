#pragma once

#include <string>

#include "accredit/host/AccreditExport.h"

/// @file
/// What a variable is.

/// Variables, their encoders, lists of them, and stored statistics.
namespace MCMTD_NAMESPACE {

/// One variable of an MCVarList. Applications may derive their own; MCVariable is ready-made.
/// The answers must stay the same while the variable stands in a list, and several threads may ask
/// for them at once.
class ACCREDIT_EXPORT IMCVariable {
public:
    /// What a variable is for. Only input variables are summarised and matched; all other roles are
    /// treated alike, and an application may add its own: every int is a role.
    enum VariableRole : int {
        VariableRoleNone = 0,
        VariableRoleTarget = 1,
        VariableRoleInput = 4,
    };

    /// Measurement levels. Nominal and ordinal variables are categorical; every other value, those
    /// that an application adds included, is continuous.
    enum MeasureLevel : int {
        MeasureLevelContinuous = 1,
        MeasureLevelNominal = 2,
        MeasureLevelOrdinal = 3,
    };

    virtual ~IMCVariable() = default;

    /// The measurement level, see MeasureLevel. Two variables match only if the levels are equal.
    virtual int GetMeasureLevel() const = 0;

    /// The name. It may be empty, but an unnamed variable cannot be matched.
    virtual std::string GetName() const = 0;

    /// The number of categories of a categorical variable, equal to that of its encoder.
    virtual int GetNumCategories() const = 0;

    /// The role.
    virtual VariableRole GetRole() const = 0;
};

/// Whether this measurement level makes a variable categorical.
inline bool IsCategoricalLevel(int measureLevel) {
    return measureLevel == IMCVariable::MeasureLevelNominal ||
           measureLevel == IMCVariable::MeasureLevelOrdinal;
}

}  // namespace MCMTD_NAMESPACE
