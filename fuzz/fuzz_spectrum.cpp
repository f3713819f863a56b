#include "fuzz/fuzz_decoder.h"

VELMORIC_FUZZ_TARGET("SPU", "SPC", "SPS")
