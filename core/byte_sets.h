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

// Each rule: kKept, the set of bytes it keeps, which the block kernels
// test; kCodes, its codes, in which exactly those bytes code as themselves.

// The form encoding: the 62 letters and digits.
struct FormRule {
  static constexpr ByteSet kKept = ByteSet::kLettersAndDigits;
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, false);
};

// The form encoding with a space written as '+', which is not kept: it is
// written by its code.
struct FormPlusRule : FormRule {
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, true);
};

// The strict escaped copy: 64 values, letters, digits, '-' and '.'.
struct StrictRule {
  static constexpr ByteSet kKept = ByteSet::kStrict;
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, false);
};

// The URL copy: 86 values, letters, digits and the 24 marks a URL keeps.
struct UrlRule {
  static constexpr ByteSet kKept = ByteSet::kUrl;
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, false);
};

// The high-byte encoding and copy: the ASCII bytes, 0x00 to 0x7F.
struct AsciiRule {
  static constexpr ByteSet kKept = ByteSet::kAscii;
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, false);
};

// The lenient escaped copy: every byte kept.
struct KeepAllRule {
  static constexpr ByteSet kKept = ByteSet::kAll;
  static constexpr ByteCodes kCodes = MakeByteCodes(kKept, false);
};

// The bytes of a multibyte character in the escaped copies: every byte
// escaped.
constexpr ByteCodes kEscapeAllCodes = MakeByteCodes(ByteSet::kAll, false, true);

}  // namespace vesk

#endif  // VESK_CORE_BYTE_SETS_H
