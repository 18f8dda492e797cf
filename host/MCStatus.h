#pragma once

#include <array>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/MAStatus.h"

/// @file
/// What an operation gives back when it fails, and when it does not.

namespace MCCommon {

/// The result of every operation that can fail, and what a constructor that fails throws: a code, a
/// flag and a few numbered data. A plain value without a destructor; copy and assign it freely.
///
/// Beside it, std::bad_alloc passes through every operation that takes memory, and so does whatever
/// an application's own class or stream throws.
class ACCREDIT_EXPORT MCStatus {
public:
    /// How many data a status holds: those with index 0 to kMaxData - 1.
    static constexpr unsigned int kMaxData = 4;

    /// The OK status, code 0.
    MCStatus() = default;

    /// A status with this code; 0 makes an OK status. `flag` is kept for the caller, the library
    /// always passes false and never reads it.
    MCStatus(long code, bool flag) : mCode(code), mFlag(flag) {}

    /// True for the OK status, false for every failure and for a cancellation.
    bool IsOK() const { return mCode == 0; }

    /// Stores a datum. An index of kMaxData or more is ignored.
    void SetDiscreteDatum(unsigned int index, long value);

    /// The code: 0, or one of those in MAStatus.h.
    long GetCode() const { return mCode; }

    /// The flag that the status was made with.
    bool GetFlag() const { return mFlag; }

    /// Whether a datum of this index was stored.
    bool HasDiscreteDatum(unsigned int index) const;

    /// The datum of this index, or -1 if none was stored.
    long GetDiscreteDatum(unsigned int index) const;

    /// What the code means, as one English sentence without a full stop. Never null; the text is
    /// static. A code that the library does not know gives "Unknown status".
    const char* GetMessage() const;

private:
    long mCode = 0;
    bool mFlag = false;
    std::array<bool, kMaxData> mHasDatum{};
    std::array<long, kMaxData> mData{};
};

}  // namespace MCCommon
