// Formatted appending: padded decimals and directives, and the decimal
// digits that AppendInt shares with U64ToChar.
#include <climits>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using namespace std::string_literals;
using vesk_test::Bytes;
using vesk_test::IsZeroed;

constexpr const char* kNull = nullptr;

// Each row appends through AppendFormat to a string holding "~".
#define ROW(expected, ...) \
  { #__VA_ARGS__, [](VeskString& s) { s.AppendFormat(__VA_ARGS__); }, expected }

TEST(AppendFormatTest, Directives) {
  const struct {
    const char* call;
    void (*append)(VeskString&);
    std::string expected;
  } kCases[] = {
      ROW("", ""), ROW("42%", "%d%%", 42), ROW("%%", "%%%%"),
      ROW("-2147483648", "%d", INT_MIN), ROW("ff", "%x", 255),
      ROW("ffffffff80000000", "%x", INT_MIN), ROW("0x0", "%p", kNull),
      ROW("0xdeadbeef", "%p", reinterpret_cast<void*>(0xDEADBEEFul)),
      ROW("[abc]", "[%s]", "abc"), ROW("[]", "[%s]", kNull),
      ROW("A", "%c", 0x141), ROW("a\0b"s, "a%cb", 0),
      ROW("tft", "%b%b%b", 2, 0, -1), ROW("1.5|0.1", "%f|%f", 1.5, 0.1),
      ROW("ab\0"s, "%3", "ab"), ROW("abc", "%3", "abcd"), ROW("", "%3", kNull),
      ROW("05 -5 123 00", "%2 %2 %2 %2", 5, -5, 123, 0),
      ROW("d7", "%5d%d", 7), ROW("3", "%D%S%X%d", 3), ROW("x", "%\xe9x"),
      ROW("ab", "ab%"), ROW("id=5&n=x", "id=%d&n=%s", 5, "x"),
  };
  for (const auto& c : kCases) {
    VeskString s("~");
    c.append(s);
    EXPECT_EQ(Bytes(s), "~" + c.expected) << c.call;
  }
}

#undef ROW

TEST(AppendNDigitsTest, ZerosStandBeforeTheSign) {
  const struct { int value, digits; const char* expected; } kCases[] = {
      {7, 2, "07"}, {-5, 3, "0-5"}, {-5, 2, "-5"}, {5, 0, "5"},
      {5, INT_MIN, "5"}, {INT_MIN, 12, "0-2147483648"},
  };
  for (const auto& c : kCases) {
    VeskString s;
    s.AppendNDigits(c.value, c.digits);
    EXPECT_EQ(Bytes(s), c.expected) << c.value << ", " << c.digits;
  }
}

// The decimal writer changes step at every power of ten and takes eight
// digits at once from 10^8 up: AppendInt (both signs) and U64ToChar agree
// with the C++ library on each side of every such edge.
TEST(DecimalDigitsTest, AgreeWithTheLibraryAtEveryPowerOfTen) {
  std::vector<unsigned long> values{ULONG_MAX, 1UL << 63};
  for (unsigned long power = 1;; power *= 10) {
    values.insert(values.end(), {power - 1, power, power + 1});
    if (power > ULONG_MAX / 10) break;
  }
  for (unsigned long value : values) {
    char* text = U64ToChar(value);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::string(text), std::to_string(value));
    Pelgc::SystemDelete(text);
    for (const long signedValue : {static_cast<long>(value), static_cast<long>(0 - value)}) {
      VeskString s;
      s.AppendInt(signedValue, 10);
      EXPECT_EQ(Bytes(s), std::to_string(signedValue));
    }
  }
}

TEST(FormatTest, ReplacesTheTextOrLeavesItZeroed) {
  VeskString s("abc");
  s.AppendFormat(nullptr);
  EXPECT_EQ(Bytes(s), "abc");
  s.Format("x%d", 1);
  EXPECT_EQ(Bytes(s), "x1");
  s.Format("");
  EXPECT_TRUE(IsZeroed(s));
  s = "abc";
  s.Format(nullptr);
  EXPECT_TRUE(IsZeroed(s));
}

}  // namespace
