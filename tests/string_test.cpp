// VeskString: storage, assignment, appending and growth, formatting,
// comparison, case and slicing.
#include <cctype>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>

#include "host/vm_string.h"
#include "support.h"

namespace {

using namespace std::string_literals;
using vesk_test::Bytes;
using vesk_test::ExpectString;
using vesk_test::Guarded8;
using vesk_test::Put;
using vesk_test::State;
using vesk_test::StateOf;

constexpr const char* kNull = nullptr;

// A new string: zeroed for null, else the text in a buffer of just its size
// or, empty, the shared empty text.
void ExpectText(const VeskString& s, const char* text,
                const std::string& what) {
  const int size = text != nullptr ? static_cast<int>(std::strlen(text)) : -1;
  const State state = size < 0 ? State::kZeroed
                      : size   ? State::kOwn
                               : State::kSharedEmpty;
  ExpectString(s, state, text ? text : "", size + 1, what);
}

// Every byte but 0, folded to `upper` or lower case by the C library in
// the C locale, or as it is.
std::string EachByte(int upper = -1) {
  std::string bytes;
  for (int b = 1; b < 256; ++b) {
    bytes += char(upper < 0 ? b : upper ? std::toupper(b) : std::tolower(b));
  }
  return bytes;
}

// Each row runs on a zeroed string `s` and names the state, the bytes and
// the capacity that it must be left with.
#define ROW(name, state, bytes, capacity, ...)                              \
  {                                                                         \
    name, [](VeskString& s) { __VA_ARGS__; }, State::state, bytes, capacity \
  }

TEST(StringTest, StatesTextsAndCapacities) {
  using Row =
      std::tuple<const char*, void (*)(VeskString&), State, std::string, int>;
  const Row kRows[] = {
    ROW("LengthReadsNoFurther", kOwn, "ab", 3,
        s.Set(Guarded8::Counted("ab", 2).get(), 2)),
    ROW("CopyOntoItself", kOwn, "ab\0cd"s, 257, Put(s, "ab\0cd"s); s.Copy(s)),
    ROW("AssignedToItself", kOwn, "ab\0cd"s, 257, Put(s, "ab\0cd"s);
        const VeskString& same = s; s = same),
    ROW("NullVm", kSharedEmpty, "", 1, marlo::String* v = nullptr; s.Set(v)),
    ROW("EmptyVm", kSharedEmpty, "", 1, marlo::String vm(""); s.Set(&vm)),
    ROW("ScriptStringAsUtf8", kOwn, "x\xC3\xA9\xF0\x9F\x98\x80", 8,
        const unsigned short units[] = {'x', 0xE9, 0xD83D, 0xDE00};
        marlo::String vm(units, 4); s.Set(&vm)),
    ROW("NulsAreAppended", kOwn, "a\0b"s, 257, s.AppendThreeChars("a\0b")),
    ROW("HexBytes", kOwn, "0A9FA0FF", 257,
        for (int b
             : {0x0A, 0x9F, 0xA0, 0xFF}) s.AppendHexByte(b)),
    ROW("TrailingSpaces", kOwn, "a", 6, s = "a \t\r\n";
        s.RemoveTrailingSpaces()),
    ROW("VtFfStay", kOwn, "a\v\f", 4, s = "a\v\f"; s.RemoveTrailingSpaces()),
    ROW("OnlySpaces", kOwn, "", 4, s = "   "; s.RemoveTrailingSpaces()),
    // No write into the shared empty text (it would fault), nor a release.
    ROW("ZeroedUntouched", kZeroed, "", 0, s.Truncate(0);
        s.RemoveTrailingSpaces(); s.ToUpper(); s.ToLower(); s.SecureClear();
        s.Clear()),
    ROW("SharedEmptyUntouched", kSharedEmpty, "", 1, s = ""; s.Truncate(0);
        s.RemoveTrailingSpaces(); s.ToUpper(); s.ToLower()),
    ROW("FormatReplaces", kOwn, "x1", 257, s = "abc"; s.Format("x%d", 1)),
    ROW("FormatOfNothingZeroes", kZeroed, "", 0, s = "abc"; s.Format("")),
    ROW("Upper", kOwn, EachByte(1), 256, s = EachByte().data(); s.ToUpper()),
    ROW("Lower", kOwn, EachByte(0), 256, s = EachByte().data(); s.ToLower()),
    ROW("ToLowerStopsAtANul", kOwn, "hello, world\0AB"s, 257,
        Put(s, "Hello, World\0AB"s);
        s.ToLower()),
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
  EXPECT_EQ(StateOf(s), State::kZeroed);
  EXPECT_EQ(released, std::string(10, '\0'));
}

// Each row appends to a string holding "~".
#define ROW(expected, ...)                                      \
  {                                                             \
#__VA_ARGS__, [](VeskString & s) { __VA_ARGS__; }, expected \
  }

TEST(StringTest, FormattedAppends) {
  const std::tuple<const char*, void (*)(VeskString&), std::string> kRows[] = {
    ROW("", s.AppendFormat("")),
    ROW("42%", s.AppendFormat("%d%%", 42)),
    ROW("%%", s.AppendFormat("%%%%")),
    ROW("ff", s.AppendFormat("%x", 255)),
    ROW("-2147483648", s.AppendFormat("%d", INT_MIN)),
    ROW("ffffffff80000000", s.AppendFormat("%x", INT_MIN)),
    ROW("0x0", s.AppendFormat("%p", kNull)),
    ROW("0xdeadbeef",
        s.AppendFormat("%p", reinterpret_cast<void*>(0xDEADBEEFul))),
    ROW("[abc]", s.AppendFormat("[%s]", "abc")),
    ROW("[]", s.AppendFormat("[%s]", kNull)),
    ROW("A", s.AppendFormat("%c", 0x141)),
    ROW("a\0b"s, s.AppendFormat("a%cb", 0)),
    ROW("tft", s.AppendFormat("%b%b%b", 2, 0, -1)),
    ROW("1.5|0.1", s.AppendFormat("%f|%f", 1.5, 0.1)),
    ROW("ab\0"s, s.AppendFormat("%3", "ab")),
    ROW("abc", s.AppendFormat("%3", "abcd")),
    ROW("", s.AppendFormat("%3", kNull)),
    ROW("", s.AppendFormat(nullptr)),
    ROW("05 -5 123 00", s.AppendFormat("%2 %2 %2 %2", 5, -5, 123, 0)),
    ROW("d7", s.AppendFormat("%5d%d", 7)),
    ROW("3", s.AppendFormat("%D%S%X%d", 3)),
    ROW("x", s.AppendFormat("%\xe9x")),
    ROW("ab", s.AppendFormat("ab%")),
    ROW("07", s.AppendNDigits(7, 2)),
    ROW("0-5", s.AppendNDigits(-5, 3)),
    ROW("-5", s.AppendNDigits(-5, 2)),
    ROW("5", s.AppendNDigits(5, INT_MIN)),
    ROW("0-2147483648", s.AppendNDigits(INT_MIN, 12)),
    ROW("-10101010|aa|-5", s.AppendInt(-10, 10); s.AppendInt(42, 2);
        s.AppendFormat("|"); s.AppendInt(120, 11); s.AppendFormat("|%d", -5)),
    ROW("zz|ffffffffffffffff", s.AppendInt(1295, 36); s.AppendChar('|');
        s.AppendInt(-1, 16); s.AppendInt(5, 37); s.AppendInt(5, 1)),
    ROW("-1.5e-7|0", s.AppendDouble(-1.5e-7); s.AppendFormat("|%f", 0.0)),
  };
  for (const auto& [call, append, expected] : kRows) {
    VeskString s("~");
    append(s);
    EXPECT_EQ(Bytes(s), "~" + expected) << call;
  }
}

#undef ROW

// Rows: two strings, a zeroed one written as null, and how they compare.
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
    EXPECT_EQ(a == b, order == "=");
    EXPECT_EQ(b == a, order == "=");
    EXPECT_EQ(a < b, order == "<");
    EXPECT_EQ(b < a, order == ">");
    EXPECT_TRUE(a == a && !(a < a) && a == a.Text());
    EXPECT_EQ(a == textB, textB ? order == "=" : textA == nullptr);
  }
  const VeskString zeroed, a("A"), high("\xE9\xFF");
  EXPECT_EQ(a.CharCodeAt(0), 65);
  EXPECT_EQ(high.CharCodeAt(0), -23);
  EXPECT_EQ(high.CharCodeAt(1), -1);
  for (double nan : {a.CharCodeAt(1), a.CharCodeAt(-1), zeroed.CharCodeAt(0)}) {
    EXPECT_TRUE(std::isnan(nan));
  }
}

TEST(StringTest, SlicesAndCharactersFromCodes) {
  VeskString hello("hello"), empty(""), zeroed, nul("a");
  Put(nul, "\0bc"s);
  // Rows: a string, a start and an end, and the slice (null: zeroed).
  const std::tuple<const VeskString*, int, int, const char*> kSlices[] = {
      {&hello, 0, 0, "h"},      {&hello, 1, 3, "ell"},  {&hello, 0, 4, "hello"},
      {&hello, 0, -1, "hello"}, {&hello, 4, -1, "o"},   {&hello, 0, 5, kNull},
      {&hello, 3, 2, kNull},    {&hello, -1, 2, kNull}, {&hello, 5, -1, kNull},
      {&hello, 1, -2, kNull},   {&empty, 0, -1, kNull}, {&zeroed, 0, -1, kNull},
      {&nul, 1, 3, ""},         {&nul, 0, 2, "a"},
  };
  for (const auto& [s, start, end, expected] : kSlices) {
    ExpectText(s->SubString(start, end), expected,
               std::to_string(start) + ", " + std::to_string(end));
  }
  const double inf = std::numeric_limits<double>::infinity();
  const std::pair<double, const char*> kCodes[] = {
      {65, "A"},
      {65.9, "A"},
      {321, "A"},
      {-191, "A"},
      {233, "\xE9"},
      {-23, "\xE9"},
      {2147483647, "\xFF"},
      {0, ""},
      {-2147483648.5, ""},
      {-0.9, ""},
      {256, ""},
      {VeskNaN(), ""},
      {2147483648.0, ""},
      {1e10, ""},
      {inf, ""},
      {-inf, ""},
  };
  for (const auto& [code, expected] : kCodes) {
    ExpectText(VeskString::CharFromCode(code), expected, std::to_string(code));
  }
}

}  // namespace
