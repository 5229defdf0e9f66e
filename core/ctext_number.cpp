// Decimal readers for 8-bit and 16-bit text, and hex digit decoding.
#include <climits>
#include <limits>

#include "veskstring.h"

namespace {

// No limit on the number of elements read: the terminator ends the text.
constexpr unsigned long kUncounted = ULONG_MAX;

// Reads an optional '-' (when `allowSign`) and then digits, from at most `n`
// elements. The value accumulates in the unsigned type, where overflow
// wraps around without undefined behaviour, and is negated there too.
template <typename Unsigned, typename Unit>
Unsigned ReadDecimal(const Unit* text, unsigned long n, bool allowSign) {
  if (text == nullptr || n == 0) return 0;
  unsigned long i = 0;
  const bool negative = allowSign && text[0] == '-';
  if (negative) i = 1;
  Unsigned value = 0;
  // An uncounted text ends at its terminator, a non-digit like any other,
  // so the count is tested only where there is one.
  for (; (n == kUncounted || i < n) && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10u + static_cast<Unsigned>(text[i] - '0');
  }
  return negative ? static_cast<Unsigned>(0u - value) : value;
}

// The signed value with the same bits modulo 2^width, without relying on
// an out-of-range conversion.
template <typename Signed, typename Unsigned>
Signed Wrap(Unsigned value) {
  constexpr auto kMax =
      static_cast<Unsigned>(std::numeric_limits<Signed>::max());
  if (value <= kMax) return static_cast<Signed>(value);
  return static_cast<Signed>(value - kMax - 1) +
         std::numeric_limits<Signed>::min();
}

template <typename Unit>
int ReadInt(const Unit* text, unsigned long n) {
  return Wrap<int>(ReadDecimal<unsigned>(text, n, true));
}

long long ReadInt64(const char* text, unsigned long n) {
  return Wrap<long long>(ReadDecimal<unsigned long long>(text, n, true));
}

}  // namespace

int ParseHexChar(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool IsHexChar(char c) { return ParseHexChar(c) >= 0; }

int ParseHexCouple(char hi, char lo, char* out) {
  const int high = ParseHexChar(hi);
  if (high < 0) return 0;
  const int low = ParseHexChar(lo);
  if (low < 0) return 1;
  *out = static_cast<char>(high * 16 + low);
  return 2;
}

int ToInt(const char* text) { return ReadInt(text, kUncounted); }

int ToInt(const char* text, unsigned long n) { return ReadInt(text, n); }

int ToInt(const unsigned short* text) { return ReadInt(text, kUncounted); }

long long ToInt64(const char* text) { return ReadInt64(text, kUncounted); }

long long ToInt64(const char* text, unsigned long n) {
  return ReadInt64(text, n);
}

unsigned long long ToUInt64(const char* text) {
  return ReadDecimal<unsigned long long>(text, kUncounted, false);
}
