// Filled in with its decoders.
#include "decoders/decoder.h"
