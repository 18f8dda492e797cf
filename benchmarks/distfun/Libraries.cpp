#include "Libraries.h"

#include <cstring>

#include "accredit/distfun/MCDistFun.h"

namespace DistFun {

using MAMath::MCDistFun;

const std::vector<Implementation>& Accredit() {
    using A = const Arguments&;
    static const std::vector<Implementation> list = {
        {"Accredit", "CdfStdNorm", [](A a) { return MCDistFun::CdfStdNorm(a[0]); }},
        {"Accredit", "CdfNorm", [](A a) { return MCDistFun::CdfNorm(a[0], a[1], a[2]); }},
        {"Accredit", "IdfStdNorm", [](A a) { return MCDistFun::IdfStdNorm(a[0]); }},
        {"Accredit", "IdfNorm", [](A a) { return MCDistFun::IdfNorm(a[0], a[1], a[2]); }},
        {"Accredit", "CdfChi", [](A a) { return MCDistFun::CdfChi(a[0], a[1]); }},
        {"Accredit", "IdfChi", [](A a) { return MCDistFun::IdfChi(a[0], a[1]); }},
        {"Accredit", "CdfF", [](A a) { return MCDistFun::CdfF(a[0], a[1], a[2]); }},
        {"Accredit", "CdfT", [](A a) { return MCDistFun::CdfT(a[0], a[1]); }},
        {"Accredit", "IdfF", [](A a) { return MCDistFun::IdfF(a[0], a[1], a[2]); }},
        {"Accredit", "IdfT", [](A a) { return MCDistFun::IdfT(a[0], a[1]); }},
        {"Accredit", "CdfBin",
         [](A a) {
             long code = 0;
             return MCDistFun::CdfBin(a[0], a[1], a[2], code);
         }},
        {"Accredit", "PdfBin",
         [](A a) {
             long code = 0;
             return MCDistFun::PdfBin(a[0], a[1], a[2], code);
         }},
        {"Accredit", "IdfBin",
         [](A a) {
             long code = 0;
             return MCDistFun::IdfBin(a[0], a[1], a[2], code);
         }},
        {"Accredit", "teskdnlgam", [](A a) { return MCDistFun::teskdnlgam(a[0]); }},
    };
    return list;
}

#ifndef DISTFUN_WITH_BOOST
const std::vector<Implementation>& BoostMath() {
    static const std::vector<Implementation> none;
    return none;
}
#endif
#ifndef DISTFUN_WITH_GSL
const std::vector<Implementation>& Gsl() {
    static const std::vector<Implementation> none;
    return none;
}
#endif
#ifndef DISTFUN_WITH_R
const std::vector<Implementation>& R() {
    static const std::vector<Implementation> none;
    return none;
}
#endif

std::vector<Implementation> ImplementationsOf(const char* function) {
    std::vector<Implementation> result;
    for (const auto* list : {&Accredit(), &BoostMath(), &Gsl(), &R()}) {
        for (const Implementation& implementation : *list) {
            if (std::strcmp(implementation.function, function) == 0) {
                result.push_back(implementation);
            }
        }
    }
    return result;
}

}  // namespace DistFun
