// VeskString appending and the growth rule.
#include <string>
#include <utility>
#include <vector>

#include "guarded_text.h"
#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::Guarded8;

// The capacity after each growth, and the length at which it happened.
std::vector<std::pair<int, int>> Growths(VeskString* s, int appends,
                                         void (*append)(VeskString*)) {
  std::vector<std::pair<int, int>> growths;
  for (int i = 0; i < appends; ++i) {
    const int before = s->Capacity();
    const int length = s->Length();
    append(s);
    if (s->Capacity() != before) growths.emplace_back(length, s->Capacity());
  }
  return growths;
}

TEST(AppendTest, AppendCharGrowsByTheRule) {
  VeskString s;
  const auto growths =
      Growths(&s, 11000, [](VeskString* t) { t->AppendChar('x'); });
  const std::vector<std::pair<int, int>> expected = {
      {0, 257},     {256, 513},   {512, 769},   {768, 1025},  {1024, 1537},
      {1536, 2305}, {2304, 3457}, {3456, 5185}, {5184, 7777}, {7776, 11665}};
  EXPECT_EQ(growths, expected);
  EXPECT_EQ(Bytes(s), std::string(11000, 'x'));
}

struct GrowthCase {
  const char* name;
  int capacity;         // of the starting buffer (0: zeroed, -1: shared)
  int length;           // bytes appended to it first
  std::string appended;
  bool asChars;         // append with AppendChar rather than AppendString
  int expectedCapacity;
};
void PrintTo(const GrowthCase& c, std::ostream* os) { *os << c.name; }

class GrowthTest : public testing::TestWithParam<GrowthCase> {};

TEST_P(GrowthTest, GrowsToTheExpectedCapacity) {
  const GrowthCase& c = GetParam();
  VeskString s = c.capacity < 0 ? VeskString("") : VeskString(c.capacity);
  for (int i = 0; i < c.length; ++i) s.AppendChar('a');  // may fill it up
  if (c.asChars) {
    for (char ch : c.appended) s.AppendChar(ch);
  } else {
    s.AppendString(c.appended.c_str());
  }
  EXPECT_EQ(s.Capacity(), c.expectedCapacity);
  EXPECT_EQ(Bytes(s), std::string(static_cast<size_t>(c.length), 'a') +
                          c.appended);
  EXPECT_EQ(s.Text()[s.Length()], '\0');
}

INSTANTIATE_TEST_SUITE_P(
    Cases, GrowthTest,
    testing::Values(
        GrowthCase{"SmallBufferGrowsBy256", 1023, 1022, "b", true, 1279},
        GrowthCase{"LargeBufferGrowsByHalf", 1024, 1023, "b", true, 1536},
        GrowthCase{"TenBytesToZeroed", 0, 0, "0123456789", false, 267},
        GrowthCase{"OneByteKeepsASpareByte", 0, 0, "y", false, 258},
        GrowthCase{"NineCharsFitTen", 10, 0, "123456789", true, 10},
        GrowthCase{"TenthCharGrows", 10, 0, "1234567890", true, 266},
        GrowthCase{"NineBytesGrowTenAtOnce", 10, 0, "123456789", false, 266},
        GrowthCase{"EightBytesFitTen", 10, 0, "12345678", false, 10},
        GrowthCase{"EmptyTextStillGrowsZeroed", 0, 0, "", false, 257},
        GrowthCase{"EmptyTextGrowsAFullBuffer", 4, 3, "", false, 260},
        GrowthCase{"FirstCharLeavesSharedEmpty", -1, 0, "c", true, 257}),
    [](const testing::TestParamInfo<GrowthCase>& info) {
      return std::string(info.param.name);
    });

TEST(AppendTest, AppendStringTakesAtMostNBytes) {
  const std::pair<int, std::string> cases[] = {
      {3, "abc"}, {100, "abcdef"}, {0, ""}, {-5, ""}};
  for (const auto& [n, expected] : cases) {
    VeskString s;
    s.AppendString("abcdef", n);
    EXPECT_EQ(Bytes(s), expected) << "n = " << n;
  }
  VeskString s("x");
  s.AppendString(nullptr);
  s.AppendString(nullptr, 3);
  EXPECT_EQ(Bytes(s), "x");
  EXPECT_EQ(s.Capacity(), 2);  // a null text does not even grow
}

// Short pieces are copied in overlapping words: each length and offset must
// read only the piece, from a text that ends at a page edge, and write only
// its bytes and the terminator, leaving the rest of the buffer as it was.
TEST(AppendTest, AppendStringCopiesExactlyThePiece) {
  for (int offset = 0; offset < 4; ++offset) {
    for (int n = 0; n <= 80; ++n) {
      std::string piece;
      for (int i = 0; i < n; ++i) piece += static_cast<char>('A' + i % 26);
      const Guarded8 source(piece);
      VeskString s;
      s.AppendString(std::string(200, 'z').c_str());
      s.Truncate(static_cast<unsigned>(offset));
      s.AppendString(source.get());
      EXPECT_EQ(Bytes(s), std::string(static_cast<size_t>(offset), 'z') + piece)
          << "offset " << offset << ", n " << n;
      const std::string after(s.Text() + offset + n + 1, s.Text() + 200);
      EXPECT_EQ(after, std::string(after.size(), 'z'))
          << "offset " << offset << ", n " << n;
    }
  }
}

}  // namespace
