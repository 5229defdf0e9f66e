// Default host text services: number-to-text conversion and NaN.
#include "text_services.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "memory_manager.h"

namespace {

// A finite, non-zero double as its shortest round-trip decimal digits:
// |value| = 0.d1 d2 ... dn * 10^point.
struct Digits {
  bool negative = false;
  char digit[24] = {};
  int count = 0;
  int point = 0;
};

Digits ShortestDigits(double value) {
  // Scientific form: "-d.ddde+xx". 32 bytes hold any double in it.
  char text[32];
  const char* end = std::to_chars(text, text + sizeof text, value,
                                  std::chars_format::scientific)
                        .ptr;
  Digits d;
  const char* p = text;
  if (*p == '-') {
    d.negative = true;
    ++p;
  }
  for (; *p != 'e'; ++p) {
    if (*p != '.') d.digit[d.count++] = *p;
  }
  const bool negativeExponent = *++p == '-';
  int exponent = 0;
  for (++p; p < end; ++p) exponent = exponent * 10 + (*p - '0');
  d.point = (negativeExponent ? -exponent : exponent) + 1;
  return d;
}

char* Put(char* out, const char* from, int n) {
  std::memcpy(out, from, static_cast<unsigned long>(n));
  return out + n;
}

char* PutZeros(char* out, int n) {
  std::memset(out, '0', static_cast<unsigned long>(n));
  return out + n;
}

// "d.ddde+x" or "de-x": the first digit, the rest after a point, and the
// exponent of the first digit with its sign.
char* PutExponentForm(char* out, const Digits& d) {
  *out++ = d.digit[0];
  if (d.count > 1) {
    *out++ = '.';
    out = Put(out, d.digit + 1, d.count - 1);
  }
  *out++ = 'e';
  *out++ = d.point - 1 < 0 ? '-' : '+';
  return std::to_chars(out, out + 4, std::abs(d.point - 1)).ptr;
}

// Plain notation for points -5 to 21 (1e-6 <= |value| < 1e21), exponent
// form outside.
char* PutNumber(char* out, const Digits& d) {
  if (d.negative) *out++ = '-';
  if (d.point < -5 || d.point > 21) return PutExponentForm(out, d);
  if (d.point <= 0) {
    out = Put(out, "0.", 2);
    out = PutZeros(out, -d.point);
    return Put(out, d.digit, d.count);
  }
  if (d.point >= d.count) {
    out = Put(out, d.digit, d.count);
    return PutZeros(out, d.point - d.count);
  }
  out = Put(out, d.digit, d.point);
  *out++ = '.';
  return Put(out, d.digit + d.point, d.count - d.point);
}

// The text of NaN, the infinities and both zeros; null for other values.
const char* SpecialText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value < 0 ? "-Infinity" : "Infinity";
  if (value == 0) return "0";  // negative zero too
  return nullptr;
}

}  // namespace

double VeskNaN() { return std::numeric_limits<double>::quiet_NaN(); }

char* ConvertDoubleToString(double value) {
  char text[40];  // the longest is "-0.00000" and 17 digits
  const char* special = SpecialText(value);
  char* end = special != nullptr
                  ? Put(text, special, static_cast<int>(std::strlen(special)))
                  : PutNumber(text, ShortestDigits(value));
  *end = '\0';
  const unsigned long size = static_cast<unsigned long>(end - text) + 1;
  char* copy =
      static_cast<char*>(Pelgc::SystemNew(size, Pelgc::kMayReturnNull));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}
