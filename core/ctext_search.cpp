// Case-insensitive comparison and byte search over C text. The substring
// searches are in substring_search.cpp.
#include <cstring>

#include "ctext_scan.h"
#include "veskstring.h"

namespace {

using vesk::BoundedLength;
using vesk::FirstFoldedDifference;
using vesk::FoldByte;

int FoldDifference(char a, char b) { return FoldByte(a) - FoldByte(b); }

// The folded comparison of at most `limit` bytes. Each step measures a,
// then b no further than a's end, so both are readable over b's measured
// length; when that falls short of the step, the byte after it is b's
// terminator or a's, and readable in the other.
int CompareFolded(const char* a, const char* b, std::size_t limit) {
  if (limit == 0) return 0;
  std::size_t done = 0;
  for (std::size_t step = 128;; step *= 2) {
    const std::size_t want = step < limit - done ? step : limit - done;
    const std::size_t a_len = BoundedLength(a + done, want);
    const std::size_t common = BoundedLength(b + done, a_len);
    const std::size_t diff = FirstFoldedDifference(a + done, b + done, common);
    if (diff < common) return FoldDifference(a[done + diff], b[done + diff]);
    done += common;
    if (done == limit) return 0;
    if (common < want) return FoldDifference(a[done], b[done]);
  }
}

// The offset of the first byte equal to `byte` among the `n` at `p`, or n.
std::size_t FirstByte(const char* p, std::size_t n, char byte) {
  std::size_t i = 0;
#if VESK_SCAN_SSE2
  if (n >= 16) {
    const __m128i wanted = _mm_set1_epi8(byte);
    for (;; i += 16) {
      if (i + 16 > n) i = n - 16;  // A last block overlapping checked bytes.
      const unsigned hits =
          vesk::BlockMask(_mm_cmpeq_epi8(vesk::LoadBlock(p + i), wanted));
      if (hits != 0) return i + __builtin_ctz(hits);
      if (i + 16 == n) return n;
    }
  }
#endif
  while (i < n && p[i] != byte) ++i;
  return i;
}

// The offset of the last byte equal to `byte` among the `n` at `p`, or n.
std::size_t LastByte(const char* p, std::size_t n, char byte) {
  std::size_t end = n;
#if VESK_SCAN_SSE2
  if (n >= 16) {
    const __m128i wanted = _mm_set1_epi8(byte);
    for (;; end -= 16) {
      if (end < 16) end = 16;  // A first block overlapping checked bytes.
      const unsigned hits = vesk::BlockMask(
          _mm_cmpeq_epi8(vesk::LoadBlock(p + end - 16), wanted));
      if (hits != 0) return end - 16 + (31 - __builtin_clz(hits));
      if (end == 16) return n;
    }
  }
#endif
  while (end != 0) {
    if (p[--end] == byte) return end;
  }
  return n;
}

// Whether `c` can equal a byte read as signed: -128 to 127 but not 0.
bool IsSearchableByte(int c) { return c >= -128 && c <= 127 && c != 0; }

}  // namespace

bool StrEqual(const char* a, const char* b) {
  return a != nullptr && b != nullptr && VeskStrICmp(a, b) == 0;
}

int VeskStrICmp(const char* a, const char* b) {
  return VeskStrNICmp(a, b, static_cast<std::size_t>(-1));
}

int VeskStrNICmp(const char* a, const char* b, unsigned long n) {
  return CompareFolded(a, b, n);
}

bool VarStrEqual(const char* a, const char* b, bool caseSensitive) {
  if (a == nullptr || b == nullptr) return false;
  return caseSensitive ? std::strcmp(a, b) == 0 : VeskStrICmp(a, b) == 0;
}

const char* VeskStrChr(const char* s, int c) {
  if (!IsSearchableByte(c)) return nullptr;
  vesk::TextPrefix text(s, 256);
  std::size_t from = 0;
  do {
    const std::size_t known = text.known();
    const std::size_t at =
        from + FirstByte(s + from, known - from, static_cast<char>(c));
    if (at < known) return s + at;
    from = known;
  } while (text.Grow());
  return nullptr;
}

long VeskStrChrIndex(const char* s, int c) {
  const char* match = VeskStrChr(s, c);
  return match != nullptr ? match - s : kVeskStrNotFound;
}

const char* VeskStrRChr(const char* s, int c) {
  if (!IsSearchableByte(c)) return nullptr;
  const std::size_t n = std::strlen(s);
  const std::size_t at = LastByte(s, n, static_cast<char>(c));
  return at < n ? s + at : nullptr;
}

long VeskStrStrIndex(const char* haystack, const char* needle) {
  const char* match = VeskStrStr(haystack, needle);
  return match != nullptr ? match - haystack : kVeskStrNotFound;
}
