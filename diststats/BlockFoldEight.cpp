// Blocks of records in registers of eight doubles.

#ifdef __x86_64__
#define ACCREDIT_LANES 8
#include "accredit/diststats/internal/BlockArithmetic.h"

const MADetail::BlockFold MADetail::kFoldEight = kFoldHere;
#endif
