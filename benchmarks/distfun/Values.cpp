// distfun_values FILE COUNT: what every library answers on the first COUNT arguments of every
// region. A line a call, with tabs between: function, region, the three arguments, and for each
// library its name and its answer; all numbers as exact hexadecimal doubles. To a file, because
// libraries may write to the standard output.

#include <cstdio>
#include <cstdlib>

#include "Libraries.h"
#include "Regions.h"

int main(int argc, char** argv) {
    const long count = argc == 3 ? std::strtol(argv[2], nullptr, 10) : 0;
    std::FILE* file = count > 0 ? std::fopen(argv[1], "w") : nullptr;
    if (file == nullptr) {
        std::fprintf(stderr, "usage: distfun_values FILE COUNT\n");
        return 2;
    }
    for (const DistFun::Region& region : DistFun::Regions()) {
        const auto implementations = DistFun::ImplementationsOf(region.function);
        for (const auto& a : DistFun::Draw(region, static_cast<std::size_t>(count))) {
            std::fprintf(file, "%s\t%s\t%a\t%a\t%a", region.function, region.name, a[0], a[1],
                         a[2]);
            for (const auto& implementation : implementations) {
                std::fprintf(file, "\t%s\t%a", implementation.library, implementation.call(a));
            }
            std::fputc('\n', file);
        }
    }
    return std::fclose(file) == 0 ? 0 : 1;
}
