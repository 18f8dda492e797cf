// distfun_sweep CALLS [SEED]: calls every function of MCDistFun, the private ones included, in turn
// with arguments chosen to hurt, and checks what holds for every double. Built with the sanitizers
// it also finds overflows and stray reads. Prints each fault with its arguments, and the slowest
// call; exits with 1 after a fault.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "DistFunChecks.h"
#include "accredit/distfun/MCDistFun.h"

namespace {

using MAMath::MCDistFun;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMax = std::numeric_limits<double>::max();

// Ends of ranges, and boundaries between methods.
constexpr std::array<double, 40> kCorners = {
    0.0,   -0.0, 5e-324, 0x1p-1022, 1e-300, 1e-20, 0x1p-52, 0.05, 0.075,  0.25,
    0.32F, 0.5,  0.925,  1.0,       1.5,    2.0,   2.2,     3.5,  5.0,    6.9,
    8.0,   33.0, 34.0,   708.0,     709.0,  1e5,   1.67e7,  1e9,  0x1p31, 1e10,
    1e12,  1e15, 0x1p53, 1e77,      1e80,   1e154, 1e300,   kMax, -1.0,   -kMax};

class Source {
public:
    explicit Source(std::uint64_t seed) : mEngine(seed) {}

    std::size_t Below(std::size_t n) { return static_cast<std::size_t>(mEngine() % n); }
    double Fraction() { return static_cast<double>(mEngine() >> 11U) * 0x1p-53; }

    double Number() {
        switch (Below(10)) {
            case 0: {
                const std::uint64_t bits = mEngine();
                double value = 0.0;
                std::memcpy(&value, &bits, sizeof value);
                return value;
            }
            case 1:
                return std::array{kNaN, kInfinity, -kInfinity}[Below(3)];
            case 2:
                return kCorners[Below(kCorners.size())];
            case 3:
                return std::nextafter(kCorners[Below(kCorners.size())],
                                      Below(2) == 0 ? kInfinity : -kInfinity);
            case 4:
                return std::pow(10.0, 36.0 * Fraction() - 18.0);
            case 5:
                return static_cast<double>(Below(200)) / 2.0;
            case 6:
                return std::floor(std::pow(10.0, 18.0 * Fraction()));
            case 7:
                return 20.0 * Fraction() - 5.0;
            case 8:
                return mLast * (1.0 + (Fraction() - 0.5) * std::pow(10.0, -16.0 * Fraction()));
            default:
                return mLast = Fraction();
        }
    }

    // As Number, and kept so that a later one may lie beside it.
    double Next() { return mLast = Number(); }

    long Count() {
        using Limits = std::numeric_limits<long>;
        if (Below(4) == 0) return std::array{Limits::min(), Limits::max(), -1L}[Below(3)];
        return static_cast<long>(Below(12));
    }

    std::vector<double> Vector() {
        std::vector<double> values(Below(9));
        const bool plain = Below(4) != 0;
        for (double& value : values) value = plain ? static_cast<double>(Below(12)) : Next();
        const auto lastNaN = std::partition(values.begin(), values.end(),
                                            [](double value) { return !std::isnan(value); });
        if (Below(4) != 0) std::sort(values.begin(), lastNaN);
        return values;
    }

private:
    std::mt19937_64 mEngine;
    double mLast = 1.0;
};

class Sweep {
public:
    explicit Sweep(std::uint64_t seed) : mSource(seed) {}

    void Scalar(const Function& f) {
        const std::array<double, 3> a = {mSource.Next(), mSource.Next(), mSource.Next()};
        long code = 0;
        const auto begin = std::chrono::steady_clock::now();
        const double value = f.call(a[0], a[1], a[2], code);
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
        Digest(value);

        std::array<char, 200> text{};
        const auto describe = [&] {
            std::snprintf(text.data(), text.size(), "%s(%.17g, %.17g, %.17g) = %.17g, code %ld",
                          f.name, a[0], a[1], a[2], value, code);
            return text.data();
        };
        if (const char* const fault = FaultOf(f, a, value, code)) Fault(fault, describe());
        if (time.count() > mSlowest) {
            mSlowest = time.count();
            mSlowestCall = describe();
        }
    }

    void Percentile() {
        const long n = mSource.Count();
        const long k = mSource.Count();
        const double percent = mSource.Below(2) == 0 ? 100.0 * mSource.Fraction() : mSource.Next();
        const std::vector<double> x = mSource.Vector();
        const std::vector<double> w = mSource.Vector();
        const std::vector<double> b = mSource.Vector();
        double result = kNaN;
        long code = 99;
        MCDistFun::GPTile(n, percent, x, w, b, k, result, code);
        Digest(result);
        if (const char* const fault = PercentileFault(result, code)) Fault(fault, "GPTile");
    }

    void Median() {
        const long n = mSource.Count();
        const std::vector<double> x = mSource.Vector();
        const std::vector<double> w = mSource.Vector();
        double N = 0.0;
        for (const double weight : w) N += weight;
        if (mSource.Below(3) == 0) N = mSource.Next();
        const double level = mSource.Below(2) == 0 ? 100.0 * mSource.Fraction() : mSource.Next();
        std::array<double, 3> results = {kNaN, kNaN, kNaN};
        MCDistFun::Mednci(n, x, w, N, level, mSource.Below(2) == 0, results[0], results[1],
                          results[2]);
        for (const double result : results) {
            Digest(result);
            if (std::isnan(result)) Fault("NaN", "Mednci");
        }
    }

    int Run(unsigned long calls) {
        for (unsigned long i = 0; i < calls; ++i) {
            const std::size_t which = i % (kFunctions.size() + 2);
            if (which < kFunctions.size()) {
                Scalar(kFunctions[which]);
            } else if (which == kFunctions.size()) {
                Percentile();
            } else {
                Median();
            }
        }
        std::printf("digest of all results: %016llx\n", static_cast<unsigned long long>(mDigest));
        std::printf("%lu calls, %lu faults; slowest %.3f s: %s\n", calls, mFaults, mSlowest,
                    mSlowestCall.c_str());
        return mFaults == 0 ? 0 : 1;
    }

private:
    // Two builds that give the same digest gave the same bits; a NaN counts as one whatever its
    // bits.
    void Digest(double value) {
        std::uint64_t bits = 0;
        if (!std::isnan(value)) std::memcpy(&bits, &value, sizeof bits);
        mDigest = (mDigest ^ bits) * 0x100000001b3ULL;
    }

    void Fault(const char* what, const char* call) {
        if (++mFaults <= 20) std::printf("%s: %s\n", what, call);
    }

    Source mSource;
    std::uint64_t mDigest = 0xcbf29ce484222325ULL;
    unsigned long mFaults = 0;
    double mSlowest = 0.0;
    std::string mSlowestCall;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: distfun_sweep CALLS [SEED]\n");
        return 2;
    }
    const std::uint64_t seed = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1;
    return Sweep(seed).Run(std::strtoul(argv[1], nullptr, 10));
}
