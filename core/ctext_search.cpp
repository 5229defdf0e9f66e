// Case-insensitive comparison and byte search over C text. The substring
// searches are in substring_search.cpp.
#include <cstdint>
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

#if VESK_SCAN_ALIGNED_BLOCKS
// The bytes from `p` to the end of its 4 KiB page: loading them cannot
// fault where `p` itself is readable.
std::size_t PageRoom(const char* p) {
  return 4096 - (reinterpret_cast<std::uintptr_t>(p) & 4095);
}

// CompareFolded in one pass: whole blocks of both texts while neither leaves
// its page nor the limit, then a byte at a time up to that point. Bytes
// loaded past a terminator are masked out, never used.
int CompareFoldedInPages(const char* a, const char* b, std::size_t limit) {
  std::size_t i = 0;
  while (i != limit) {
    std::size_t end = limit - i;
    if (PageRoom(a + i) < end) end = PageRoom(a + i);
    if (PageRoom(b + i) < end) end = PageRoom(b + i);
    end += i;
    for (; i + 16 <= end; i += 16) {
      const __m128i x = vesk::LoadBlock(a + i), y = vesk::LoadBlock(b + i);
      const __m128i same =
          _mm_cmpeq_epi8(vesk::FoldBlock(x), vesk::FoldBlock(y));
      const unsigned stop =
          (vesk::BlockMask(same) ^ 0xFFFFu) |
          vesk::BlockMask(_mm_cmpeq_epi8(x, _mm_setzero_si128()));
      if (stop != 0) {
        const std::size_t at = i + __builtin_ctz(stop);
        return FoldDifference(a[at], b[at]);
      }
    }
    for (; i < end; ++i) {
      const int diff = FoldDifference(a[i], b[i]);
      if (diff != 0 || a[i] == '\0') return diff;
    }
  }
  return 0;
}

// Masks of the bytes equal to `wanted` and of the NULs in the aligned block
// at `block`.
struct BlockHits {
  unsigned wanted, nul;
};
BlockHits ScanBlock(std::uintptr_t block, __m128i wanted) {
  const __m128i bytes = _mm_load_si128(reinterpret_cast<const __m128i*>(block));
  return {vesk::BlockMask(_mm_cmpeq_epi8(bytes, wanted)),
          vesk::BlockMask(_mm_cmpeq_epi8(bytes, _mm_setzero_si128()))};
}

// The first `byte`, not 0, before the terminator, by aligned blocks from the
// one holding `s`; bits for bytes before `s` are cleared.
const char* FirstByteAligned(const char* s, char byte) {
  const auto start = reinterpret_cast<std::uintptr_t>(s);
  const __m128i wanted = _mm_set1_epi8(byte);
  std::uintptr_t block = start & ~std::uintptr_t{15};
  BlockHits hits = ScanBlock(block, wanted);
  unsigned mask = (hits.wanted | hits.nul) & (~0u << (start - block));
  while (mask == 0) {
    block += 16;
    hits = ScanBlock(block, wanted);
    mask = hits.wanted | hits.nul;
  }
  const unsigned first = mask & (0u - mask);
  return (hits.wanted & first) != 0 ? s + (block - start + __builtin_ctz(first))
                                    : nullptr;
}

// The last `byte`, not 0, before the terminator, in one forward pass that
// keeps the last block with a match.
const char* LastByteAligned(const char* s, char byte) {
  const auto start = reinterpret_cast<std::uintptr_t>(s);
  const __m128i wanted = _mm_set1_epi8(byte);
  std::uintptr_t block = start & ~std::uintptr_t{15};
  BlockHits hits = ScanBlock(block, wanted);
  const unsigned skip = ~0u << (start - block);
  hits.wanted &= skip;
  hits.nul &= skip;
  std::uintptr_t last_block = block;
  unsigned last = 0;
  while (hits.nul == 0) {
    if (hits.wanted != 0) {
      last_block = block;
      last = hits.wanted;
    }
    block += 16;
    hits = ScanBlock(block, wanted);
  }
  // Matches before the first NUL of the last block.
  const unsigned before = hits.wanted & ((hits.nul & (0u - hits.nul)) - 1);
  if (before != 0) {
    last_block = block;
    last = before;
  }
  if (last == 0) return nullptr;
  return s + (last_block - start + (31 - __builtin_clz(last)));
}
#endif

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
#if VESK_SCAN_ALIGNED_BLOCKS
  return CompareFoldedInPages(a, b, n);
#endif
  return CompareFolded(a, b, n);
}

bool VarStrEqual(const char* a, const char* b, bool caseSensitive) {
  if (a == nullptr || b == nullptr) return false;
  return caseSensitive ? std::strcmp(a, b) == 0 : VeskStrICmp(a, b) == 0;
}

const char* VeskStrChr(const char* s, int c) {
  if (!IsSearchableByte(c)) return nullptr;
#if VESK_SCAN_ALIGNED_BLOCKS
  return FirstByteAligned(s, static_cast<char>(c));
#endif
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
#if VESK_SCAN_ALIGNED_BLOCKS
  return LastByteAligned(s, static_cast<char>(c));
#endif
  const std::size_t n = std::strlen(s);
  const std::size_t at = LastByte(s, n, static_cast<char>(c));
  return at < n ? s + at : nullptr;
}

long VeskStrStrIndex(const char* haystack, const char* needle) {
  const char* match = VeskStrStr(haystack, needle);
  return match != nullptr ? match - haystack : kVeskStrNotFound;
}
