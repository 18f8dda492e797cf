#include "app/base/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "app/base/Printable.h"

namespace app {

namespace {

// Together with the words around them these stay within a terminal of 80 columns: a longer line
// would wrap and could not be redrawn.
constexpr std::size_t kNameWidth = 24;
constexpr std::size_t kBarWidth = 30;

std::string Name(std::string_view file) {
    const std::size_t slash = file.find_last_of('/');
    return Shortened(slash == std::string_view::npos ? file : file.substr(slash + 1), kNameWidth);
}

std::string Bar(double share) {
    const auto full = static_cast<std::size_t>(share * static_cast<double>(kBarWidth));
    return fmt::format("[{:-<{}}] {:3.0f} %", std::string(full, '#'), kBarWidth, 100.0 * share);
}

}  // namespace

Progress::Progress(std::ostream* terminal, std::chrono::milliseconds interval)
    : mTerminal(terminal),
      mInterval(interval),
      mNextDraw(std::chrono::steady_clock::now() + interval) {}

Progress::~Progress() { Erase(); }

bool Progress::IsTime() {
    if (!mTerminal) return false;
    const auto now = std::chrono::steady_clock::now();
    if (now < mNextDraw) return false;
    mNextDraw = now + mInterval;
    return true;
}

void Progress::Draw(const std::string& line) {
    mDrawn = true;
    *mTerminal << "\r\x1b[K" << line << std::flush;
}

void Progress::Update(std::string_view file, int pass, std::uint64_t done,
                      std::optional<std::uint64_t> size) {
    if (!IsTime()) return;
    // A file that is being written to may be longer by now than it was when it was opened.
    const std::string amount =
        size.value_or(0) > 0
            ? Bar(std::min(1.0, static_cast<double>(done) / static_cast<double>(*size)))
            : fmt::format("{:.1f} MB", static_cast<double>(done) / 1e6);
    Draw(fmt::format("{}, pass {} {}", Name(file), pass, amount));
}

void Progress::UpdateQuery(std::string_view table, std::size_t query, std::size_t queries,
                           double seconds) {
    if (!IsTime()) return;
    Draw(query == 0
             ? fmt::format("{}, connecting, {:.0f} s", Name(table), seconds)
             : fmt::format("{}, query {} of {}, {:.0f} s", Name(table), query, queries, seconds));
}

void Progress::Erase() {
    if (!mDrawn) return;
    *mTerminal << "\r\x1b[K" << std::flush;
    mDrawn = false;
}

}  // namespace app
