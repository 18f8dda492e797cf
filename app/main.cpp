#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

#include "app/base/Screen.h"
#include "app/commands/Program.h"
#include "app/sql/Connection.h"

namespace {

// A standard stream that is closed leaves its number to the next file that is opened, which would
// then be read or written in its place. So each gets a file that cannot be used the way it is.
void OpenStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) < 0) {
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// Files that make one reference stay open until it is learned.
void AllowManyFiles() {
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

int main(int argc, char** argv) {
    OpenStandardStreams();
    AllowManyFiles();
    // A file that must not grow further is told by the write that failed.
    std::signal(SIGXFSZ, SIG_IGN);
    const int status = app::RunProgram(argc, argv, std::cout, std::cerr,
                                       app::ScreenOf(STDOUT_FILENO), isatty(STDERR_FILENO) == 1);
    // A query that does not stop may still use what would be taken down.
    if (app::Connection::IsStuck()) std::_Exit(status);
    return status;
}
