#include "fuzz/fuzz_decoder.h"

VELMORIC_FUZZ_TARGET("NEO", "PI1", "PI2", "PI3")
