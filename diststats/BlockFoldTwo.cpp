// Blocks of records in registers of two doubles, which every processor has or can do without.

#define ACCREDIT_LANES 2
#include "accredit/diststats/internal/BlockArithmetic.h"

const MADetail::BlockFold MADetail::kFoldTwo = kFoldHere;
