#include "app/base/Interrupt.h"

#include <atomic>

namespace app {

namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not wait for a lock");

extern "C" void HandleSignal(int /*signal*/) { interrupted.store(true); }

// A signal that is ignored stays so: whoever started the program in the background wants that.
void Handle(int signal, struct sigaction& old) {
    struct sigaction action = {};
    action.sa_handler = HandleSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, nullptr, &old);
    if (old.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
}

}  // namespace

Interrupt::Interrupt() {
    interrupted.store(false);
    Handle(SIGINT, mOldInt);
    Handle(SIGTERM, mOldTerm);
}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &mOldInt, nullptr);
    sigaction(SIGTERM, &mOldTerm, nullptr);
}

bool Interrupt::QueryCancel() { return interrupted.load(); }

}  // namespace app
