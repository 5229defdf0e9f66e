// The sets of bytes that the percent-encoders keep, one 256-entry table per
// rule, built at compile time.
#ifndef VESK_CORE_BYTE_SETS_H
#define VESK_CORE_BYTE_SETS_H

namespace vesk {

struct ByteSet {
  bool contains[256];
  constexpr bool operator[](unsigned char byte) const { return contains[byte]; }
};

template <class Predicate>
constexpr ByteSet MakeByteSet(Predicate keep) {
  ByteSet set{};
  for (int byte = 0; byte < 256; ++byte) set.contains[byte] = keep(byte);
  return set;
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

// 62 values: the form encoding's letters and digits.
constexpr ByteSet kLettersAndDigits = MakeByteSet(IsAsciiLetterOrDigit);

// 64 values: letters, digits, '-' and '.'.
constexpr ByteSet kLettersDigitsDashDot = MakeByteSet(
    [](int byte) { return IsAsciiLetterOrDigit(byte) || byte == '-' || byte == '.'; });

// 86 values: letters, digits and the 24 marks a URL keeps, '%' among them.
constexpr ByteSet kUrlCharacters = MakeByteSet(
    [](int byte) { return IsAsciiLetterOrDigit(byte) || IsUrlMark(byte); });

// The ASCII bytes, 0x00 to 0x7F.
constexpr ByteSet kAsciiBytes = MakeByteSet([](int byte) { return byte < 0x80; });

// Every byte.
constexpr ByteSet kEveryByte = MakeByteSet([](int) { return true; });

}  // namespace vesk

#endif  // VESK_CORE_BYTE_SETS_H
