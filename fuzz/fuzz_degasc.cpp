#include "fuzz/fuzz_decoder.h"

VELMORIC_FUZZ_TARGET("PC1", "PC2", "PC3")
