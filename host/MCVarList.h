#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/IMCVariable.h"

/// @file
/// The list of the variables of a record, with their encoders.

namespace MCMTD_NAMESPACE {

/// An ordered list of variables of all roles, each categorical one with its encoder. Positions
/// count from 0 over the whole list. A value: a copy has variables and encoders of its own
/// standing, which live on when the first list is gone.
///
/// Pointers that the list gives out are borrowed and stay valid until the list is assigned to or
/// destroyed. Reading is safe from several threads at once, changing is not.
class ACCREDIT_EXPORT MCVarList {
public:
    /// An empty list.
    MCVarList();
    /// A copy with variables and encoders of its own standing.
    MCVarList(const MCVarList& other);
    /// Takes over; `other` is left empty.
    MCVarList(MCVarList&& other) noexcept;
    /// A copy. If memory runs out, the list stays as it was.
    MCVarList& operator=(const MCVarList& other);
    /// Takes over; `other` is left empty, unless it is this list, which stays as it is.
    MCVarList& operator=(MCVarList&& other) noexcept;
    virtual ~MCVarList();

    /// Appends a variable without an encoder. `Variable` is any copyable class derived from
    /// IMCVariable; every copy of the list copies it with its own copy constructor.
    template <class Variable>
    void Add(Variable variable) {
        Append(Owned<IMCVariable>(std::move(variable)), Owned<IMCEncoder>());
    }

    /// Appends a categorical variable with its encoder, any copyable classes derived from
    /// IMCVariable and IMCEncoder.
    template <class Variable, class Encoder>
    void Add(Variable variable, Encoder encoder) {
        Append(Owned<IMCVariable>(std::move(variable)), Owned<IMCEncoder>(std::move(encoder)));
    }

    /// Appends a variable and an encoder that all copies of the list share with the caller, for
    /// classes that cannot be copied and for encoders that grow while data is read. The variable's
    /// name must stay. A null variable is not added, a null encoder is none.
    void AddShared(std::shared_ptr<IMCVariable> variable,
                   std::shared_ptr<IMCEncoder> encoder = nullptr);

    /// The number of variables, those of all roles.
    unsigned int Size() const { return static_cast<unsigned int>(mEntries.size()); }

    /// The number of variables whose GetRole gives VariableRoleInput.
    int GetNumInputVars() const;

    /// The variable at this position, null if there is no such position.
    const IMCVariable* GetVarAt(int position) const;
    /// The same, for changing it. Its name may change as well, unless it was added by AddShared;
    /// for that FindVariable asks every variable for its name from now on, in this list and in one
    /// that it is moved to, but not in copies.
    IMCVariable* GetVarAt(int position);

    /// The encoder of the variable at this position. Never null: a variable without one and a
    /// position that does not exist give an encoder without categories.
    const IMCEncoder* GetEncoderAt(int position) const;

    /// The position of the first variable of this name, case-sensitive, or -1 if there is none.
    /// Takes time logarithmic in the number of variables, or linear once the other GetVarAt was
    /// called.
    int FindVariable(const std::string& name) const;

    /// The role of the variable at this position, VariableRoleNone if there is no such position.
    IMCVariable::VariableRole GetVariableRole(int position) const;

private:
    /// An object of a class derived from Base: either the list's own, copied with the list, or one
    /// shared with the caller.
    template <class Base>
    class Owned {
    public:
        Owned() = default;

        template <class T>
        explicit Owned(T object)
            : mObject(std::make_shared<T>(std::move(object))),
              mCopy([](const Base& source) -> std::shared_ptr<Base> {
                  return std::make_shared<T>(static_cast<const T&>(source));
              }) {}

        explicit Owned(std::shared_ptr<Base> shared) : mObject(std::move(shared)) {}

        Owned(const Owned& other)
            : mObject(other.mCopy ? other.mCopy(*other.mObject) : other.mObject),
              mCopy(other.mCopy) {}
        Owned(Owned&& other) noexcept = default;
        Owned& operator=(const Owned& other) = delete;
        Owned& operator=(Owned&& other) noexcept = default;
        ~Owned() = default;

        Base* Get() const { return mObject.get(); }

    private:
        using Copy = std::shared_ptr<Base> (*)(const Base& source);

        std::shared_ptr<Base> mObject;
        Copy mCopy = nullptr;
    };

    struct Entry {
        Owned<IMCVariable> variable;
        Owned<IMCEncoder> encoder;
    };

    void Swap(MCVarList& other) noexcept;
    void Append(Owned<IMCVariable> variable, Owned<IMCEncoder> encoder);
    const Entry* EntryAt(int position) const;

    std::vector<Entry> mEntries;
    // The first position of each name; of no use once names may have changed.
    std::map<std::string, int> mPositions;
    bool mNamesMayChange = false;
};

}  // namespace MCMTD_NAMESPACE
