#pragma once

// What the accuracy and the speed of the distribution functions are measured on.

#include <array>
#include <cstddef>
#include <vector>

namespace DistFun {

/// The arguments of one call in the order of the function; those it does not have are 0.
using Arguments = std::array<double, 3>;

class Random;

/// A set of arguments on which a function works by one method, or on which its error is of a kind.
struct Region {
    const char* function;
    const char* name;
    Arguments (*draw)(Random&);
};

/// In the order of the tables, the regions of one function together.
const std::vector<Region>& Regions();

/// The first `count` arguments of a region, the same in every run.
std::vector<Arguments> Draw(const Region& region, std::size_t count);

}  // namespace DistFun
