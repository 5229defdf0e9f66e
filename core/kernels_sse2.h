// The SSE2 form of the kernels, 16 bytes a block: every x86-64 processor
// has SSE2.
#ifndef VESK_CORE_KERNELS_SSE2_H
#define VESK_CORE_KERNELS_SSE2_H

#if defined(__SSE2__)
#define VESK_WITH_SSE2 1
#include <emmintrin.h>

namespace vesk::sse2 {

struct Lanes {
  using V = __m128i;
  static constexpr std::size_t kWidth = 16;
  static V Load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
  }
  static V Splat(unsigned char byte) {
    return _mm_set1_epi8(static_cast<char>(byte));
  }
  static V Or(V a, V b) { return _mm_or_si128(a, b); }
  static V And(V a, V b) { return _mm_and_si128(a, b); }
  static V AndNot(V a, V b) { return _mm_andnot_si128(a, b); }
  static V Xor(V a, V b) { return _mm_xor_si128(a, b); }
  static V Add(V a, V b) { return _mm_add_epi8(a, b); }
  static V Equal(V a, V b) { return _mm_cmpeq_epi8(a, b); }
  static V Less(V a, V b) { return _mm_cmplt_epi8(a, b); }
  static std::uint32_t Mask(V bytes) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
  }
};

using NarrowerKernels = ScalarReference;
#define VESK_KERNEL
#include "vector_kernels.h"
#undef VESK_KERNEL

}  // namespace vesk::sse2

#endif
#endif  // VESK_CORE_KERNELS_SSE2_H
