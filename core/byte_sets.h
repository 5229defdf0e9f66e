// The rules of the percent-encoders: which byte set each keeps, and how it
// writes each of the 256 byte values (the byte itself when kept, '+' for a
// space where asked, otherwise its "%XX" escape), built at compile time.
#ifndef VESK_CORE_BYTE_SETS_H
#define VESK_CORE_BYTE_SETS_H

#include "kernels.h"
#include "veskstring.h"

namespace vesk {

struct ByteCodes {
  // code[b][0..2] holds what byte b becomes, code[b][3] how many of those
  // three bytes count: 1 or 3. A writer copies all three and advances by
  // the count, with no branch on the byte.
  char code[256][4];
};

// With `keepNone`, no byte is kept whatever the set.
constexpr ByteCodes MakeByteCodes(ByteSet kept, bool plusForSpace,
                                  bool keepNone = false) {
  ByteCodes codes{};
  for (int byte = 0; byte < 256; ++byte) {
    char* code = codes.code[byte];
    code[0] = '%';
    code[1] = VeskString::HexChar(byte >> 4);
    code[2] = VeskString::HexChar(byte);
    code[3] = 3;
    const bool keep = !keepNone && InSet(kept, byte);
    if (keep || (plusForSpace && byte == ' ')) {
      code[0] = keep ? static_cast<char>(byte) : '+';
      code[3] = 1;
    }
  }
  return codes;
}

// A rule: kKept, the set of bytes it keeps, which the block kernels test;
// kCodes, its codes, in which exactly those bytes code as themselves (with
// kPlusForSpace a space codes as '+', not kept).
template <ByteSet kSet, bool kPlusForSpace = false>
struct Rule {
  static constexpr ByteSet kKept = kSet;
  static constexpr ByteCodes kCodes = MakeByteCodes(kSet, kPlusForSpace);
};

// The form encodings, the strict and the lenient escaped copy, the URL copy,
// and the high-byte encoding and copy (the sets are described in kernels.h).
using FormRule = Rule<ByteSet::kLettersAndDigits>;
using FormPlusRule = Rule<ByteSet::kLettersAndDigits, true>;
using StrictRule = Rule<ByteSet::kStrict>;
using KeepAllRule = Rule<ByteSet::kAll>;
using UrlRule = Rule<ByteSet::kUrl>;
using AsciiRule = Rule<ByteSet::kAscii>;

// The bytes of a multibyte character in the escaped copies: every byte
// escaped.
constexpr ByteCodes kEscapeAllCodes = MakeByteCodes(ByteSet::kAll, false, true);

}  // namespace vesk

#endif  // VESK_CORE_BYTE_SETS_H
