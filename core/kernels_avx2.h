// The AVX2 form of the kernels, 32 bytes a block: built where the compiler
// can, run where the processor can. Its functions are compiled for AVX2
// whatever the build's flags, and so is RunAvx2, which runs an algorithm
// with this form.
#ifndef VESK_CORE_KERNELS_AVX2_H
#define VESK_CORE_KERNELS_AVX2_H

#include "kernels_sse2.h"  // the narrower form

#if VESK_WITH_SSE2 && defined(__x86_64__) && defined(__GNUC__)
#define VESK_WITH_AVX2 1
#define VESK_TARGET_AVX2 __attribute__((target("avx2")))
#include <immintrin.h>

namespace vesk::avx2 {

struct Lanes {
  using V = __m256i;
  static constexpr std::size_t kWidth = 32;
  VESK_TARGET_AVX2 static V Load(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
  }
  VESK_TARGET_AVX2 static V Splat(unsigned char byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
  }
  VESK_TARGET_AVX2 static V Or(V a, V b) { return _mm256_or_si256(a, b); }
  VESK_TARGET_AVX2 static V And(V a, V b) { return _mm256_and_si256(a, b); }
  VESK_TARGET_AVX2 static V AndNot(V a, V b) {
    return _mm256_andnot_si256(a, b);
  }
  VESK_TARGET_AVX2 static V Xor(V a, V b) { return _mm256_xor_si256(a, b); }
  VESK_TARGET_AVX2 static V Add(V a, V b) { return _mm256_add_epi8(a, b); }
  VESK_TARGET_AVX2 static V Equal(V a, V b) { return _mm256_cmpeq_epi8(a, b); }
  VESK_TARGET_AVX2 static V Less(V a, V b) { return _mm256_cmpgt_epi8(b, a); }
  VESK_TARGET_AVX2 static std::uint32_t Mask(V bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
  }
};

using NarrowerKernels = sse2::Kernels;
#define VESK_KERNEL VESK_TARGET_AVX2
#include "vector_kernels.h"
#undef VESK_KERNEL

}  // namespace vesk::avx2

namespace vesk {

template <template <class> class Op, class... Args>
VESK_TARGET_AVX2 VESK_FLATTEN auto RunAvx2(Args... args) {
  return Op<avx2::Kernels>::Run(args...);
}

}  // namespace vesk

#endif
#endif  // VESK_CORE_KERNELS_AVX2_H
