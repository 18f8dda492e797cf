#include "accredit/accreditation/internal/VariableMatching.h"

#include <cstddef>
#include <string>
#include <utility>

using MCCommon::MCStatus;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace MADetail {

namespace {

// The input ordinal of every position of the list, -1 for a variable of another role. One walk for
// all positions keeps matching linear.
std::vector<int> InputOrdinals(const MCVarList& list) {
    std::vector<int> ordinals(list.Size(), -1);
    int next = 0;
    for (std::size_t position = 0; position < ordinals.size(); ++position) {
        const auto role = list.GetVariableRole(static_cast<int>(position));
        if (role == IMCVariable::VariableRoleInput) ordinals[position] = next++;
    }
    return ordinals;
}

// The position in `second` of the partner of `variable`; on failure -1 and the code.
int FindPartner(const IMCVariable& variable, const MCVarList& second, long& code) {
    const std::string name = variable.GetName();
    if (name.empty()) {
        code = MAStatusUnnamedVariable;
        return -1;
    }
    const int measureLevel = variable.GetMeasureLevel();
    const int position = second.FindVariable(name);
    if (position < 0) {
        code = MAStatusVariableNotFound;
        return -1;
    }
    const IMCVariable& namesake = *second.GetVarAt(position);
    if (namesake.GetRole() != IMCVariable::VariableRoleInput) {
        code = MAStatusVariableNotInput;
        return -1;
    }
    if (namesake.GetMeasureLevel() != measureLevel) {
        code = MAStatusVariableTypeDiffers;
        return -1;
    }
    return position;
}

}  // namespace

std::vector<VariableMatch> MatchEachVariable(const MCVarList& first, const MCVarList& second) {
    const std::vector<int> ordinals = InputOrdinals(second);
    std::vector<VariableMatch> matches;
    const int size = static_cast<int>(first.Size());
    for (int position = 0; position < size; ++position) {
        const IMCVariable& variable = *first.GetVarAt(position);
        if (variable.GetRole() != IMCVariable::VariableRoleInput) continue;
        VariableMatch match;
        long code = 0;
        const int partner = FindPartner(variable, second, code);
        if (partner >= 0) {
            match.ordinal = ordinals[static_cast<std::size_t>(partner)];
        } else {
            match.status = MCStatus(code, false);
            match.status.SetDiscreteDatum(0, position);
        }
        matches.push_back(match);
    }
    return matches;
}

MCStatus MatchVariables(const MCVarList& first, const MCVarList& second,
                        std::vector<int>& matches) {
    MCStatus status;
    const std::vector<VariableMatch> each = MatchEachVariable(first, second);
    std::vector<int> ordinals;
    ordinals.reserve(each.size());
    for (const VariableMatch& match : each) {
        ordinals.push_back(match.ordinal);
        if (status.IsOK()) status = match.status;
    }
    matches = std::move(ordinals);
    return status;
}

}  // namespace MADetail
