#include "app/commands/ThisProgram.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>

namespace app {

MCApplicInfo4XML ThisProgram() {
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    return {"accredit", ACCREDIT_VERSION,
            fmt::format("{:%Y-%m-%d %H:%M:%S} GMT +00:00", fmt::gmtime(now))};
}

}  // namespace app
