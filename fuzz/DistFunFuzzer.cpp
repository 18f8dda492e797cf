// Every distribution function, the private ones included, with any doubles: what holds for all of
// them, and that the same call gives the same bits whatever was called before.

#include "DistFunChecks.h"
#include "Fuzzing.h"
#include "accredit/distfun/MCDistFun.h"

using fuzz::Input;
using fuzz::Require;
using fuzz::Same;
using MAMath::MCDistFun;

namespace {

void RequireNone(const char* fault) { Require(!fault, fault); }

long CountFrom(Input& input) {
    using Limits = std::numeric_limits<long>;
    const auto count = static_cast<long>(input.Below(16));
    return count == 14 ? Limits::min() : count == 15 ? Limits::max() : count - 1;
}

void Scalar(const Function& f, Input& input) {
    const std::array<double, 3> a = {input.Number(), input.Number(), input.Number()};
    long code = 0;
    const double value = f.call(a[0], a[1], a[2], code);
    RequireNone(FaultOf(f, a, value, code));
    long secondCode = 0;
    Require(Same(f.call(a[0], a[1], a[2], secondCode), value) && secondCode == code,
            "a function keeps no state");
}

// Values, weights and limits need not have the lengths that the counts tell.
void Percentile(Input& input) {
    const long n = CountFrom(input);
    const long k = CountFrom(input);
    const double percent = input.Number();
    const std::vector<double> x = input.Numbers();
    const std::vector<double> w = input.Numbers();
    double result = 0.0;
    long code = 99;
    MCDistFun::GPTile(n, percent, x, w, input.Numbers(), k, result, code);
    RequireNone(PercentileFault(result, code));
}

void Median(Input& input) {
    const long n = CountFrom(input);
    const double cases = input.Number();
    const double level = input.Number();
    const bool wantLevel = input.Flag();
    const std::vector<double> x = input.Numbers();
    std::array<double, 3> results = {};
    MCDistFun::Mednci(n, x, input.Numbers(), cases, level, wantLevel, results[0], results[1],
                      results[2]);
    for (const double result : results) Require(!std::isnan(result), "no result is a NaN");
    for (const double limit : {results[0], results[1]}) {
        Require(MCMV::IsMissing(limit) || std::find(x.begin(), x.end(), limit) != x.end(),
                "a limit is one of the values");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    while (!input.Empty()) {
        const std::size_t which = input.Below(kFunctions.size() + 2);
        if (which < kFunctions.size()) {
            Scalar(kFunctions[which], input);
        } else if (which == kFunctions.size()) {
            Percentile(input);
        } else {
            Median(input);
        }
    }
    return 0;
}
