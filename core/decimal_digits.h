// The decimal digits of a number, for AppendInt and U64ToChar.
#ifndef VESK_CORE_DECIMAL_DIGITS_H
#define VESK_CORE_DECIMAL_DIGITS_H

#include <cstring>

namespace vesk {

// The two-digit numbers 00 to 99, side by side.
inline constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536"
    "37383940414243444546474849505152535455565758596061626364656667686970717273"
    "7475767778798081828384858687888990919293949596979899";

// The two decimal digits of `v` < 100 at `out`.
inline void PutDigitPair(unsigned v, char* out) {
  std::memcpy(out, kDigitPairs + 2 * v, 2);
}

// Writes the decimal digits of `magnitude` (at most 20) backwards from
// `end` and returns where they start. Two digits a step, eight while the
// number is long: one 64-bit division leaves eight digits whose four pairs
// need no 64-bit division and do not wait on one another.
inline char* PutDecimal(unsigned long magnitude, char* end) {
  while (magnitude >= 100000000) {
    const unsigned long rest = magnitude / 100000000;
    const auto eight = static_cast<unsigned>(magnitude - rest * 100000000);
    const unsigned high = eight / 10000, low = eight % 10000;
    end -= 8;
    PutDigitPair(high / 100, end);
    PutDigitPair(high % 100, end + 2);
    PutDigitPair(low / 100, end + 4);
    PutDigitPair(low % 100, end + 6);
    magnitude = rest;
  }
  auto small = static_cast<unsigned>(magnitude);  // below 10^8
  for (; small >= 100; small /= 100) PutDigitPair(small % 100, end -= 2);
  if (small >= 10) {
    PutDigitPair(small, end -= 2);
    return end;
  }
  *--end = static_cast<char>('0' + small);
  return end;
}

}  // namespace vesk

#endif  // VESK_CORE_DECIMAL_DIGITS_H
