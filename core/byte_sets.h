// The kept sets of the percent-encoders. Each set is declared once, as a
// rule: how it writes each of the 256 byte values (the byte itself when
// kept, '+' for a space where asked, otherwise its "%XX" escape), built at
// compile time, and beside it the vector tests that mark the bytes it keeps
// in a block of 16 or 32. The encoders' walks take the rule as a type, so
// each walk uses the tests of its own set.
#ifndef VESK_CORE_BYTE_SETS_H
#define VESK_CORE_BYTE_SETS_H

#include "vector_blocks.h"
#include "veskstring.h"

namespace vesk {

struct ByteCodes {
  // code[b][0..2] holds what byte b becomes, code[b][3] how many of those
  // three bytes count: 1 or 3. A writer copies all three and advances by
  // the count, with no branch on the byte.
  char code[256][4];
};

template <class Predicate>
constexpr ByteCodes MakeByteCodes(Predicate keep, bool plusForSpace) {
  ByteCodes codes{};
  for (int byte = 0; byte < 256; ++byte) {
    char* code = codes.code[byte];
    code[0] = '%';
    code[1] = VeskString::HexChar(byte >> 4);
    code[2] = VeskString::HexChar(byte);
    code[3] = 3;
    if (keep(byte) || (plusForSpace && byte == ' ')) {
      code[0] = keep(byte) ? static_cast<char>(byte) : '+';
      code[3] = 1;
    }
  }
  return codes;
}

// By byte value alone: no byte from 0x80 up is a letter.
constexpr bool IsAsciiLetterOrDigit(int byte) {
  return (byte >= '0' && byte <= '9') ||
         ((byte & 0xDF) >= 'A' && (byte & 0xDF) <= 'Z');
}

constexpr bool IsUrlMark(int byte) {
  for (const char* mark = "!\"#$%&'()*+,-./:;=?@[]_~"; *mark != '\0'; ++mark) {
    if (*mark == byte) return true;
  }
  return false;
}

#if VESK_WITH_SSE2
inline __m128i Equals(__m128i chunk, char c) {
  return _mm_cmpeq_epi8(chunk, _mm_set1_epi8(c));
}

// A mask with bit i set when byte i at `p` is one of the 62 letters and
// digits. Bytes from 0x80 up fall outside both ranges.
inline unsigned LettersAndDigits(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  const __m128i letter =
      InRange(_mm_or_si128(chunk, _mm_set1_epi8(0x20)), 'a', 26);
  const __m128i digit = InRange(chunk, '0', 10);
  return BlockMask(_mm_or_si128(letter, digit));
}
#endif

#if VESK_WITH_AVX2
VESK_TARGET_AVX2 inline unsigned LettersAndDigits32(const unsigned char* p) {
  const __m256i chunk = Load32(p);
  const __m256i letter =
      InRange32(_mm256_or_si256(chunk, _mm256_set1_epi8(0x20)), 'a', 26);
  const __m256i digit = InRange32(chunk, '0', 10);
  return static_cast<unsigned>(
      _mm256_movemask_epi8(_mm256_or_si256(letter, digit)));
}
#endif

// Each rule: kCodes, its codes; Kept16(p), a mask of the kept bytes among
// the 16 at `p`; kHasKept32, whether it has Kept32(p), the same on 32 bytes
// for machines with AVX2. The vector tests mark exactly the bytes whose
// code is the byte itself.

// The form encoding: the 62 letters and digits.
struct FormRule {
  static constexpr ByteCodes kCodes =
      MakeByteCodes(IsAsciiLetterOrDigit, false);
  static constexpr bool kHasKept32 = true;
#if VESK_WITH_SSE2
  static unsigned Kept16(const unsigned char* p) { return LettersAndDigits(p); }
#endif
#if VESK_WITH_AVX2
  VESK_TARGET_AVX2 static unsigned Kept32(const unsigned char* p) {
    return LettersAndDigits32(p);
  }
#endif
};

// The form encoding with a space written as '+', which the vector tests
// do not count as kept: it is written by its code.
struct FormPlusRule : FormRule {
  static constexpr ByteCodes kCodes = MakeByteCodes(IsAsciiLetterOrDigit, true);
};

// The strict escaped copy: 64 values, letters, digits, '-' and '.'.
struct StrictRule {
  static constexpr ByteCodes kCodes = MakeByteCodes(
      [](int byte) {
        return IsAsciiLetterOrDigit(byte) || byte == '-' || byte == '.';
      },
      false);
  static constexpr bool kHasKept32 = false;
#if VESK_WITH_SSE2
  static unsigned Kept16(const unsigned char* p) {
    const __m128i chunk = Load16(p);
    return LettersAndDigits(p) |
           BlockMask(_mm_or_si128(Equals(chunk, '-'), Equals(chunk, '.')));
  }
#endif
};

// The URL copy: 86 values, letters, digits and the 24 marks a URL keeps,
// '%' among them.
struct UrlRule {
  static constexpr ByteCodes kCodes = MakeByteCodes(
      [](int byte) { return IsAsciiLetterOrDigit(byte) || IsUrlMark(byte); },
      false);
  static constexpr bool kHasKept32 = false;
#if VESK_WITH_SSE2
  // The kept bytes are the printable ones, 0x21 to 0x7E, but < > \ ^ ` { |
  // }. '<' and '>', like '\' and '^', differ in bit 1 alone, so one compare
  // tests each pair.
  static unsigned Kept16(const unsigned char* p) {
    const __m128i chunk = Load16(p);
    const __m128i pairs = _mm_or_si128(chunk, _mm_set1_epi8(0x02));
    const __m128i leftOut =
        _mm_or_si128(_mm_or_si128(Equals(pairs, '>'), Equals(pairs, '^')),
                     _mm_or_si128(Equals(chunk, '`'), InRange(chunk, '{', 3)));
    return BlockMask(
        _mm_andnot_si128(leftOut, InRange(chunk, 0x21, 0x7E - 0x21 + 1)));
  }
#endif
};

// The high-byte encoding and copy: the ASCII bytes, 0x00 to 0x7F.
struct AsciiRule {
  static constexpr ByteCodes kCodes =
      MakeByteCodes([](int byte) { return byte < 0x80; }, false);
  static constexpr bool kHasKept32 = true;
#if VESK_WITH_SSE2
  static unsigned Kept16(const unsigned char* p) {
    return ~BlockMask(Load16(p)) & 0xFFFF;
  }
#endif
#if VESK_WITH_AVX2
  VESK_TARGET_AVX2 static unsigned Kept32(const unsigned char* p) {
    return ~static_cast<unsigned>(_mm256_movemask_epi8(Load32(p)));
  }
#endif
};

// The lenient escaped copy: every byte kept.
struct KeepAllRule {
  static constexpr ByteCodes kCodes =
      MakeByteCodes([](int) { return true; }, false);
  static constexpr bool kHasKept32 = false;
#if VESK_WITH_SSE2
  static unsigned Kept16(const unsigned char*) { return 0xFFFF; }
#endif
};

// The bytes of a multibyte character in the escaped copies: every byte
// escaped.
constexpr ByteCodes kEscapeAllCodes =
    MakeByteCodes([](int) { return false; }, false);

}  // namespace vesk

#endif  // VESK_CORE_BYTE_SETS_H
