// VeskString: numbers and format directives, appended one character or one
// text at a time through AppendChar and AppendString.
#include <cstdarg>
#include <cstring>

#include "../host/text_services.h"
#include "direct_writer.h"
#include "internal.h"
#include "veskstring.h"

namespace {

const char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";

// The digits of `magnitude` in `base`, least significant first, written
// backwards from `end`; returns where they start. Inlined with a constant
// base, the division becomes a multiplication.
inline char* PutDigitsIn(unsigned long magnitude, unsigned long base,
                         char* end) {
  do {
    *--end = kDigits[magnitude % base];
    magnitude /= base;
  } while (magnitude != 0);
  return end;
}

const char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536"
    "37383940414243444546474849505152535455565758596061626364656667686970717273"
    "7475767778798081828384858687888990919293949596979899";

// The two decimal digits of `v` < 100 at `out`.
inline void PutPair(unsigned v, char* out) { std::memcpy(out, kPairs + 2 * v, 2); }

// Decimal digits two at a time, eight a step while the number is long: one
// 64-bit division leaves eight digits whose four pairs need no 64-bit
// division and do not wait on one another.
char* PutDecimal(unsigned long magnitude, char* end) {
  while (magnitude >= 100000000) {
    const unsigned long rest = magnitude / 100000000;
    const auto eight = static_cast<unsigned>(magnitude - rest * 100000000);
    const unsigned high = eight / 10000, low = eight % 10000;
    end -= 8;
    PutPair(high / 100, end);
    PutPair(high % 100, end + 2);
    PutPair(low / 100, end + 4);
    PutPair(low % 100, end + 6);
    magnitude = rest;
  }
  auto small = static_cast<unsigned>(magnitude);  // below 10^8
  for (; small >= 100; small /= 100) PutPair(small % 100, end -= 2);
  if (small >= 10) {
    PutPair(small, end -= 2);
    return end;
  }
  *--end = kDigits[small];
  return end;
}

char* PutDigits(unsigned long magnitude, unsigned long base, char* end) {
  switch (base) {
    case 10: return PutDecimal(magnitude, end);
    case 16: return PutDigitsIn(magnitude, 16, end);
    default: return PutDigitsIn(magnitude, base, end);
  }
}

}  // namespace

void VeskString::AppendInt(long value, int radix) {
  if (radix < 2 || radix > 36) return;
  unsigned long magnitude = static_cast<unsigned long>(value);
  if (value < 0 && radix == 10) {
    AppendChar('-');
    magnitude = 0 - magnitude;  // exact for the most negative value too
  }
  // 64 binary digits is the most a number takes.
  char digits[128];
  char* const end = digits + sizeof digits;
  const char* first =
      PutDigits(magnitude, static_cast<unsigned long>(radix), end);
  vesk::AppendRun(*this, first, end - first);
}

void VeskString::AppendNDigits(int value, int digits) {
  // Measured by writing it once; the destructor releases the measure, also
  // when an exception passes.
  VeskString measure;
  measure.AppendInt(value, 10);
  for (long zeros = long{digits} - measure.m_length; zeros > 0; --zeros) {
    AppendChar('0');
  }
  AppendInt(value, 10);
}

void VeskString::AppendDouble(double value) {
  char* text = ConvertDoubleToString(value);
  // Only a non-empty text is known to be ours to release.
  if (text == nullptr || text[0] == '\0') return;
  vesk::ScopedBlock owned(text);
  AppendString(text);
}

void VeskString::AppendFormatV(const char* format, va_list args) {
  if (format == nullptr) return;
  for (const char* p = format; *p != '\0'; ++p) {
    if (*p != '%') {
      AppendChar(*p);
      continue;
    }
    if (*++p == '\0') return;  // a lone '%' at the end is dropped
    switch (*p) {
      case '%': AppendChar('%'); break;
      case 'p':
        AppendString("0x");
        AppendInt(reinterpret_cast<long>(va_arg(args, void*)), 16);
        break;
      case 's': AppendString(va_arg(args, const char*)); break;
      case 'd': AppendInt(va_arg(args, int), 10); break;
      case 'x': AppendInt(va_arg(args, int), 16); break;
      case 'c': AppendChar(static_cast<char>(va_arg(args, int))); break;
      case 'b': AppendChar(va_arg(args, int) != 0 ? 't' : 'f'); break;
      case 'f': AppendDouble(va_arg(args, double)); break;
      case '2': AppendNDigits(va_arg(args, int), 2); break;
      case '3': {
        const char* chars = va_arg(args, const char*);
        // Open case: a null text appends nothing rather than being read.
        if (chars != nullptr) AppendThreeChars(chars);
        break;
      }
      default: break;  // no directive: skipped, takes no argument
    }
  }
}

namespace {

// Ends a started argument list on every way out, exceptions included.
class ArgumentListEnd {
 public:
  explicit ArgumentListEnd(va_list& args) : m_args(args) {}
  ~ArgumentListEnd() { va_end(m_args); }
  ArgumentListEnd(const ArgumentListEnd&) = delete;
  ArgumentListEnd& operator=(const ArgumentListEnd&) = delete;

 private:
  va_list& m_args;
};

}  // namespace

void VeskString::AppendFormat(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const ArgumentListEnd end(args);
  AppendFormatV(format, args);
}

void VeskString::Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const ArgumentListEnd end(args);
  Clear();
  AppendFormatV(format, args);
}
