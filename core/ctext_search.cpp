// Case-insensitive comparison and byte search over C text. The substring
// searches are in substring_search.cpp.
#include <cassert>
#include <cstring>

#include "ctext_scan.h"
#include "veskstring.h"

namespace {

using vesk::BoundedLength;
using vesk::FoldByte;

int FoldDifference(char a, char b) { return FoldByte(a) - FoldByte(b); }

template <class K>
struct FoldedDifference {
  static std::size_t Run(const char* a, const char* b, std::size_t n) {
    return vesk::FirstDifference<true, K>(a, b, n);
  }
};

// The folded comparison of at most `limit` bytes. Each step measures a,
// then b no further than a's end, so both are readable over b's measured
// length; when that falls short of the step, the byte after it is b's
// terminator or a's, and readable in the other. Only the compare runs in
// the kernels' form: the whole comparison in the AVX2 form was slower
// (docs/PERFORMANCE.md).
int CompareFolded(const char* a, const char* b, std::size_t limit) {
  if (limit == 0) return 0;
  std::size_t done = 0;
  for (std::size_t step = 128;; step *= 2) {
    const std::size_t want = step < limit - done ? step : limit - done;
    const std::size_t aLength = BoundedLength(a + done, want);
    const std::size_t common = BoundedLength(b + done, aLength);
    const std::size_t diff =
        vesk::Dispatch<FoldedDifference>(a + done, b + done, common);
    if (diff < common) return FoldDifference(a[done + diff], b[done + diff]);
    done += common;
    if (done == limit) return 0;
    if (common < want) return FoldDifference(a[done], b[done]);
  }
}

// Whether `c` can equal a byte read as signed: -128 to 127 but not 0.
bool IsSearchableByte(int c) { return c >= -128 && c <= 127 && c != 0; }

}  // namespace

bool StrEqual(const char* a, const char* b) {
  return a != nullptr && b != nullptr && VeskStrICmp(a, b) == 0;
}

int VeskStrICmp(const char* a, const char* b) {
  assert(a != nullptr && b != nullptr);
  return VeskStrNICmp(a, b, static_cast<std::size_t>(-1));
}

int VeskStrNICmp(const char* a, const char* b, unsigned long n) {
  assert(n == 0 || (a != nullptr && b != nullptr));
  return CompareFolded(a, b, n);
}

bool VarStrEqual(const char* a, const char* b, bool caseSensitive) {
  if (a == nullptr || b == nullptr) return false;
  return caseSensitive ? std::strcmp(a, b) == 0 : VeskStrICmp(a, b) == 0;
}

// The C library's byte searches read the text once, up to the match or the
// terminator, and agree with these for every byte but the NUL, sorted out
// first.
const char* VeskStrChr(const char* s, int c) {
  assert(s != nullptr);
  return IsSearchableByte(c) ? std::strchr(s, c) : nullptr;
}

long VeskStrChrIndex(const char* s, int c) {
  const char* match = VeskStrChr(s, c);
  return match != nullptr ? match - s : kVeskStrNotFound;
}

const char* VeskStrRChr(const char* s, int c) {
  assert(s != nullptr);
  return IsSearchableByte(c) ? std::strrchr(s, c) : nullptr;
}

long VeskStrStrIndex(const char* haystack, const char* needle) {
  const char* match = VeskStrStr(haystack, needle);
  return match != nullptr ? match - haystack : kVeskStrNotFound;
}
