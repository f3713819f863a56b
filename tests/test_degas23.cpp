// Tests of these decoders come with them.
#include "support.h"
