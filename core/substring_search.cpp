// Substring search over C text, exact or ignoring case. A block scan for
// places where the needle's first and last bytes both fit finds the common
// matches quickly; when checking those places costs too much for the text
// passed, the search goes on with a two-way scan, whose time is linear in
// the text and needle lengths for every input. The block scan looks at a block
// of places a step, in the kernels' form.
#include <cassert>
#include <cstdint>
#include <cstring>

#include "ctext_scan.h"
#include "veskstring.h"

namespace {

using vesk::TextPrefix;

using vesk::ScalarReference;

// Whether the `n` bytes at `a` and `b` are the same, with kFold by their
// folds. Short exact runs compare as two overlapping words, which reads no
// byte outside either run.
template <bool kFold, class K>
bool Equal(const char* a, const char* b, std::size_t n) {
  const auto same = [&](auto word, std::size_t at) {
    decltype(word) x, y;
    std::memcpy(&x, a + at, sizeof x);
    std::memcpy(&y, b + at, sizeof y);
    return x == y;
  };
  if (!kFold && n >= 4 && n <= 16) {
    if (n < 8) return same(std::uint32_t{}, 0) && same(std::uint32_t{}, n - 4);
    return same(std::uint64_t{}, 0) && same(std::uint64_t{}, n - 8);
  }
  return vesk::FirstDifference<kFold, K>(a, b, n) == n;
}

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

template <bool kFold>
Factorization GreatestSuffix(const char* x, long m, bool reverse) {
  long ms = -1, j = 0, k = 1, p = 1;
  while (j + k < m) {
    const unsigned a = ScalarReference::Map<kFold>(x[j + k]),
                   b = ScalarReference::Map<kFold>(x[ms + k]);
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
template <bool kFold>
const char* TwoWay(const char* text, TextPrefix& prefix, std::size_t from,
                   const char* x, long m) {
  const Factorization up = GreatestSuffix<kFold>(x, m, false);
  const Factorization down = GreatestSuffix<kFold>(x, m, true);
  const Factorization f = up.ell > down.ell ? up : down;
  const long ell = f.ell;
  const char* y = text + from;
  const auto same = [&](long i, long j) {
    return ScalarReference::Map<kFold>(x[i]) ==
           ScalarReference::Map<kFold>(y[i + j]);
  };
  const auto readable = [&](long j) {
    return prefix.Reach(from + static_cast<std::size_t>(j + m));
  };
  if (Equal<kFold, ScalarReference>(x, x + f.period,
                                    static_cast<std::size_t>(ell + 1))) {
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

// The needle's length and the (mapped) bytes its first and last places hold.
struct Needle {
  std::size_t length;
  unsigned char first;
  unsigned char last;
};

// Looks at the places from `at` to `end`, calling `check` on each candidate
// (where the needle's first and last bytes both fit) until it returns true:
// in blocks of K while the text has room for one, the last block
// overlapping places already looked at (its mask leaves them out), then in
// K's narrower forms.
template <bool kFold, class K, class Check>
bool ScanBlocks(const char* text, std::size_t& at, std::size_t end, Needle n,
                Check& check) {
  constexpr std::size_t kPlaces = K::kWidth;
  if constexpr (kPlaces > 1) {
    if (end < kPlaces) {
      return ScanBlocks<kFold, typename K::Narrower>(text, at, end, n, check);
    }
  }
  const auto hits = [&](std::size_t block) {
    return K::template Candidates<kFold>(text + block, n.length - 1, n.first,
                                         n.last);
  };
  const auto checkAll = [&](std::size_t block, std::uint32_t places) {
    for (; places != 0; places &= places - 1) {
      if (check(block + __builtin_ctz(places))) return true;
    }
    return false;
  };
  for (; end - at >= kPlaces; at += kPlaces) {
    const std::uint32_t places = hits(at);
    if (places != 0 && checkAll(at, places)) return true;
  }
  if (at == end) return false;
  const std::size_t block = end - kPlaces;
  const std::uint32_t places = hits(block) & ~0u << (at - block);
  at = end;
  return places != 0 && checkAll(block, places);
}

// The search with the kernels K: the block scan over the text measured in
// doubling steps, the first max(m, 256) bytes long, until checking the
// candidate places has cost too much for the text passed; then the two-way
// scan from the next place on.
template <bool kFold>
struct Search {
  template <class K>
  struct With {
    static const char* Run(const char* text, const char* needle) {
      if (needle == nullptr || needle[0] == '\0') return text;
      const std::size_t m = std::strlen(needle);
      const std::size_t step = m > 256 ? m : 256;
      TextPrefix prefix(text, step, vesk::BoundedLength(text, step));
      const Needle n{m, ScalarReference::Map<kFold>(needle[0]),
                     ScalarReference::Map<kFold>(needle[m - 1])};
      if (prefix.known() < m) return nullptr;
      std::size_t at = 0, checked = 0, twoWay = 0;
      const char* found = nullptr;
      const auto check = [&](std::size_t place) {
        if (Equal<kFold, K>(text + place, needle, m)) {
          found = text + place;
          return true;
        }
        checked += m;
        if (checked <= kCheckAllowance + 2 * place) return false;
        twoWay = place + 1;
        return true;
      };
      do {
        if (ScanBlocks<kFold, K>(text, at, prefix.known() - m + 1, n, check)) {
          if (found != nullptr) return found;
          return TwoWay<kFold>(text, prefix, twoWay, needle,
                               static_cast<long>(m));
        }
      } while (prefix.Grow(m));
      return nullptr;
    }
  };
};

}  // namespace

const char* VeskStrStr(const char* haystack, const char* needle) {
  // A needle that is neither null nor empty needs a text.
  assert(haystack != nullptr || needle == nullptr || needle[0] == '\0');
  return vesk::Dispatch<Search<false>::With>(haystack, needle);
}

const char* VeskStrCaseStr(const char* haystack, const char* needle) {
  assert(haystack != nullptr || needle == nullptr || needle[0] == '\0');
  return vesk::Dispatch<Search<true>::With>(haystack, needle);
}
