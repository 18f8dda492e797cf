#pragma once

#include <array>
#include <type_traits>

#include "accredit/distfun/MCDistFun.h"

// The functions of MCDistFun by name, for what goes through all of them. Needs -fno-access-control.

// kRounded: a probability that may pass 0 or 1 by as much as the logarithms of gamma are off.
enum Kind : unsigned { kPlain = 0, kPublic = 1, kProbability = 2, kCoded = 4, kRounded = 8 };

struct Function {
    const char* name;
    double (*call)(double x, double y, double z, long& code);
    unsigned kind;
    long lastCode;
};

// One shape for all: what a function does not take is dropped.
template <auto kFunction>
double Call(double x, double y, double z, long& code) {
    using F = decltype(kFunction);
    if constexpr (std::is_invocable_v<F, double>) {
        return kFunction(x);
    } else if constexpr (std::is_invocable_v<F, double, double>) {
        return kFunction(x, y);
    } else if constexpr (std::is_invocable_v<F, double, double, double>) {
        return kFunction(x, y, z);
    } else if constexpr (std::is_invocable_v<F, double, double, long&>) {
        return kFunction(x, y, code);
    } else if constexpr (std::is_same_v<F, decltype(&MAMath::MCDistFun::gammad)>) {
        return kFunction(x, y, z > 0.0, code);
    } else {
        return kFunction(x, y, z, code);
    }
}

constexpr unsigned kPublicProbability = kPublic | kProbability;
inline constexpr std::array kFunctions = {
    Function{"CdfStdNorm", Call<&MAMath::MCDistFun::CdfStdNorm>, kPublicProbability, 0},
    Function{"CdfNorm", Call<&MAMath::MCDistFun::CdfNorm>, kPublicProbability, 0},
    Function{"IdfStdNorm", Call<&MAMath::MCDistFun::IdfStdNorm>, kPublic, 0},
    Function{"IdfNorm", Call<&MAMath::MCDistFun::IdfNorm>, kPublic, 0},
    Function{"CdfChi", Call<&MAMath::MCDistFun::CdfChi>, kPublicProbability, 0},
    Function{"IdfChi", Call<&MAMath::MCDistFun::IdfChi>, kPublic, 0},
    Function{"CdfF", Call<&MAMath::MCDistFun::CdfF>, kPublicProbability | kRounded, 0},
    Function{"CdfT", Call<&MAMath::MCDistFun::CdfT>, kPublicProbability | kRounded, 0},
    Function{"IdfF", Call<&MAMath::MCDistFun::IdfF>, kPublic, 0},
    Function{"IdfT", Call<&MAMath::MCDistFun::IdfT>, kPublic, 0},
    Function{"CdfBin", Call<&MAMath::MCDistFun::CdfBin>, kPublicProbability | kCoded, 3},
    Function{"PdfBin", Call<&MAMath::MCDistFun::PdfBin>, kPublicProbability | kRounded | kCoded, 2},
    Function{"IdfBin", Call<&MAMath::MCDistFun::IdfBin>, kPublic | kCoded, 2},
    Function{"teskdnlgam", Call<&MAMath::MCDistFun::teskdnlgam>, kPublic, 0},
    Function{"derf", Call<&MAMath::MCDistFun::derf>, kPlain, 0},
    Function{"derfc", Call<&MAMath::MCDistFun::derfc>, kPlain, 0},
    Function{"prbnrm", Call<&MAMath::MCDistFun::prbnrm>, kProbability, 0},
    Function{"probit", Call<&MAMath::MCDistFun::probit>, kPlain, 0},
    Function{"dnlgam", Call<&MAMath::MCDistFun::dnlgam>, kPlain, 0},
    Function{"dnlbnc", Call<&MAMath::MCDistFun::dnlbnc>, kCoded, 1},
    Function{"gammad", Call<&MAMath::MCDistFun::gammad>, kProbability | kCoded, 1},
    Function{"teskidfchi", Call<&MAMath::MCDistFun::teskidfchi>, kCoded, 2},
    Function{"idfchb", Call<&MAMath::MCDistFun::idfchb>, kCoded, 2},
    Function{"cdfbet", Call<&MAMath::MCDistFun::cdfbet>, kProbability | kRounded | kCoded, 1},
    Function{"cbtaux", Call<&MAMath::MCDistFun::cbtaux>, kPlain, 0},
    Function{"teskcdff", Call<&MAMath::MCDistFun::teskcdff>, kProbability | kRounded | kCoded, 1},
    Function{"teskcdft", Call<&MAMath::MCDistFun::teskcdft>, kProbability | kRounded | kCoded, 1},
    Function{"betinv", Call<&MAMath::MCDistFun::betinv>, kPlain, 0},
    Function{"teskidff", Call<&MAMath::MCDistFun::teskidff>, kCoded, 2},
    Function{"teskidft", Call<&MAMath::MCDistFun::teskidft>, kCoded, 2},
};
