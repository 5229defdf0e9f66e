// VeskString: numbers and format directives, appended one character or one
// text at a time through AppendChar and AppendString.
#include <cstdarg>

#include "decimal_digits.h"
#include "direct_writer.h"
#include "host/text_services.h"
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

char* PutDigits(unsigned long magnitude, unsigned long base, char* end) {
  switch (base) {
    case 10: return vesk::PutDecimal(magnitude, end);
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
