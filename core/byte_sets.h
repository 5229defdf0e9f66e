// How the percent-encoders write each byte value, one 256-entry table per
// rule, built at compile time: the byte itself when the rule keeps it, '+'
// for a space where asked, otherwise its "%XX" escape.
#ifndef VESK_CORE_BYTE_SETS_H
#define VESK_CORE_BYTE_SETS_H

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
    code[1] = "0123456789ABCDEF"[byte >> 4];
    code[2] = "0123456789ABCDEF"[byte & 15];
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

// The form encoding keeps the 62 letters and digits, a space as '+' or not.
constexpr ByteCodes kFormCodes = MakeByteCodes(IsAsciiLetterOrDigit, false);
constexpr ByteCodes kFormPlusCodes = MakeByteCodes(IsAsciiLetterOrDigit, true);

// 64 values: letters, digits, '-' and '.'.
constexpr ByteCodes kStrictCodes = MakeByteCodes(
    [](int byte) { return IsAsciiLetterOrDigit(byte) || byte == '-' || byte == '.'; },
    false);

// 86 values: letters, digits and the 24 marks a URL keeps, '%' among them.
constexpr ByteCodes kUrlCodes = MakeByteCodes(
    [](int byte) { return IsAsciiLetterOrDigit(byte) || IsUrlMark(byte); }, false);

// The ASCII bytes, 0x00 to 0x7F.
constexpr ByteCodes kAsciiCodes =
    MakeByteCodes([](int byte) { return byte < 0x80; }, false);

// Every byte kept, and every byte escaped.
constexpr ByteCodes kKeepAllCodes = MakeByteCodes([](int) { return true; }, false);
constexpr ByteCodes kEscapeAllCodes = MakeByteCodes([](int) { return false; }, false);

}  // namespace vesk

#endif  // VESK_CORE_BYTE_SETS_H
