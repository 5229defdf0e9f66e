// Decimal readers and hex digits.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::Guarded16;
using vesk_test::Guarded8;

TEST(CTextNumber, DecimalReadersWrapInTheirWidth) {
  // One text read in each width; the 16-bit ToInt shares the `i32` column.
  struct Case {
    std::string text;
    int i32;
    long long i64;
    unsigned long long u64;
  };
  const Case cases[] = {
      {"123", 123, 123, 123}, {"-45x", -45, -45, 0}, {"007", 7, 7, 7},
      {"-42", -42, -42, 0}, {"12\xB3", 12, 12, 12}, {"+5", 0, 0, 0},
      {" 5", 0, 0, 0}, {"-", 0, 0, 0}, {"--5", 0, 0, 0}, {"", 0, 0, 0},
      {"2147483647", INT_MAX, INT_MAX, INT_MAX},
      {"2147483648", INT_MIN, 2147483648, 2147483648},
      {"-2147483648", INT_MIN, INT_MIN, 0},
      {"-2147483649", INT_MAX, -2147483649LL, 0},
      {"4294967297", 1, 4294967297, 4294967297},
      {"9223372036854775807", -1, LLONG_MAX, LLONG_MAX},
      {"9223372036854775808", 0, LLONG_MIN, 9223372036854775808ULL},
      {"-9223372036854775808", 0, LLONG_MIN, 0},
      {"18446744073709551615", -1, -1, ULLONG_MAX},
      {"18446744073709551616", 0, 0, 0}, {"18446744073709551617", 1, 1, 1}};
  for (const Case& c : cases) {
    Guarded8 text(c.text);
    EXPECT_EQ(ToInt(text.get()), c.i32) << c.text;
    EXPECT_EQ(ToInt(Guarded16(vesk_test::Widen(c.text)).get()), c.i32);
    EXPECT_EQ(ToInt64(text.get()), c.i64) << c.text;
    EXPECT_EQ(ToUInt64(text.get()), c.u64) << c.text;
  }
  const char* none = nullptr;
  const unsigned short* none16 = nullptr;
  EXPECT_EQ(ToInt(none) | ToInt(none, 5) | ToInt(none16), 0);
  EXPECT_EQ(ToInt64(none) | ToInt64(none, 5), 0);
  EXPECT_EQ(ToUInt64(none), 0u);
}

TEST(CTextNumber, SixteenBitDigitsAreWholeUnits) {
  // Units whose low byte is a digit or the sign are neither.
  struct Case { Guarded16::Units text; int value; };
  const Case cases[] = {{{'1', 0x130, '2'}, 1}, {{'1', 0xFF10}, 1},
                        {{0x12D, '5'}, 0}, {{0xFF0D, '5'}, 0}};
  for (const Case& c : cases) {
    EXPECT_EQ(ToInt(Guarded16(c.text).get()), c.value) << c.text[1];
  }
}

TEST(CTextNumber, CountedReadersStopAtN) {
  struct Case { std::string text; unsigned long n; int i32; long long i64; };
  const Case cases[] = {
      {"12345", 3, 123, 123}, {"-12345", 3, -12, -12}, {"-12", 2, -1, -1},
      {"-5", 1, 0, 0}, {"5", 0, 0, 0}, {"12", 10, 12, 12}, {"1a2", 3, 1, 1},
      {"99999999999", 11, 1215752191, 99999999999},
      {"-92233720368547758080", 20, 0, LLONG_MIN}};
  for (const Case& c : cases) {
    auto text = Guarded8::Counted(c.text, c.n);
    EXPECT_EQ(ToInt(text.get(), c.n), c.i32) << c.text << " " << c.n;
    EXPECT_EQ(ToInt64(text.get(), c.n), c.i64) << c.text << " " << c.n;
  }
}

TEST(CTextNumber, HexDigits) {
  const std::string lower = "0123456789abcdef", upper = "0123456789ABCDEF";
  for (int byte = 0; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    const auto at = std::min(lower.find(c), upper.find(c));
    const int value = at == std::string::npos ? -1 : static_cast<int>(at);
    EXPECT_EQ(ParseHexChar(c), value) << byte;
    EXPECT_EQ(IsHexChar(c), value >= 0) << byte;
  }
  // `out` keeps its '?' unless the pair is complete.
  struct Case { char hi, lo; int result; char out; };
  const Case pairs[] = {{'4', '1', 2, 0x41}, {'f', 'F', 2, '\xFF'},
                        {'0', '0', 2, 0}, {'g', '1', 0, '?'},
                        {'4', 'g', 1, '?'}, {'\0', '\0', 0, '?'}};
  for (const Case& c : pairs) {
    char out = '?';
    EXPECT_EQ(ParseHexCouple(c.hi, c.lo, &out), c.result) << c.hi << c.lo;
    EXPECT_EQ(out, c.out) << c.hi << c.lo;
  }
}

}  // namespace
