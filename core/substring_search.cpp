// Substring search over C text, exact or ignoring case. A block scan for
// places where the needle's first and last bytes both fit finds the common
// matches quickly; when checking those places costs too much for the text
// passed, the search goes on with a two-way scan, whose time is linear in
// the text and needle lengths for every input.
#include <cstdint>
#include <cstring>

#include "ctext_scan.h"
#include "veskstring.h"

namespace {

using vesk::TextPrefix;

// Whether the `n` bytes at `a` and `b` are the same. Short runs compare as
// two overlapping words, which reads no byte outside either run.
inline bool SameBytes(const char* a, const char* b, std::size_t n) {
  const auto same = [&](auto word, std::size_t at) {
    decltype(word) x, y;
    std::memcpy(&x, a + at, sizeof x);
    std::memcpy(&y, b + at, sizeof y);
    return x == y;
  };
  if (n >= 8 && n <= 16) return same(std::uint64_t{}, 0) && same(std::uint64_t{}, n - 8);
  if (n >= 4 && n < 8) return same(std::uint32_t{}, 0) && same(std::uint32_t{}, n - 4);
  if (n < 4) {
    for (std::size_t i = 0; i < n; ++i) {
      if (a[i] != b[i]) return false;
    }
    return true;
  }
  return std::memcmp(a, b, n) == 0;
}

struct ExactBytes {
  static unsigned char Map(char c) { return static_cast<unsigned char>(c); }
  static bool Equal(const char* a, const char* b, std::size_t n) {
    return SameBytes(a, b, n);
  }
#if VESK_SCAN_SSE2
  static __m128i MapBlock(__m128i bytes) { return bytes; }
#endif
};

struct FoldedBytes {
  static unsigned char Map(char c) { return vesk::FoldByte(c); }
  static bool Equal(const char* a, const char* b, std::size_t n) {
    return vesk::FirstFoldedDifference(a, b, n) == n;
  }
#if VESK_SCAN_SSE2
  static __m128i MapBlock(__m128i bytes) { return vesk::FoldBlock(bytes); }
#endif
};

// The needle split at a critical point: the start of its greatest suffix
// under one byte order or the reverse, whichever starts later, and the
// period of that suffix. `ell` is the index just before the suffix.
struct Factorization {
  long ell;
  long period;
};

template <class Bytes>
Factorization GreatestSuffix(const char* x, long m, bool reverse) {
  long ms = -1, j = 0, k = 1, p = 1;
  while (j + k < m) {
    const unsigned a = Bytes::Map(x[j + k]), b = Bytes::Map(x[ms + k]);
    if (a == b) {
      if (k == p) {
        j += p;
        k = 1;
      } else {
        ++k;
      }
    } else if ((a < b) != reverse) {
      j += k;
      k = 1;
      p = j - ms;
    } else {
      ms = j;
      j = ms + 1;
      k = p = 1;
    }
  }
  return {ms, p};
}

// The first match at or after `from` by the two-way scan. The text is
// measured only as far as the window being checked.
template <class Bytes>
const char* TwoWay(const char* text, TextPrefix& prefix, std::size_t from,
                   const char* x, long m) {
  const Factorization up = GreatestSuffix<Bytes>(x, m, false);
  const Factorization down = GreatestSuffix<Bytes>(x, m, true);
  const Factorization f = up.ell > down.ell ? up : down;
  const long ell = f.ell;
  const char* y = text + from;
  const auto same = [&](long i, long j) {
    return Bytes::Map(x[i]) == Bytes::Map(y[i + j]);
  };
  const auto readable = [&](long j) {
    return prefix.Reach(from + static_cast<std::size_t>(j + m));
  };
  if (Bytes::Equal(x, x + f.period, static_cast<std::size_t>(ell + 1))) {
    // A periodic needle: remember how much of the left part still matches
    // after a shift by the period.
    long memory = -1;
    for (long j = 0; readable(j);) {
      long i = (ell > memory ? ell : memory) + 1;
      while (i < m && same(i, j)) ++i;
      if (i < m) {
        j += i - ell;
        memory = -1;
        continue;
      }
      for (i = ell; i > memory && same(i, j);) --i;
      if (i <= memory) return y + j;
      j += f.period;
      memory = m - f.period - 1;
    }
    return nullptr;
  }
  const long shift = (ell + 1 > m - ell - 1 ? ell + 1 : m - ell - 1) + 1;
  for (long j = 0; readable(j);) {
    long i = ell + 1;
    while (i < m && same(i, j)) ++i;
    if (i < m) {
      j += i - ell;
      continue;
    }
    for (i = ell; i >= 0 && same(i, j);) --i;
    if (i < 0) return y + j;
    j += shift;
  }
  return nullptr;
}

// Checks made at candidate places may cost this many bytes plus twice the
// text passed before the two-way scan takes over.
constexpr std::size_t kCheckAllowance = 256;

template <class Bytes>
const char* Find(const char* text, const char* needle) {
  if (needle == nullptr || needle[0] == '\0') return text;
  const std::size_t m = std::strlen(needle);
  TextPrefix prefix(text, m > 256 ? m : 256);
  if (!prefix.Reach(m)) return nullptr;
  const unsigned char first = Bytes::Map(needle[0]);
  const unsigned char last = Bytes::Map(needle[m - 1]);
  std::size_t checked = 0;  // Bytes spent checking candidate places.
  // Returns true when the search is over, with the answer in `found`.
  const char* found = nullptr;
  const auto check = [&](std::size_t place) {
    if (Bytes::Equal(text + place, needle, m)) {
      found = text + place;
      return true;
    }
    checked += m;
    if (checked <= kCheckAllowance + 2 * place) return false;
    found =
        TwoWay<Bytes>(text, prefix, place + 1, needle, static_cast<long>(m));
    return true;
  };
#if VESK_SCAN_SSE2
  const __m128i first16 = vesk::Broadcast(first);
  const __m128i last16 = vesk::Broadcast(last);
  // Places from `block` on where both the first and the last byte fit.
  const auto hits = [&](std::size_t block) {
    const __m128i head = Bytes::MapBlock(vesk::LoadBlock(text + block));
    const __m128i tail = Bytes::MapBlock(vesk::LoadBlock(text + block + m - 1));
    return vesk::BlockMask(_mm_and_si128(_mm_cmpeq_epi8(head, first16),
                                         _mm_cmpeq_epi8(tail, last16)));
  };
  const auto check_all = [&](std::size_t block, unsigned places) {
    for (; places != 0; places &= places - 1) {
      if (check(block + __builtin_ctz(places))) return true;
    }
    return false;
  };
#endif
  std::size_t at = 0;  // The first place not yet looked at.
  do {
    const std::size_t end = prefix.known() - m + 1;  // Places with room.
#if VESK_SCAN_SSE2
    for (; end - at >= 32; at += 32) {
      const unsigned places = hits(at) | hits(at + 16) << 16;
      if (places != 0 && check_all(at, places)) return found;
    }
    // The last places, 16 at a time; the last block may overlap places
    // already looked at, which its mask leaves out.
    while (at < end && end >= 16) {
      const std::size_t block = at + 16 <= end ? at : end - 16;
      if (check_all(block, hits(block) & 0xFFFFu << (at - block))) return found;
      at = block + 16;
    }
#endif
    for (; at < end; ++at) {
      if (Bytes::Map(text[at]) == first &&
          Bytes::Map(text[at + m - 1]) == last && check(at)) {
        return found;
      }
    }
  } while (prefix.Grow(m));
  return nullptr;
}

}  // namespace

const char* VeskStrStr(const char* haystack, const char* needle) {
  return Find<ExactBytes>(haystack, needle);
}

const char* VeskStrCaseStr(const char* haystack, const char* needle) {
  return Find<FoldedBytes>(haystack, needle);
}
