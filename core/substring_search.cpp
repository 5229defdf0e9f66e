// Substring search over C text, exact or ignoring case. A block scan for
// places where the needle's first and last bytes both fit finds the common
// matches quickly; when checking those places costs too much for the text
// passed, the search goes on with a two-way scan, whose time is linear in
// the text and needle lengths for every input. The block scan runs 32 places
// a step, with AVX2 where the processor has it.
#include <cassert>
#include <cstdint>
#include <cstring>

#include "ctext_scan.h"
#include "vector_blocks.h"
#include "veskstring.h"

namespace {

using vesk::TextPrefix;

// Whether the `n` bytes at `a` and `b` are the same. Short runs compare as
// two overlapping words, which reads no byte outside either run; no run
// needs a call.
__attribute__((always_inline)) inline bool SameBytes(const char* a,
                                                     const char* b,
                                                     std::size_t n) {
  const auto same = [&](auto word, std::size_t at) {
    decltype(word) x, y;
    std::memcpy(&x, a + at, sizeof x);
    std::memcpy(&y, b + at, sizeof y);
    return x == y;
  };
  if (n < 4) return vesk::FirstDifference(a, b, n) == n;
  if (n < 8) return same(std::uint32_t{}, 0) && same(std::uint32_t{}, n - 4);
  if (n <= 16) return same(std::uint64_t{}, 0) && same(std::uint64_t{}, n - 8);
  return vesk::FirstDifference(a, b, n) == n;
}

struct ExactBytes {
  static unsigned char Map(char c) { return static_cast<unsigned char>(c); }
  static bool Equal(const char* a, const char* b, std::size_t n) {
    return SameBytes(a, b, n);
  }
#if VESK_WITH_SSE2
  static __m128i MapBlock(__m128i bytes) { return bytes; }
#endif
#if VESK_WITH_AVX2
  VESK_TARGET_AVX2 static __m256i MapBlock32(__m256i bytes) { return bytes; }
#endif
};

struct FoldedBytes {
  static unsigned char Map(char c) { return vesk::FoldByte(c); }
  static bool Equal(const char* a, const char* b, std::size_t n) {
    return vesk::FirstFoldedDifference(a, b, n) == n;
  }
#if VESK_WITH_SSE2
  static __m128i MapBlock(__m128i bytes) { return vesk::FoldBlock(bytes); }
#endif
#if VESK_WITH_AVX2
  VESK_TARGET_AVX2 static __m256i MapBlock32(__m256i bytes) {
    return vesk::FoldBlock32(bytes);
  }
#endif
};

// Two-way string matching: M. Crochemore and D. Perrin, "Two-way
// string-matching", Journal of the ACM 38(3), 1991, pages 651-675. The
// needle is cut at a critical factorisation, found as the later start of
// its greatest suffix under the byte order and under the reverse order
// (the maximal-suffix computation of that paper). The scan then matches the
// right part left to right and the left part right to left, and shifts by
// the period or past the mismatch: time linear in the lengths of text and
// needle, constant space.

// The needle's critical factorisation: `ell` is the index just before the
// right part, `period` the period of that suffix.
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

// The first match at or after `from` by two-way string matching. The text
// is measured only as far as the window being checked.
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

// The two-way scan from place `from` on, the text known to run `known`
// bytes, measured in steps of which the last was `step` long.
template <class Bytes>
__attribute__((noinline)) const char* TwoWayFrom(
    const char* text, std::size_t step, std::size_t known, std::size_t from,
    const char* needle, std::size_t m) {
  TextPrefix prefix(text, step, known);
  return TwoWay<Bytes>(text, prefix, from, needle, static_cast<long>(m));
}

// The needle's length and the (mapped) bytes its first and last places hold.
struct Needle {
  std::size_t length;
  unsigned char first;
  unsigned char last;
};

// Block tests for candidate places, where the needle's first and last bytes
// both fit: bit i of a mask stands for the place i bytes into the block.
#if VESK_WITH_SSE2
template <class Bytes>
struct Blocks16 {
  static constexpr std::size_t kPlaces = 16;
  static std::uint32_t Hits(const char* block, Needle n) {
    const __m128i head = Bytes::MapBlock(vesk::Load16(block));
    const __m128i tail = Bytes::MapBlock(vesk::Load16(block + n.length - 1));
    return vesk::BlockMask(
        _mm_and_si128(_mm_cmpeq_epi8(head, vesk::Broadcast(n.first)),
                      _mm_cmpeq_epi8(tail, vesk::Broadcast(n.last))));
  }
};

template <class Bytes>
struct Blocks16Pair {
  static constexpr std::size_t kPlaces = 32;
  static std::uint32_t Hits(const char* block, Needle n) {
    return Blocks16<Bytes>::Hits(block, n) |
           Blocks16<Bytes>::Hits(block + 16, n) << 16;
  }
};
#endif

#if VESK_WITH_AVX2
template <class Bytes>
struct Blocks32 {
  static constexpr std::size_t kPlaces = 32;
  VESK_TARGET_AVX2 static std::uint32_t Hits(const char* block, Needle n) {
    const __m256i head = Bytes::MapBlock32(vesk::Load32(block));
    const __m256i tail = Bytes::MapBlock32(vesk::Load32(block + n.length - 1));
    const __m256i first = _mm256_set1_epi8(static_cast<char>(n.first));
    const __m256i last = _mm256_set1_epi8(static_cast<char>(n.last));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_and_si256(
        _mm256_cmpeq_epi8(head, first), _mm256_cmpeq_epi8(tail, last))));
  }
};
#endif

// Looks at the places from `at` to `end`, calling `check` on each candidate
// until it returns true: in blocks of the first width while the text has
// room for one, the last block overlapping places already looked at (its
// mask leaves them out), then in the narrower widths, then byte by byte.
template <class Bytes, template <class> class... Widths>
struct Scan {
  template <class Check>
  __attribute__((always_inline)) static bool Run(const char* text,
                                                 std::size_t& at,
                                                 std::size_t end, Needle n,
                                                 Check& check) {
    for (; at < end; ++at) {
      if (Bytes::Map(text[at]) == n.first &&
          Bytes::Map(text[at + n.length - 1]) == n.last && check(at)) {
        return true;
      }
    }
    return false;
  }
};

template <class Bytes, template <class> class Width,
          template <class> class... Narrower>
struct Scan<Bytes, Width, Narrower...> {
  template <class Check>
  __attribute__((always_inline)) static bool Run(const char* text,
                                                 std::size_t& at,
                                                 std::size_t end, Needle n,
                                                 Check& check) {
    using Blocks = Width<Bytes>;
    constexpr std::size_t kPlaces = Blocks::kPlaces;
    if (end < kPlaces)
      return Scan<Bytes, Narrower...>::Run(text, at, end, n, check);
    const auto checkAll = [&](std::size_t block, std::uint32_t places) {
      for (; places != 0; places &= places - 1) {
        if (check(block + __builtin_ctz(places))) return true;
      }
      return false;
    };
    for (; end - at >= kPlaces; at += kPlaces) {
      const std::uint32_t places = Blocks::Hits(text + at, n);
      if (places != 0 && checkAll(at, places)) return true;
    }
    if (at == end) return false;
    const std::size_t block = end - kPlaces;
    const std::uint32_t places =
        Blocks::Hits(text + block, n) & ~0u << (at - block);
    at = end;
    return places != 0 && checkAll(block, places);
  }
};

// Checks the candidate places in [at, end). True when the search is over:
// at a match, in `found`, or, when checking has cost too much, with the
// two-way scan to run from place `twoWay`.
template <class Bytes, class Scanner>
__attribute__((always_inline)) inline bool ScanPlaces(
    const char* text, const char* needle, Needle n, std::size_t& at,
    std::size_t end, std::size_t& checked, const char*& found,
    std::size_t& twoWay) {
  const auto check = [&](std::size_t place) {
    if (Bytes::Equal(text + place, needle, n.length)) {
      found = text + place;
      return true;
    }
    checked += n.length;
    if (checked <= kCheckAllowance + 2 * place) return false;
    twoWay = place + 1;
    return true;
  };
  return Scanner::Run(text, at, end, n, check);
}

template <class Bytes>
Needle NeedleOf(const char* needle, std::size_t m) {
  return {m, Bytes::Map(needle[0]), Bytes::Map(needle[m - 1])};
}

// The text's first step is max(m, 256) bytes: a search that ends in it makes
// no call once the block scan has begun.
inline std::size_t FirstStep(std::size_t m) { return m > 256 ? m : 256; }

// The search after a whole first step, with `checked` bytes spent on it.
template <class Bytes, class Scanner>
__attribute__((always_inline)) inline const char* FindAfterFirstStep(
    const char* text, const char* needle, std::size_t m, std::size_t checked) {
  const std::size_t step = FirstStep(m);
  TextPrefix prefix(text, step, step);
  const Needle n = NeedleOf<Bytes>(needle, m);
  std::size_t at = step - m + 1;
  while (prefix.Grow(m)) {
    const char* found = nullptr;
    std::size_t twoWay = 0;
    if (ScanPlaces<Bytes, Scanner>(text, needle, n, at, prefix.known() - m + 1,
                                   checked, found, twoWay)) {
      if (found != nullptr) return found;
      return TwoWay<Bytes>(text, prefix, twoWay, needle, static_cast<long>(m));
    }
  }
  return nullptr;
}

// The search through the first step; what follows it, and the two-way scan,
// are tail calls, so that no vector register has to live across a call.
template <class Bytes, class Search>
__attribute__((always_inline)) inline const char* FindFrom(const char* text,
                                                           const char* needle) {
  if (needle == nullptr || needle[0] == '\0') return text;
  const std::size_t m = std::strlen(needle);
  const std::size_t step = FirstStep(m);
  const std::size_t known = vesk::BoundedLength(text, step);
  if (known < m) return nullptr;
  std::size_t at = 0, checked = 0, twoWay = 0;
  const char* found = nullptr;
  if (ScanPlaces<Bytes, typename Search::Scanner>(
          text, needle, NeedleOf<Bytes>(needle, m), at, known - m + 1, checked,
          found, twoWay)) {
    if (found != nullptr) return found;
    return TwoWayFrom<Bytes>(text, step, known, twoWay, needle, m);
  }
  if (known < step) return nullptr;
  return Search::Rest(text, needle, m, checked);
}

// The search with SSE2 blocks where the machine has them, bytes elsewhere.
template <class Bytes>
struct NarrowSearch {
#if VESK_WITH_SSE2
  using Scanner = Scan<Bytes, Blocks16Pair, Blocks16>;
#else
  using Scanner = Scan<Bytes>;
#endif
  __attribute__((noinline)) static const char* Rest(const char* text,
                                                    const char* needle,
                                                    std::size_t m,
                                                    std::size_t checked) {
    return FindAfterFirstStep<Bytes, Scanner>(text, needle, m, checked);
  }
  __attribute__((noinline)) static const char* Find(const char* text,
                                                    const char* needle) {
    return FindFrom<Bytes, NarrowSearch>(text, needle);
  }
};

#if VESK_WITH_AVX2
// The same with AVX2 blocks; whole functions are compiled for AVX2, so that
// the block tests are inlined into them.
template <class Bytes>
struct WideSearch {
  using Scanner = Scan<Bytes, Blocks32, Blocks16>;
  VESK_TARGET_AVX2 __attribute__((noinline)) static const char* Rest(
      const char* text, const char* needle, std::size_t m,
      std::size_t checked) {
    return FindAfterFirstStep<Bytes, Scanner>(text, needle, m, checked);
  }
  VESK_TARGET_AVX2 __attribute__((noinline)) static const char* Find(
      const char* text, const char* needle) {
    return FindFrom<Bytes, WideSearch>(text, needle);
  }
};
#endif

// Both searches stay out of line, so that this choice is a tail call and
// saves no register that only one of them uses.
template <class Bytes>
const char* Find(const char* text, const char* needle) {
  // A needle that is neither null nor empty needs a text.
  assert(text != nullptr || needle == nullptr || needle[0] == '\0');
#if VESK_WITH_AVX2
  if (vesk::g_hasAvx2) return WideSearch<Bytes>::Find(text, needle);
#endif
  return NarrowSearch<Bytes>::Find(text, needle);
}

}  // namespace

const char* VeskStrStr(const char* haystack, const char* needle) {
  return Find<ExactBytes>(haystack, needle);
}

const char* VeskStrCaseStr(const char* haystack, const char* needle) {
  return Find<FoldedBytes>(haystack, needle);
}
