#include "fuzz/fuzz_decoder.h"

VELMORIC_FUZZ_TARGET("CA1", "CA2", "CA3")
