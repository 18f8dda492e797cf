#pragma once

#include <csignal>

#include "accredit/host/MCQueryCancel.h"

namespace app {

/// While it lives, an interrupt (SIGINT) or a request to end (SIGTERM) makes the query say yes
/// instead of killing the program. System calls that wait are broken off, and a second signal kills
/// at once. A signal that is ignored when this is made stays ignored. Only one may live at a time.
class Interrupt : public MCQueryCancel {
public:
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt() override;

    bool QueryCancel() override;

    /// From now on a signal ends the program: with a complaint, exit status 2, and nothing undone.
    /// Call this when nobody asks the query any more and the terminal holds no progress bar. Throws
    /// Cancelled if a signal has come already.
    void EndAtOnce();

private:
    struct sigaction mOldInt = {};
    struct sigaction mOldTerm = {};
};

}  // namespace app
