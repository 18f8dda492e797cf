#pragma once

#include "accredit/host/AccreditExport.h"

/// @file
/// How an application stops what takes long.

/// Through this a caller stops long work. It is asked on the caller's thread at every 20th record
/// of a data pass, from the first on, and once a variable in an export; an implementation that
/// reads a flag set by another thread or by a signal handler must read it atomically.
class ACCREDIT_EXPORT MCQueryCancel {
public:
    virtual ~MCQueryCancel() = default;

    /// True stops the work, which then ends with MAStatusCancelled.
    virtual bool QueryCancel() = 0;
};
