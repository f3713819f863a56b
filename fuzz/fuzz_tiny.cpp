#include "fuzz/fuzz_decoder.h"

VELMORIC_FUZZ_TARGET("TNY", "TN1", "TN2", "TN3")
