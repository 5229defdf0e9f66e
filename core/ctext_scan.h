// Module-internal pieces of the C-text comparisons and searches: the case
// fold, a readable-prefix tracker, and byte-block scans (SSE2 where the
// machine has it, plain loops elsewhere). Every scan reads only bytes that a
// terminator search has already shown to be part of the text: no byte past
// a terminator or a count is ever loaded, not even inside a page.
#ifndef VESK_CORE_CTEXT_SCAN_H
#define VESK_CORE_CTEXT_SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "vector_blocks.h"
#include "veskstring.h"

namespace vesk {

// The module's one case fold, as g_tolower_map gives it: 'A' to 'Z' to
// lower case, every other byte unchanged. The searches, the
// case-insensitive compares and the prefix strips fold through it or its
// block forms below; ToUpper and ToLower apply the tables themselves.
inline unsigned char FoldByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return static_cast<unsigned char>(byte ^ g_tolower_map[byte]);
}

#if VESK_WITH_SSE2
// 16 copies of `byte`, spread from a general register; a broadcast from
// memory would read back a single stored byte as four and stall.
inline __m128i Broadcast(unsigned char byte) {
  return _mm_set1_epi32(static_cast<int>(byte * 0x01010101u));
}

// FoldByte on 16 bytes: 'A' to 'Z' gain 0x20.
inline __m128i FoldBlock(__m128i bytes) {
  return _mm_or_si128(
      bytes, _mm_and_si128(InRange(bytes, 'A', 26), _mm_set1_epi8(0x20)));
}
#endif

// The number of bytes before the terminator, at most `limit`. memchr stops
// at the first match, so nothing past the terminator is read.
inline std::size_t BoundedLength(const char* text, std::size_t limit) {
  const void* nul = std::memchr(text, 0, limit);
  return nul != nullptr ? static_cast<const char*>(nul) - text : limit;
}

// The known readable prefix of a terminated text, grown in doubling steps so
// that a search which stops early has not looked far beyond where it stopped.
class TextPrefix {
 public:
  // A prefix already measured: `known` bytes, the last step `step` long.
  TextPrefix(const char* text, std::size_t step, std::size_t known)
      : m_text(text), m_step(step), m_known(known), m_ended(known < step) {}

  // Bytes known to precede the terminator.
  std::size_t known() const { return m_known; }

  // Learns more of the text; false when the terminator was already seen.
  bool Grow(std::size_t atLeast = 0) {
    if (m_ended) return false;
    m_step = 2 * m_step > atLeast ? 2 * m_step : atLeast;
    const std::size_t got = BoundedLength(m_text + m_known, m_step);
    m_known += got;
    m_ended = got < m_step;
    return true;
  }

  // True when the text holds at least `want` bytes.
  bool Reach(std::size_t want) {
    while (m_known < want) {
      if (!Grow(want - m_known)) return false;
    }
    return true;
  }

 private:
  const char* m_text;
  std::size_t m_step;
  std::size_t m_known;
  bool m_ended;
};

#if VESK_WITH_SSE2
// Lanes where the bytes of `a` and `b` differ.
inline unsigned Mismatch(__m128i a, __m128i b) {
  return BlockMask(_mm_cmpeq_epi8(a, b)) ^ 0xFFFFu;
}

// Lanes where the folds of `a` and `b` differ. Two bytes fold alike when
// they are equal, or differ in the case bit alone and `a` is a letter (and
// so is `b`): one letter test where folding both blocks would take two.
inline unsigned FoldedMismatch(__m128i a, __m128i b) {
  const __m128i letter = InRange(_mm_or_si128(a, _mm_set1_epi8(0x20)), 'a', 26);
  const __m128i caseBit = _mm_and_si128(letter, _mm_set1_epi8(0x20));
  const __m128i rest = _mm_andnot_si128(caseBit, _mm_xor_si128(a, b));
  return Mismatch(rest, _mm_setzero_si128());
}
#endif

#if VESK_WITH_AVX2
// FoldBlock on 32 bytes.
VESK_TARGET_AVX2 inline __m256i FoldBlock32(__m256i bytes) {
  const __m256i upper = InRange32(bytes, 'A', 26);
  return _mm256_or_si256(bytes,
                         _mm256_and_si256(upper, _mm256_set1_epi8(0x20)));
}

// FoldedMismatch on 32 bytes.
VESK_TARGET_AVX2 inline unsigned FoldedMismatch32(__m256i a, __m256i b) {
  const __m256i letter =
      InRange32(_mm256_or_si256(a, _mm256_set1_epi8(0x20)), 'a', 26);
  const __m256i caseBit = _mm256_and_si256(letter, _mm256_set1_epi8(0x20));
  const __m256i rest = _mm256_andnot_si256(caseBit, _mm256_xor_si256(a, b));
  const __m256i same = _mm256_cmpeq_epi8(rest, _mm256_setzero_si256());
  return ~static_cast<unsigned>(_mm256_movemask_epi8(same));
}
#endif

// The offset of the first byte of `a` that differs from that of `b`, both
// `n` bytes long, or `n`; with `kFold`, bytes are compared by their folds.
// Runs of 16 bytes or more are compared in blocks, the last overlapping
// bytes already compared, so that nothing outside either run is read.
template <bool kFold>
inline std::size_t FirstDifferenceIn(const char* a, const char* b,
                                     std::size_t n) {
  std::size_t i = 0;
#if VESK_WITH_SSE2
  if (n >= 16) {
    for (;; i += 16) {
      if (i + 16 > n) i = n - 16;
      const __m128i x = Load16(a + i), y = Load16(b + i);
      const unsigned differ = kFold ? FoldedMismatch(x, y) : Mismatch(x, y);
      if (differ != 0) return i + __builtin_ctz(differ);
      if (i + 16 == n) return n;
    }
  }
#endif
  const auto map = [](char c) {
    return kFold ? FoldByte(c) : static_cast<unsigned char>(c);
  };
  while (i < n && map(a[i]) == map(b[i])) ++i;
  return i;
}

inline std::size_t FirstFoldedDifference(const char* a, const char* b,
                                         std::size_t n) {
  return FirstDifferenceIn<true>(a, b, n);
}

inline std::size_t FirstDifference(const char* a, const char* b,
                                   std::size_t n) {
  return FirstDifferenceIn<false>(a, b, n);
}

}  // namespace vesk

#endif  // VESK_CORE_CTEXT_SCAN_H
