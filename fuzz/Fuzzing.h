#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "accredit/host/MCMV.h"

namespace fuzz {

/// Ends the run with a finding unless the condition holds.
inline void Require(bool condition, const char* promise) {
    if (condition) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

/// Whether the two have the same bits. All NaN count as the same.
inline bool Same(double a, double b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

inline bool Same(const std::vector<double>& a, const std::vector<double>& b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (!Same(a[i], b[i])) return false;
    }
    return true;
}

/// The fuzzer's bytes, taken from front to back as what a case is made of. After their end come
/// zeros. Digits stand for themselves, so that seeds can be read and written as text.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size)
        : mRest(reinterpret_cast<const char*>(data), size) {}

    bool Empty() const { return mRest.empty(); }

    std::string_view Take(std::size_t n) {
        const std::string_view taken = mRest.substr(0, n);
        mRest.remove_prefix(taken.size());
        return taken;
    }

    char Byte() {
        const std::string_view taken = Take(1);
        return taken.empty() ? '\0' : taken.front();
    }

    /// A whole number from 0 to n - 1, n up to 256. The digits give 0 to 9.
    std::size_t Below(std::size_t n) { return static_cast<unsigned char>(Byte() - '0') % n; }

    bool Flag() { return Below(2) != 0; }

    /// A text with its length, up to 63, before it.
    std::string Text() { return std::string(Take(Below(64))); }

    /// Any double. A letter stands for a special value or makes one of the numbers that follow it,
    /// any other byte for a small whole number.
    double Number() {
        using Limits = std::numeric_limits<double>;
        double scale = 1.0;
        for (;;) {
            const char byte = Byte();
            switch (byte) {
                case '-':
                    scale = -scale;
                    break;
                case '/':
                    scale /= 16.0;
                    break;
                case '*':
                    scale *= 1e8;
                    break;
                case 'm':
                    return MCMV::Missing();
                case 'n':
                    return Limits::quiet_NaN();
                case 'i':
                    return scale * Limits::infinity();
                case 'x':
                    return scale * Limits::max();
                case 'd':
                    return scale * Limits::denorm_min();
                case 'u':
                    return mLast = std::nextafter(mLast, scale * Limits::infinity());
                case 'l':
                    return scale * mLast;
                case 'r': {
                    double value = 0.0;
                    const std::string_view raw = Take(sizeof value);
                    std::memcpy(&value, raw.data(), raw.size());
                    return mLast = scale * value;
                }
                default:
                    return mLast = scale * static_cast<double>(byte - '0');
            }
        }
    }

    std::vector<double> Numbers() {
        std::vector<double> numbers(Below(16));
        for (double& number : numbers) number = Number();
        return numbers;
    }

private:
    std::string_view mRest;
    double mLast = 0.0;
};

}  // namespace fuzz
