#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace app {

/// What a long run is doing, on one line of a terminal, redrawn at most ten times a second and
/// erased when it is done. It first appears when a run has taken a tenth of a second.
class Progress {
public:
    /// Draws on `terminal`, which must outlive this; null draws nothing. `interval` is the shortest
    /// time between two drawings.
    explicit Progress(std::ostream* terminal,
                      std::chrono::milliseconds interval = std::chrono::milliseconds(100));
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// `done` bytes of the file have been read in this pass over it, the first being 1. Without a
    /// size, or with the size 0, the bytes are shown in place of the share.
    void Update(std::string_view file, int pass, std::uint64_t done,
                std::optional<std::uint64_t> size);

    /// A query to an engine has been running since so many seconds, the first being 1; `queries`
    /// are expected in all.
    void UpdateQuery(std::string_view table, std::size_t query, std::size_t queries,
                     double seconds);

    /// Takes the bar off the terminal, so that something else can be written.
    void Erase();

private:
    bool IsTime();
    void Draw(const std::string& line);

    std::ostream* mTerminal;
    std::chrono::milliseconds mInterval;
    std::chrono::steady_clock::time_point mNextDraw;
    bool mDrawn = false;
};

}  // namespace app
