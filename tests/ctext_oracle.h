// The free functions over C text against the C library in the C locale,
// shared by the unit tests (texts at an unreadable page's edge) and the
// fuzz target (texts in blocks of just their size). The includer defines
// VESK_CHECK(condition) first.
#ifndef VESK_TESTS_CTEXT_ORACLE_H
#define VESK_TESTS_CTEXT_ORACLE_H

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/veskstring.h"

namespace vesk_test {

// What a case-insensitive comparison of at most `n` bytes gives: the C
// library finds where the texts first differ ignoring case, and there the
// difference of the bytes it folds, read unsigned, is the result. (Of
// strncasecmp's own result only the sign is standard.)
inline int FoldedDifference(const char* a, const char* b, std::size_t n) {
  std::size_t same = 0;  // the longest prefixes that compare so
  while (same < n && a[same] != 0 && strncasecmp(a, b, same + 1) == 0) ++same;
  if (same == n) return 0;
  return std::tolower(a[same] & 0xFF) - std::tolower(b[same] & 0xFF);
}

// What the character searches find: a byte equal to `c` read as signed,
// whatever the signedness of plain char (strchr compares `c` converted to
// char, so 233 would find 0xE9).
inline const char* Chr(const char* s, int c, bool last) {
  if (c == 0 || c < SCHAR_MIN || c > SCHAR_MAX) return nullptr;
  return last ? std::strrchr(s, c) : std::strchr(s, c);
}

// Comparisons and searches of `a` and `b` (null when `nullB`) and of
// `a` and the byte `c`.
inline void CheckSearches(const char* a, const char* b, int c, bool nullB) {
  const char* needle = nullB ? nullptr : b;
  VESK_CHECK(VeskStrICmp(a, b) == FoldedDifference(a, b, SIZE_MAX));
  VESK_CHECK(StrEqual(a, needle) == (!nullB && strcasecmp(a, b) == 0));
  VESK_CHECK(VarStrEqual(a, b, true) == (std::strcmp(a, b) == 0));
  VESK_CHECK(VarStrEqual(a, b, false) == (strcasecmp(a, b) == 0));
  VESK_CHECK(VeskStrChr(a, c) == Chr(a, c, false));
  VESK_CHECK(VeskStrRChr(a, c) == Chr(a, c, true));
  const char* found = Chr(a, c, false);
  VESK_CHECK(VeskStrChrIndex(a, c) == (found ? found - a : kVeskStrNotFound));
  const char* exact = nullB ? a : std::strstr(a, b);
  VESK_CHECK(VeskStrStr(a, needle) == exact);
  VESK_CHECK(VeskStrCaseStr(a, needle) == (nullB ? a : strcasestr(a, b)));
  VESK_CHECK(VeskStrStrIndex(a, needle) ==
             (exact ? exact - a : kVeskStrNotFound));
}

// The strips of `a` and of `wide` (16-bit units, where a unit above 0xFF
// matches no prefix byte) by `prefix`, which may be null.
inline void CheckStrips(const char* a, const unsigned short* wide,
                        const char* prefix) {
  const std::size_t n = prefix ? std::strlen(prefix) : 0;
  // `wide` up to its terminator or first high unit: shorter than `prefix`
  // when a high unit falls within it, so that nothing matches.
  std::string narrow;
  for (auto u = wide; *u != 0 && *u <= 0xFF; ++u) narrow += char(*u);
  const char* w = narrow.c_str();
  VESK_CHECK(StripPrefix(a, prefix) ==
             (prefix && !strncasecmp(a, prefix, n) ? a + n : nullptr));
  VESK_CHECK(StripPrefixCaseSensitive(a, prefix) ==
             (prefix && !std::strncmp(a, prefix, n) ? a + n : nullptr));
  VESK_CHECK(StripPrefix(wide, prefix) ==
             (prefix && !strncasecmp(w, prefix, n) ? wide + n : nullptr));
  VESK_CHECK(StripPrefixCaseSensitive(wide, prefix) ==
             (prefix && !std::strncmp(w, prefix, n) ? wide + n : nullptr));
  const char* body = a + std::strspn(a, "\t\n\v\f\r ");
  VESK_CHECK(StripWhitespace(a) == body);
  VESK_CHECK(StripScheme(a, prefix) == StripPrefix(body, prefix));
  VESK_CHECK(StripAtMostTwoSlashes(a) ==
             a + std::min<std::size_t>(std::strspn(a, "/"), 2));
}

// The hex digit readers on every pair of `a`'s bytes, its NUL included.
inline void CheckHexDigits(const char* a) {
  for (const char* p = a; *p != '\0'; ++p) {
    const char one[2] = {p[0], 0}, pair[3] = {p[0], p[1], 0};
    const bool hi = std::isxdigit(static_cast<unsigned char>(p[0]));
    const bool lo = std::isxdigit(static_cast<unsigned char>(p[1]));
    VESK_CHECK(IsHexChar(p[0]) == hi);
    VESK_CHECK(ParseHexChar(p[0]) == (hi ? std::strtol(one, nullptr, 16) : -1));
    char got = 'k';
    VESK_CHECK(ParseHexCouple(p[0], p[1], &got) == (hi ? 1 + lo : 0));
    VESK_CHECK(got == (hi && lo ? char(std::strtol(pair, nullptr, 16)) : 'k'));
  }
}

}  // namespace vesk_test

#endif  // VESK_TESTS_CTEXT_ORACLE_H
