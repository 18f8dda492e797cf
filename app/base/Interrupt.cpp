#include "app/base/Interrupt.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>

#include "app/base/Errors.h"

namespace app {

namespace {

constexpr int kCancelledStatus = 2;

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler must not wait for a lock");

extern "C" void RememberSignal(int /*signal*/) { interrupted.store(true); }

// The complaint is left out if the standard error cannot take it now, as when it is the pipe that
// nobody reads.
extern "C" void EndProgram(int /*signal*/) {
    constexpr char kComplaint[] = "accredit: cancelled\n";
    pollfd error = {STDERR_FILENO, POLLOUT, 0};
    if (poll(&error, 1, 0) == 1 && (error.revents & POLLOUT) != 0) {
        [[maybe_unused]] const ssize_t written =
            write(STDERR_FILENO, kComplaint, sizeof kComplaint - 1);
    }
    _exit(kCancelledStatus);
}

// A signal that was ignored stays so: whoever started the program in the background wants that.
void Handle(int signal, const struct sigaction& old, void (*handler)(int)) {
    if (old.sa_handler == SIG_IGN) return;
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

}  // namespace

Interrupt::Interrupt() {
    interrupted.store(false);
    sigaction(SIGINT, nullptr, &mOldInt);
    sigaction(SIGTERM, nullptr, &mOldTerm);
    Handle(SIGINT, mOldInt, RememberSignal);
    Handle(SIGTERM, mOldTerm, RememberSignal);
}

Interrupt::~Interrupt() {
    sigaction(SIGINT, &mOldInt, nullptr);
    sigaction(SIGTERM, &mOldTerm, nullptr);
}

bool Interrupt::QueryCancel() { return interrupted.load(); }

void Interrupt::EndAtOnce() {
    Handle(SIGINT, mOldInt, EndProgram);
    Handle(SIGTERM, mOldTerm, EndProgram);
    if (QueryCancel()) throw Cancelled();
}

}  // namespace app
