#include "accredit/host/MCVarList.h"

#include <algorithm>
#include <cstddef>

#include "accredit/host/MCStringEncoder.h"
#include "accredit/host/internal/NeverDestroyed.h"

namespace MCMTD_NAMESPACE {

MCVarList::MCVarList() = default;
MCVarList::~MCVarList() = default;

MCVarList::MCVarList(const MCVarList& other) : mEntries(other.mEntries) {
    if (!other.mNamesMayChange) {
        mPositions = other.mPositions;
        return;
    }
    int position = 0;
    for (const Entry& entry : mEntries) {
        mPositions.emplace(entry.variable.Get()->GetName(), position++);
    }
}

MCVarList::MCVarList(MCVarList&& other) noexcept { Swap(other); }

MCVarList& MCVarList::operator=(const MCVarList& other) {
    if (this != &other) *this = MCVarList(other);
    return *this;
}

MCVarList& MCVarList::operator=(MCVarList&& other) noexcept {
    MCVarList taken(std::move(other));
    Swap(taken);
    return *this;
}

void MCVarList::Swap(MCVarList& other) noexcept {
    mEntries.swap(other.mEntries);
    mPositions.swap(other.mPositions);
    std::swap(mNamesMayChange, other.mNamesMayChange);
}

void MCVarList::AddShared(std::shared_ptr<IMCVariable> variable,
                          std::shared_ptr<IMCEncoder> encoder) {
    if (!variable) return;
    Append(Owned<IMCVariable>(std::move(variable)), Owned<IMCEncoder>(std::move(encoder)));
}

void MCVarList::Append(Owned<IMCVariable> variable, Owned<IMCEncoder> encoder) {
    const std::string name = variable.Get()->GetName();
    mEntries.push_back({std::move(variable), std::move(encoder)});
    try {
        mPositions.emplace(name, static_cast<int>(mEntries.size()) - 1);
    } catch (...) {
        mEntries.pop_back();
        throw;
    }
}

int MCVarList::GetNumInputVars() const {
    return static_cast<int>(std::count_if(mEntries.begin(), mEntries.end(), [](const Entry& entry) {
        return entry.variable.Get()->GetRole() == IMCVariable::VariableRoleInput;
    }));
}

const MCVarList::Entry* MCVarList::EntryAt(int position) const {
    if (position < 0 || static_cast<unsigned int>(position) >= Size()) return nullptr;
    return &mEntries[static_cast<std::size_t>(position)];
}

const IMCVariable* MCVarList::GetVarAt(int position) const {
    const Entry* entry = EntryAt(position);
    return entry ? entry->variable.Get() : nullptr;
}

IMCVariable* MCVarList::GetVarAt(int position) {
    mNamesMayChange = true;
    const Entry* entry = EntryAt(position);
    return entry ? entry->variable.Get() : nullptr;
}

const IMCEncoder* MCVarList::GetEncoderAt(int position) const {
    const Entry* entry = EntryAt(position);
    return entry && entry->encoder.Get() ? entry->encoder.Get()
                                         : &MCDetail::NeverDestroyed<MCStringEncoder>();
}

int MCVarList::FindVariable(const std::string& name) const {
    if (mNamesMayChange) {
        const auto named = [&name](const Entry& entry) {
            return entry.variable.Get()->GetName() == name;
        };
        const auto first = std::find_if(mEntries.begin(), mEntries.end(), named);
        return first == mEntries.end() ? -1 : static_cast<int>(first - mEntries.begin());
    }
    const auto found = mPositions.find(name);
    return found == mPositions.end() ? -1 : found->second;
}

IMCVariable::VariableRole MCVarList::GetVariableRole(int position) const {
    const Entry* entry = EntryAt(position);
    return entry ? entry->variable.Get()->GetRole() : IMCVariable::VariableRoleNone;
}

}  // namespace MCMTD_NAMESPACE
