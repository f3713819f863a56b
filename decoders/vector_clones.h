#pragma once
// Hot loops written to vectorise are compiled three times, for AVX-512, for
// AVX2 and for the plain x86-64 baseline, and the loader picks the one the
// processor runs. Sanitizer builds check the plain build alone, and off
// x86-64 it is the only one.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__SANITIZE_ADDRESS__)
#define VELMORIC_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v4", "avx2", "default")))
#else
#define VELMORIC_VECTOR_CLONES
#endif
