// distfun_sweep CALLS [SEED]: calls every function of MCDistFun, the private ones included, in turn
// with arguments chosen to hurt, and checks what holds for every double. Built with the sanitizers
// it also finds overflows and stray reads. Prints each fault with its arguments; exits with 1 after
// a fault.
//
// distfun_sweep slowest SECONDS [SEED]: searches for the slowest call of each public function, so
// many seconds for each.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <functional>
#include <limits>
#include <random>
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
        const double value = f.call(a[0], a[1], a[2], code);
        Digest(value);
        if (const char* const fault = FaultOf(f, a, value, code)) {
            std::array<char, 200> text{};
            std::snprintf(text.data(), text.size(), "%s(%.17g, %.17g, %.17g) = %.17g, code %ld",
                          f.name, a[0], a[1], a[2], value, code);
            Fault(fault, text.data());
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
        std::printf("%lu calls, %lu faults\n", calls, mFaults);
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
};

using Arguments = std::array<double, 3>;

// The search goes on from the slowest call so far as often as it starts anew. The least of three
// times counts, in time of the processor, so that what else the machine does has little weight.
void PrintSlowest(const char* name, const std::function<void(const Arguments&)>& call,
                  double seconds, Source& source) {
    const auto time = [&](const Arguments& a) {
        const std::clock_t begin = std::clock();
        call(a);
        return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    };
    Arguments slowest{};
    double longest = 0.0;
    const std::clock_t begin = std::clock();
    while (static_cast<double>(std::clock() - begin) < seconds * CLOCKS_PER_SEC) {
        Arguments a = slowest;
        if (source.Below(2) == 0) {
            for (double& value : a) value = source.Next();
        } else {
            double& value = a[source.Below(a.size())];
            value = source.Below(4) == 0
                        ? source.Next()
                        : value * (1.0 + (2.0 * source.Fraction() - 1.0) *
                                             std::pow(10.0, -9.0 * source.Fraction()));
            if (source.Below(2) == 0) value = std::floor(value);
        }
        double least = time(a);
        for (int i = 0; i < 2 && least > longest; ++i) least = std::min(least, time(a));
        if (least > longest) {
            longest = least;
            slowest = a;
        }
    }
    std::printf("%-11s %9.3f ms (%.17g, %.17g, %.17g)\n", name, 1e3 * longest, slowest[0],
                slowest[1], slowest[2]);
    std::fflush(stdout);
}

// What a function does not take of the three arguments does not count. Grouped data are a thousand
// values: GPTile takes the percentage, the class width and the form, Mednci the cases and the
// level.
void PrintAllSlowest(double seconds, std::uint64_t seed) {
    Source source(seed);
    for (const Function& f : kFunctions) {
        if ((f.kind & kPublic) == 0) continue;
        const auto call = [&f](const Arguments& a) {
            long code = 0;
            f.call(a[0], a[1], a[2], code);
        };
        PrintSlowest(f.name, call, seconds, source);
    }
    std::vector<double> values(1000);
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<double>(i);
    const std::vector<double> weights(values.size(), 1.0);
    const auto percentile = [&](const Arguments& a) {
        double result = 0.0;
        long code = 0;
        MCDistFun::GPTile(1000, a[0], values, weights, a[2] > 1.0 ? values : std::vector{a[1]},
                          a[2] > 1.0   ? 1000
                          : a[2] > 0.0 ? 1
                                       : 0,
                          result, code);
    };
    PrintSlowest("GPTile", percentile, seconds, source);
    const auto interval = [&](const Arguments& a) {
        double lower = 0.0;
        double upper = 0.0;
        double actual = 0.0;
        MCDistFun::Mednci(1000, values, weights, a[0], a[1], true, lower, upper, actual);
    };
    PrintSlowest("Mednci", interval, seconds, source);
}

}  // namespace

int main(int argc, char** argv) {
    const bool slowest = argc > 2 && std::strcmp(argv[1], "slowest") == 0;
    const int seedAt = slowest ? 3 : 2;
    if (argc < 2 || argc > seedAt + 1) {
        std::fprintf(stderr,
                     "usage: distfun_sweep CALLS [SEED]\n"
                     "       distfun_sweep slowest SECONDS [SEED]\n");
        return 2;
    }
    const std::uint64_t seed = argc > seedAt ? std::strtoull(argv[seedAt], nullptr, 10) : 1;
    if (!slowest) return Sweep(seed).Run(std::strtoul(argv[1], nullptr, 10));
    PrintAllSlowest(std::strtod(argv[2], nullptr), seed);
    return 0;
}
