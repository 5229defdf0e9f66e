// The NEON form of the kernels, 16 bytes a block: every AArch64 processor
// has NEON.
#ifndef VESK_CORE_KERNELS_NEON_H
#define VESK_CORE_KERNELS_NEON_H

#if defined(__aarch64__) && defined(__ARM_NEON)
#define VESK_WITH_NEON 1
#include <arm_neon.h>

namespace vesk::neon {

struct Lanes {
  using V = uint8x16_t;
  static constexpr std::size_t kWidth = 16;
  static V Load(const void* p) {
    return vld1q_u8(static_cast<const std::uint8_t*>(p));
  }
  static V Splat(unsigned char byte) { return vdupq_n_u8(byte); }
  static V Or(V a, V b) { return vorrq_u8(a, b); }
  static V And(V a, V b) { return vandq_u8(a, b); }
  static V AndNot(V a, V b) { return vbicq_u8(b, a); }
  static V Xor(V a, V b) { return veorq_u8(a, b); }
  static V Add(V a, V b) { return vaddq_u8(a, b); }
  static V Equal(V a, V b) { return vceqq_u8(a, b); }
  static V Less(V a, V b) {
    return vcltq_s8(vreinterpretq_s8_u8(a), vreinterpretq_s8_u8(b));
  }
  // NEON has no byte mask move: each top bit is shifted to bit 0, then to
  // its lane's place in its half, and each half's lanes are summed.
  static std::uint32_t Mask(V bytes) {
    const int8x16_t places = {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7};
    const V bits = vshlq_u8(vshrq_n_u8(bytes, 7), places);
    return vaddv_u8(vget_low_u8(bits)) |
           static_cast<std::uint32_t>(vaddv_u8(vget_high_u8(bits))) << 8;
  }
};

using NarrowerKernels = ScalarReference;
#define VESK_KERNEL
#include "vector_kernels.h"
#undef VESK_KERNEL

}  // namespace vesk::neon

#endif
#endif  // VESK_CORE_KERNELS_NEON_H
