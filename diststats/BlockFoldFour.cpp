// Blocks of records in registers of four doubles.

#ifdef __x86_64__
#define ACCREDIT_LANES 4
#include "accredit/diststats/internal/BlockArithmetic.h"

const MADetail::BlockFold MADetail::kFoldFour = kFoldHere;
#endif
