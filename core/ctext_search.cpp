// Case-insensitive comparison and byte and substring search over C text.
#include <cstring>

#include "veskstring.h"

namespace {

// The lower-case fold as an unsigned value; 0 only for the NUL.
inline int Fold(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte ^ g_tolower_map[byte];
}

inline int Exact(char c) { return static_cast<unsigned char>(c); }

// The first place where `needle` starts in `haystack`, comparing bytes
// through `map`. A needle is only read while the haystack keeps pace, and
// the haystack only up to its terminator.
template <int (*map)(char)>
const char* Find(const char* haystack, const char* needle) {
  if (needle == nullptr || map(needle[0]) == 0) return haystack;
  for (const char* start = haystack; *start != '\0'; ++start) {
    unsigned long i = 0;
    while (map(needle[i]) != 0 && map(start[i]) == map(needle[i])) ++i;
    if (needle[i] == '\0') return start;
  }
  return nullptr;
}

}  // namespace

bool StrEqual(const char* a, const char* b) {
  return a != nullptr && b != nullptr && VeskStrICmp(a, b) == 0;
}

int VeskStrICmp(const char* a, const char* b) {
  for (unsigned long i = 0;; ++i) {
    const int diff = Fold(a[i]) - Fold(b[i]);
    if (diff != 0 || a[i] == '\0') return diff;
  }
}

int VeskStrNICmp(const char* a, const char* b, unsigned long n) {
  if (n == 0) return 0;
  unsigned long i = 0;
  while (i < n - 1 && a[i] != '\0' && Fold(a[i]) == Fold(b[i])) ++i;
  return Fold(a[i]) - Fold(b[i]);
}

bool VarStrEqual(const char* a, const char* b, bool caseSensitive) {
  if (a == nullptr || b == nullptr) return false;
  return caseSensitive ? std::strcmp(a, b) == 0 : VeskStrICmp(a, b) == 0;
}

const char* VeskStrChr(const char* s, int c) {
  for (; *s != '\0'; ++s) {
    if (static_cast<signed char>(*s) == c) return s;
  }
  return nullptr;
}

long VeskStrChrIndex(const char* s, int c) {
  const char* match = VeskStrChr(s, c);
  return match != nullptr ? match - s : kVeskStrNotFound;
}

const char* VeskStrRChr(const char* s, int c) {
  for (const char* p = s + std::strlen(s); p != s;) {
    if (static_cast<signed char>(*--p) == c) return p;
  }
  return nullptr;
}

const char* VeskStrStr(const char* haystack, const char* needle) {
  return Find<Exact>(haystack, needle);
}

const char* VeskStrCaseStr(const char* haystack, const char* needle) {
  return Find<Fold>(haystack, needle);
}

long VeskStrStrIndex(const char* haystack, const char* needle) {
  const char* match = VeskStrStr(haystack, needle);
  return match != nullptr ? match - haystack : kVeskStrNotFound;
}
