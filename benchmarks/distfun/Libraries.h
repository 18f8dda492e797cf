#pragma once

// The distribution functions and the public libraries that they are measured beside.

#include <vector>

#include "Regions.h"

namespace DistFun {

/// How a library answers a function of MCDistFun, called by its name there.
struct Implementation {
    const char* library;
    const char* function;
    double (*call)(const Arguments&);
};

/// One list a library; those of libraries that were not found at configuration are empty. What a
/// library does not have is not in its list. No call throws; where there is no result it gives a
/// NaN, an infinity or, in Accredit, the missing value.
/// @{
const std::vector<Implementation>& Accredit();
const std::vector<Implementation>& BoostMath();
const std::vector<Implementation>& Gsl();
const std::vector<Implementation>& R();
/// @}

/// All that answer the function, Accredit first.
std::vector<Implementation> ImplementationsOf(const char* function);

}  // namespace DistFun
