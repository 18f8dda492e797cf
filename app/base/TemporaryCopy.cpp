#include "app/base/TemporaryCopy.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <new>
#include <system_error>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

TemporaryCopy::TemporaryCopy(const std::string& name) : mName(name) {
    const char* const named = std::getenv("TMPDIR");
    if (named && *named) {
        if (!OpenIn(named)) Fail(errno);
    } else if (!OpenIn("/var/tmp") && !OpenIn("/tmp")) {
        Fail(errno);
    }
}

TemporaryCopy::~TemporaryCopy() {
    if (mDescriptor >= 0) close(mDescriptor);
}

// Not every file system can make files without a name.
bool TemporaryCopy::OpenIn(const std::string& folder) {
    mFolder = folder;
    mDescriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (mDescriptor >= 0) return true;
    std::string path = folder + "/accredit-XXXXXX";
    mDescriptor = mkostemp(path.data(), O_CLOEXEC);
    if (mDescriptor < 0) return false;
    unlink(path.c_str());
    return true;
}

void TemporaryCopy::Append(const char* bytes, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
        const ssize_t written = write(mDescriptor, bytes + done, size - done);
        if (written >= 0) {
            done += static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            Fail(errno);
        }
    }
    mSize += size;
}

void TemporaryCopy::Fail(int error) const {
    if (error == ENOMEM) throw std::bad_alloc();
    throw OutputError(
        fmt::format("{}: a temporary copy in {}, for the further passes: {}; TMPDIR can name "
                    "another folder",
                    mName, Printable(mFolder), std::generic_category().message(error)));
}

}  // namespace app
