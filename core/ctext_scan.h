// Module-internal pieces of the C-text comparisons and searches: a
// readable-prefix tracker and the block compare. Every scan reads only bytes
// that a terminator search has already shown to be part of the text: no byte
// past a terminator or a count is ever loaded, not even inside a page.
#ifndef VESK_CORE_CTEXT_SCAN_H
#define VESK_CORE_CTEXT_SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels.h"

namespace vesk {

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

// The offset of the first byte of `a` that differs from that of `b`, both
// `n` bytes long, or `n`; with `kFold`, bytes are compared by their folds.
// Runs of a block or more are compared in blocks of the form K, the last
// overlapping bytes already compared, so that nothing outside either run is
// read; shorter runs in K's narrower form.
template <bool kFold, class K>
std::size_t FirstDifference(const char* a, const char* b, std::size_t n) {
  if constexpr (K::kWidth == 1) {
    std::size_t i = 0;
    while (i < n && K::template Differ<kFold>(a + i, b + i) == 0) ++i;
    return i;
  } else {
    if (n < K::kWidth) {
      return FirstDifference<kFold, typename K::Narrower>(a, b, n);
    }
    for (std::size_t i = 0;; i += K::kWidth) {
      if (i + K::kWidth > n) i = n - K::kWidth;
      const std::uint32_t differ = K::template Differ<kFold>(a + i, b + i);
      if (differ != 0) return i + __builtin_ctz(differ);
      if (i + K::kWidth == n) return n;
    }
  }
}

}  // namespace vesk

#endif  // VESK_CORE_CTEXT_SCAN_H
