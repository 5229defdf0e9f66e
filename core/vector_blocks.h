// Module-internal helpers of the block scans: 16-byte forms with SSE2, which
// every x86-64 processor has, and 32-byte forms with AVX2, built where the
// compiler can and run where the processor can. VESK_WITH_SSE2 and
// VESK_WITH_AVX2 are the one test of which forms are built. VESK_NO_AVX2
// leaves the AVX2 forms out, so that the SSE2 forms can be tested on any
// machine.
#ifndef VESK_CORE_VECTOR_BLOCKS_H
#define VESK_CORE_VECTOR_BLOCKS_H

#if defined(__SSE2__)
#define VESK_WITH_SSE2 1
#include <emmintrin.h>

namespace vesk {

// 16 bytes from `p`, which need not be aligned.
inline __m128i Load16(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

// Bit i set when lane i of `bytes` has its top bit set, as a compare leaves
// a lane that holds.
inline unsigned BlockMask(__m128i bytes) {
  return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

// Lanes of `bytes` that lie in [low, low + count), count at most 128: the
// range is moved to start at -128, so that one signed compare tests it.
inline __m128i InRange(__m128i bytes, unsigned char low, int count) {
  const __m128i moved =
      _mm_add_epi8(bytes, _mm_set1_epi8(static_cast<char>(0x80 - low)));
  return _mm_cmplt_epi8(moved, _mm_set1_epi8(static_cast<char>(-128 + count)));
}

}  // namespace vesk
#endif

#if VESK_WITH_SSE2 && defined(__x86_64__) && defined(__GNUC__) && \
    !defined(VESK_NO_AVX2)
#define VESK_WITH_AVX2 1
#define VESK_TARGET_AVX2 __attribute__((target("avx2")))
#include <immintrin.h>

namespace vesk {

// Asked of the processor once, at dynamic initialisation: code run from other
// files' static initialisers before it may read false, which only means the
// SSE2 forms.
inline const bool g_hasAvx2 = [] {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0;
}();

// 32 bytes from `p`, which need not be aligned.
VESK_TARGET_AVX2 inline __m256i Load32(const void* p) {
  return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

// InRange on 32 bytes.
VESK_TARGET_AVX2 inline __m256i InRange32(__m256i bytes, unsigned char low,
                                          int count) {
  const __m256i moved =
      _mm256_add_epi8(bytes, _mm256_set1_epi8(static_cast<char>(0x80 - low)));
  return _mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(-128 + count)),
                           moved);
}

}  // namespace vesk
#endif

#endif  // VESK_CORE_VECTOR_BLOCKS_H
