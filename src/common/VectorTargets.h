/// The instruction sets that vector code is compiled for. To be included before anything of the vector library.
#pragma once

// The wider variants of AVX-512 have nothing that is used here, and SSSE3 alone is rare. Sanitized code is for the baseline
// and one wider set alone: each more takes minutes to build.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HWY_DISABLED_TARGETS \
    (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3 | HWY_AVX3_DL | HWY_AVX3_ZEN4 | HWY_AVX3_SPR | HWY_AVX10_2)
#else
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3_DL | HWY_AVX3_ZEN4 | HWY_AVX3_SPR | HWY_AVX10_2)
#endif
