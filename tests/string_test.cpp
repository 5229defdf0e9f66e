// VeskString: storage, assignment, appending and growth, formatting,
// comparison, case and slicing.
#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "host/vm_string.h"
#include "support.h"

namespace {

using namespace std::string_literals;
using namespace vesk_test;  // the helpers shared by the unit tests

constexpr const char* kNull = nullptr;

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

// The operation `op` on the zeroed string `s`.
void Change(char op, VeskString& s) {
  const unsigned short units[] = {'x', 0xE9, 0xD83D, 0xDE00};
  marlo::String vm(units, 4);
  const VeskString& same = s;
  switch (op) {
    case 'g': s.Set(Guarded8::Counted("ab", 2).get(), 2); break;
    case 'c': Put(s, "ab\0cd"s), s.Copy(s); break;
    case '=': Put(s, "ab\0cd"s), s = same; break;
    case '0': s.Set(static_cast<marlo::String*>(nullptr)); break;
    case 'v': s.Set(&vm); break;
    case '3': s.AppendThreeChars("a\0b"); break;
    case 'x': s.AppendHexByte(0x9F), s.AppendHexByte(0xA0); break;
    case 'T': s = "abcdef", s.Truncate(9), s.Truncate(2); break;
    case 'o': s = "abcdef", s.Set(s.Text() + 2, 3); break;
    case 'O': s = "abcdef", s.Set(s.Text() + 2, -1), s.AppendChar('g'); break;
    case 't': s = "a \t\r\n", s.RemoveTrailingSpaces(); break;
    case 'f': s = "a\v\f", s.RemoveTrailingSpaces(); break;
    case ' ': s = "   ", s.RemoveTrailingSpaces(); break;
    case 'z': s.RemoveTrailingSpaces(), s.ToUpper(), s.ToLower(); break;
    case 'e': s = "", s.Truncate(0), s.RemoveTrailingSpaces(); break;
    case 'E': s = "", s.ToUpper(), s.ToLower(); break;
    case 'F': s = "abc", s.Format(""); break;
    case 'U': s = EachByte().data(), s.ToUpper(); break;
    case 'L': s = EachByte().data(), s.ToLower(); break;
    case 'l': Put(s, "Hi\0AB"s), s.ToLower(); break;
    case 's': s.AppendFormat("[%s][%s]", "abc", kNull); break;
    case '%': s.AppendFormat("%f|%f|%f", 1.5, 0.1, 0.0); break;
    case '#': s.AppendFormat("%3%3%3", "ab", "abcd", kNull); break;
    case 'n': s.AppendFormat(nullptr); break;
    case 'd': s.AppendNDigits(INT_MIN, 12), s.AppendDouble(-1.5e-7); break;
    default: ADD_FAILURE() << "no operation " << op;
  }
}

// Each row runs on a zeroed string and names the state, the bytes and the
// capacity that it must be left with. No operation writes into the shared
// empty text (it would fault) or releases it.
TEST(StringTest, StatesTextsAndCapacities) {
  const struct {
    char op;
    const char* name;
    State state;
    std::string bytes;
    int capacity;
  } kRows[] = {
      {'g', "LengthReadsNoFurther", State::kOwn, "ab", 3},
      {'c', "CopyOntoItself", State::kOwn, "ab\0cd"s, 257},
      {'=', "AssignedToItself", State::kOwn, "ab\0cd"s, 257},
      {'0', "NullVm", State::kSharedEmpty, "", 1},
      {'v', "ScriptStringAsUtf8", State::kOwn, "x\xC3\xA9\xF0\x9F\x98\x80", 8},
      {'3', "NulsAreAppended", State::kOwn, "a\0b"s, 257},
      {'x', "Hex", State::kOwn, "9FA0", 257},
      {'T', "TruncatedOnlyShorter", State::kOwn, "ab", 7},
      {'o', "SetFromItsOwnText", State::kOwn, "cde", 7},
      {'O', "SetFromItsOwnTextToTheNul", State::kOwn, "cdefg", 7},
      {'t', "Trimmed", State::kOwn, "a", 6},
      {'f', "VtFfStay", State::kOwn, "a\v\f", 4},
      {' ', "OnlySpaces", State::kOwn, "", 4},
      {'z', "ZeroedUntouched", State::kZeroed, "", 0},
      {'e', "SharedEmptyUntrimmed", State::kSharedEmpty, "", 1},
      {'E', "SharedEmptyUnfolded", State::kSharedEmpty, "", 1},
      {'F', "FormatOfNothingZeroes", State::kZeroed, "", 0},
      {'U', "Upper", State::kOwn, EachByte(1), 256},
      {'L', "Lower", State::kOwn, EachByte(0), 256},
      {'l', "LowerToTheNul", State::kOwn, "hi\0AB"s, 257},
      {'s', "[%s][%s] of abc, null", State::kOwn, "[abc][]", 257},
      {'%', "%f|%f|%f of 1.5, 0.1, 0", State::kOwn, "1.5|0.1|0", 260},
      {'#', "%3%3%3 of ab, abcd, null", State::kOwn, "ab\0abc"s, 257},
      {'n', "null format", State::kZeroed, "", 0},
      {'d', "AppendNDigits(INT_MIN, 12), AppendDouble(-1.5e-7)", State::kOwn,
       "0-2147483648-1.5e-7", 257},
  };
  for (const auto& row : kRows) {
    VeskString s;
    Change(row.op, s);
    ExpectString(s, row.state, row.bytes, row.capacity, row.name);
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

// What the appends add to a string holding "~".
TEST(StringTest, Appends) {
  // What AppendFormat adds for a format and one int, which it may not read.
  const struct {
    const char* format;
    int value;
    std::string expected;
  } kOneInt[] = {
      {"a%cb", 0x100, "a\0b"s}, {"%5d%d", 7, "d7"}, {"%\xe9x", 0, "x"}};
  for (const auto& row : kOneInt) {
    VeskString s("~");
    s.AppendFormat(row.format, row.value);
    EXPECT_EQ(Bytes(s), "~" + row.expected) << row.format << " " << row.value;
  }
  // What AppendInt (radix) or, with `digits`, AppendNDigits adds.
  const struct {
    long value;
    int n;
    bool digits;
    std::string expected;
  } kIntegers[] = {
      {-10, 10, false, "-10"}, {42, 2, false, "101010"}, {120, 11, false, "aa"},
      {1295, 36, false, "zz"}, {5, 37, false, ""},       {5, 1, false, ""},
      {7, 2, true, "07"},      {-5, 3, true, "0-5"},     {-5, 2, true, "-5"},
      {5, INT_MIN, true, "5"},
  };
  for (const auto& row : kIntegers) {
    VeskString s("~");
    row.digits ? s.AppendNDigits(int(row.value), row.n)
               : s.AppendInt(row.value, row.n);
    EXPECT_EQ(Bytes(s), "~" + row.expected)
        << row.value << ", " << row.n << (row.digits ? " digits" : " radix");
  }
}

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

// Rows: two strings, a zeroed one written as null, and how they compare:
// "=", "<", ">", or "" when none holds.
TEST(StringTest, ComparisonsAndCharacterCodes) {
  const struct {
    const char* textA;
    std::string bytesA;
    const char* textB;
    std::string order;
  } kRows[] = {
      {kNull, "", kNull, "="},    {kNull, "", "", ""},
      {"", "", kNull, ""},        {kNull, "", "a", "<"},
      {"Z", "Z", "a", "<"},       {"ab", "ab", "abc", "<"},
      {"\xE9", "\xE9", "z", ">"}, {"ab\0c", "ab\0c"s, "ab", "="},
  };
  for (const auto& row : kRows) {
    VeskString a, b(row.textB);
    if (row.textA != nullptr) Put(a = "", row.bytesA);
    if (row.textB == nullptr) b.Clear();
    SCOPED_TRACE(row.bytesA + " and " + (row.textB ? row.textB : "(zeroed)"));
    const bool equal = row.order == "=";
    EXPECT_EQ(
        std::make_tuple(a == b, b == a, a < b, b < a),
        std::make_tuple(equal, equal, row.order == "<", row.order == ">"));
    EXPECT_EQ(std::make_tuple(a == a, a < a, a == a.Text()),
              std::make_tuple(true, false, true));
    EXPECT_EQ(a == row.textB, row.textB ? equal : row.textA == nullptr);
  }
  // The byte at an index, read signed; NaN outside the text.
  const VeskString zeroed, codes("A\xE9");
  EXPECT_EQ(codes.CharCodeAt(0), 65.0);
  EXPECT_EQ(codes.CharCodeAt(1), -23.0);
  for (int i : {2, -1}) EXPECT_TRUE(std::isnan(codes.CharCodeAt(i))) << i;
  EXPECT_TRUE(std::isnan(zeroed.CharCodeAt(0)));
}

TEST(StringTest, SlicesAndCharactersFromCodes) {
  VeskString hello("hello"), zeroed, nul("a");
  Put(nul, "\0bc"s);
  // Rows: a string, a start and an end, and the slice (null: zeroed).
  const struct {
    const VeskString* s;
    int start, end;
    const char* slice;
  } kSlices[] = {
      {&hello, 0, 0, "h"},     {&hello, 0, -1, "hello"}, {&hello, 0, 5, kNull},
      {&hello, 3, 2, kNull},   {&hello, -1, 2, kNull},   {&hello, 5, -1, kNull},
      {&zeroed, 0, -1, kNull}, {&nul, 1, 3, ""},         {&nul, 0, 2, "a"},
  };
  for (const auto& row : kSlices) {
    ExpectText(row.s->SubString(row.start, row.end), row.slice,
               testing::PrintToString(Bytes(*row.s)) + " from " +
                   std::to_string(row.start) + " to " +
                   std::to_string(row.end));
  }
  const struct {
    double code;
    const char* text;
  } kCodes[] = {
      {65.9, "A"},         {-191, "A"},         {INT_MAX, "\xFF"},
      {-0.9, ""},          {256, ""},           {VeskNaN(), ""},
      {INT_MAX + 1.0, ""}, {INT_MIN - 0.5, ""}, {HUGE_VAL, ""},
  };
  for (const auto& row : kCodes) {
    ExpectText(VeskString::CharFromCode(row.code), row.text,
               std::to_string(row.code));
  }
}

}  // namespace
