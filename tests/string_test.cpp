// VeskString: storage, assignment, appending and growth, formatting,
// comparison, case and slicing.
#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "host/vm_string.h"
#include "support.h"

namespace {

using namespace std::string_literals;
using namespace vesk_test;  // the helpers shared by the unit tests

constexpr const char* kNull = nullptr;
using Act = void (*)(VeskString&);  // what a row does to its string

// A new string: zeroed for null, else the text in a buffer of just its size
// or, empty, the shared empty text.
void ExpectText(const VeskString& s, const char* text, std::string row) {
  const int n = text != nullptr ? static_cast<int>(std::strlen(text)) : -1;
  // The states run zeroed, shared empty, own: one per length -1, 0 and more.
  ExpectString(s, State(std::min(n + 1, 2)), text ? text : "", n + 1, row);
}

// Every byte but 0, folded to `upper` or lower case by the C library in
// the C locale, or as it is.
std::string EachByte(int upper = -1) {
  std::string bytes;
  for (int b = 1; b < 256; ++b)
    bytes += char(upper < 0 ? b : upper ? std::toupper(b) : std::tolower(b));
  return bytes;
}

// Each row runs on a zeroed string `s` and names the state, the bytes and
// the capacity that it must be left with.
#define ROW(name, st, bytes, cap, ...) \
  Row(name, Act([](VeskString& s) { __VA_ARGS__; }), State::st, bytes, cap)

TEST(StringTest, StatesTextsAndCapacities) {
  using Row = std::tuple<const char*, Act, State, std::string, int>;
  const Row kRows[] = {
    ROW("LengthReadsNoFurther", kOwn, "ab", 3,
        s.Set(Guarded8::Counted("ab", 2).get(), 2)),
    ROW("CopyOntoItself", kOwn, "ab\0cd"s, 257, Put(s, "ab\0cd"s); s.Copy(s)),
    ROW("AssignedToItself", kOwn, "ab\0cd"s, 257, Put(s, "ab\0cd"s);
        const VeskString& same = s; s = same),
    ROW("NullVm", kSharedEmpty, "", 1, marlo::String* v = nullptr; s.Set(v)),
    ROW("ScriptStringAsUtf8", kOwn, "x\xC3\xA9\xF0\x9F\x98\x80", 8,
        const unsigned short units[] = {'x', 0xE9, 0xD83D, 0xDE00};
        marlo::String vm(units, 4); s.Set(&vm)),
    ROW("NulsAreAppended", kOwn, "a\0b"s, 257, s.AppendThreeChars("a\0b")),
    ROW("Hex", kOwn, "9FA0", 257, s.AppendHexByte(0x9F); s.AppendHexByte(0xA0)),
    ROW("Trimmed", kOwn, "a", 6, s = "a \t\r\n"; s.RemoveTrailingSpaces()),
    ROW("VtFfStay", kOwn, "a\v\f", 4, s = "a\v\f"; s.RemoveTrailingSpaces()),
    ROW("OnlySpaces", kOwn, "", 4, s = "   "; s.RemoveTrailingSpaces()),
    // No write into the shared empty text (it would fault), nor a release.
    ROW("ZeroedUntouched", kZeroed, "", 0, s.RemoveTrailingSpaces();
        s.ToUpper(); s.ToLower()),
    ROW("SharedEmptyUntouched", kSharedEmpty, "", 1, s = ""; s.Truncate(0);
        s.RemoveTrailingSpaces(); s.ToUpper(); s.ToLower()),
    ROW("FormatOfNothingZeroes", kZeroed, "", 0, s = "abc"; s.Format("")),
    ROW("Upper", kOwn, EachByte(1), 256, s = EachByte().data(); s.ToUpper()),
    ROW("Lower", kOwn, EachByte(0), 256, s = EachByte().data(); s.ToLower()),
    ROW("LowerToTheNul", kOwn, "hi\0AB"s, 257, Put(s, "Hi\0AB"s); s.ToLower()),
  };
  for (const auto& [name, act, state, bytes, capacity] : kRows) {
    VeskString s;
    act(s);
    ExpectString(s, state, bytes, capacity, name);
  }
}

#undef ROW

// Rows: a buffer of `capacity` bytes holding `length` bytes, and what it
// grows to on an append by AppendChar or by one AppendString.
TEST(StringTest, GrowthRule) {
  const std::tuple<int, int, std::string, bool, int> kRows[] = {
      {1023, 1022, "b", true, 1279},    {1024, 1023, "b", true, 1536},
      {7777, 7776, "b", true, 11665},   {10, 0, "123456789", true, 10},
      {10, 0, "1234567890", true, 266}, {10, 0, "123456789", false, 266},
      {10, 0, "12345678", false, 10},   {1024, 1021, "bc", false, 1536},
  };
  for (const auto& [capacity, length, appended, asChars, grown] : kRows) {
    VeskString t(capacity);
    Put(t, std::string(size_t(length), 'a') + (asChars ? appended : ""));
    if (!asChars) t.AppendString(appended.c_str());
    EXPECT_EQ(t.Capacity(), grown) << capacity << " " << appended;
    EXPECT_EQ(Bytes(t), std::string(size_t(length), 'a') + appended);
  }
}

TEST(StringTest, SecureClearZeroesTheWholeBufferBeforeReleasingIt) {
  static std::string released;
  VeskString s(10);
  s.AppendString("abc");
  std::memset(const_cast<char*>(s.Text()) + 4, 'x', 6);  // past the NUL
  Pelgc::SetReleaseObserver([](const void* block) {
    released.assign(static_cast<const char*>(block), 10);
  });
  s.SecureClear();
  Pelgc::SetReleaseObserver(nullptr);
  EXPECT_EQ(released, std::string(10, '\0'));
}

// Each row appends to a string holding "~".
#define ROW(bytes, ...) \
  Row(#__VA_ARGS__, Act([](VeskString& s) { __VA_ARGS__; }), bytes)

TEST(StringTest, Appends) {
  using Row = std::tuple<const char*, Act, std::string>;
  const Row kRows[] = {
    ROW("0x0|0xdeadbeef",
        s.AppendFormat("%p|%p", kNull, reinterpret_cast<void*>(0xDEADBEEFul))),
    ROW("[abc][]", s.AppendFormat("[%s][%s]", "abc", kNull)),
    ROW("1.5|0.1|0", s.AppendFormat("%f|%f|%f", 1.5, 0.1, 0.0)),
    ROW("ab\0abc"s, s.AppendFormat("%3%3%3", "ab", "abcd", kNull)),
    ROW("", s.AppendFormat(nullptr)),
    ROW("-2147483648|ffffffff80000000|0-2147483648",
        s.AppendFormat("%d|%x|", INT_MIN, INT_MIN);
        s.AppendNDigits(INT_MIN, 12)),
    ROW("-1.5e-7", s.AppendDouble(-1.5e-7)),
  };
  for (const auto& [call, append, expected] : kRows) {
    VeskString s("~");
    append(s);
    EXPECT_EQ(Bytes(s), "~" + expected) << call;
  }
  // What AppendFormat adds for a format and one int, which it may not read.
  const std::tuple<std::string, const char*, int> kOneInt[] = {
      {"42%", "%d%%", 42}, {"ff", "%x", 255},  {"a\0b"s, "a%cb", 0x100},
      {"t", "%b", 2},      {"f", "%b", 0},     {"05", "%2", 5},
      {"d7", "%5d%d", 7},  {"x", "%\xe9x", 0}, {"ab", "ab%", 0},
  };
  for (const auto& [expected, format, value] : kOneInt) {
    VeskString s("~");
    s.AppendFormat(format, value);
    EXPECT_EQ(Bytes(s), "~" + expected) << format << " " << value;
  }
  // What AppendInt (radix) or, with `digits`, AppendNDigits adds.
  const std::tuple<std::string, long, int, bool> kIntegers[] = {
      {"-10", -10, 10, false}, {"101010", 42, 2, false}, {"aa", 120, 11, false},
      {"zz", 1295, 36, false}, {"", 5, 37, false},       {"", 5, 1, false},
      {"07", 7, 2, true},      {"0-5", -5, 3, true},     {"-5", -5, 2, true},
      {"5", 5, INT_MIN, true},
  };
  for (const auto& [expected, value, n, digits] : kIntegers) {
    VeskString s("~");
    digits ? s.AppendNDigits(int(value), n) : s.AppendInt(value, n);
    EXPECT_EQ(Bytes(s), "~" + expected) << value << " " << n << " " << digits;
  }
}

#undef ROW

// Rows: two strings, a zeroed one written as null, and how they compare.
// The decimal writers take eight digits a step for long numbers: every
// power of ten, either side of it and both ends of the range show each
// step's digits.
TEST(StringTest, DecimalsAgreeWithTheLibraryAtEveryPowerOfTen) {
  std::vector<unsigned long> values{ULONG_MAX, 1UL << 63};
  for (unsigned long power = 1;; power *= 10) {
    values.insert(values.end(), {power - 1, power, power + 1});
    if (power > ULONG_MAX / 10) break;  // 10^19, the last that fits
  }
  for (unsigned long value : values) {
    EXPECT_EQ(TakeHeapText(U64ToChar(value)), std::to_string(value));
    for (const long signedValue : {long(value), long(0 - value)}) {
      VeskString s;
      s.AppendInt(signedValue, 10);
      EXPECT_EQ(Bytes(s), std::to_string(signedValue));
    }
  }
}

TEST(StringTest, ComparisonsAndCharacterCodes) {
  // Order: "=", "<", ">", or "" when none holds.
  using Row = std::tuple<const char*, std::string, const char*, std::string>;
  const Row kRows[] = {
      {kNull, "", kNull, "="},    {kNull, "", "", ""},
      {"", "", kNull, ""},        {kNull, "", "a", "<"},
      {"Z", "Z", "a", "<"},       {"ab", "ab", "abc", "<"},
      {"\xE9", "\xE9", "z", ">"}, {"ab\0c", "ab\0c"s, "ab", "="},
  };
  for (const auto& [textA, bytesA, textB, order] : kRows) {
    VeskString a, b(textB);
    if (textA != nullptr) Put(a = "", bytesA);
    if (textB == nullptr) b.Clear();
    SCOPED_TRACE(bytesA + " and " + (textB ? textB : "(zeroed)"));
    const bool equal = order == "=";
    EXPECT_EQ(std::make_tuple(a == b, b == a, a < b, b < a),
              std::make_tuple(equal, equal, order == "<", order == ">"));
    EXPECT_TRUE(a == a && !(a < a) && a == a.Text());
    EXPECT_EQ(a == textB, textB ? order == "=" : textA == nullptr);
  }
  const VeskString zeroed, codes("A\xE9");  // bytes read as signed
  EXPECT_EQ(std::make_pair(codes.CharCodeAt(0), codes.CharCodeAt(1)),
            std::make_pair(65.0, -23.0));
  for (double nan :
       {codes.CharCodeAt(2), codes.CharCodeAt(-1), zeroed.CharCodeAt(0)}) {
    EXPECT_TRUE(std::isnan(nan));
  }
}

TEST(StringTest, SlicesAndCharactersFromCodes) {
  VeskString hello("hello"), zeroed, nul("a");
  Put(nul, "\0bc"s);
  // Rows: a string, a start and an end, and the slice (null: zeroed).
  const std::tuple<const VeskString*, int, int, const char*> kSlices[] = {
      {&hello, 0, 0, "h"},     {&hello, 0, -1, "hello"}, {&hello, 0, 5, kNull},
      {&hello, 3, 2, kNull},   {&hello, -1, 2, kNull},   {&hello, 5, -1, kNull},
      {&zeroed, 0, -1, kNull}, {&nul, 1, 3, ""},         {&nul, 0, 2, "a"},
  };
  for (const auto& [s, start, end, expected] : kSlices) {
    ExpectText(s->SubString(start, end), expected,
               std::to_string(start) + ", " + std::to_string(end));
  }
  const std::pair<double, const char*> kCodes[] = {
      {65.9, "A"},         {-191, "A"},         {INT_MAX, "\xFF"},
      {-0.9, ""},          {256, ""},           {VeskNaN(), ""},
      {INT_MAX + 1.0, ""}, {INT_MIN - 0.5, ""}, {HUGE_VAL, ""},
  };
  for (const auto& [code, expected] : kCodes) {
    ExpectText(VeskString::CharFromCode(code), expected, std::to_string(code));
  }
}

}  // namespace
