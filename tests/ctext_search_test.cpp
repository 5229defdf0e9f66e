// Case-insensitive comparison and byte and substring search.
#include <gtest/gtest.h>

#include <string>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::At;
using vesk_test::Guarded8;
using vesk_test::kNone;

TEST(CTextCompare, OrderAndEquality) {
  struct Case { const char* a; const char* b; int order; bool exact; };
  const Case cases[] = {
      {"abc", "ABC", 0, false}, {"a", "B", -1, false}, {"", "", 0, true},
      {"abc", "ab", 99, false}, {"[", "A", -6, false}, {"ab", "ab", 0, true},
      {"\xE9", "e", 132, false}, {"\xC9", "\xE9", -32, false},
      {"Path", "pATH", 0, false}};
  for (const Case& c : cases) {
    Guarded8 a(c.a), b(c.b);
    EXPECT_EQ(VeskStrICmp(a.get(), b.get()), c.order) << c.a << " " << c.b;
    EXPECT_EQ(StrEqual(a.get(), b.get()), c.order == 0) << c.a;
    EXPECT_EQ(VarStrEqual(a.get(), b.get(), false), c.order == 0) << c.a;
    EXPECT_EQ(VarStrEqual(a.get(), b.get(), true), c.exact) << c.a;
  }
  for (const char* a : {static_cast<const char*>(nullptr), "a"}) {
    EXPECT_FALSE(StrEqual(a, nullptr) || StrEqual(nullptr, a));
    EXPECT_FALSE(VarStrEqual(a, nullptr, true));
    EXPECT_FALSE(VarStrEqual(nullptr, a, false));
  }
}

TEST(CTextCompare, CountedReadsAtMostNBytes) {
  struct Case { std::string a, b; unsigned long n; int order; };
  const Case cases[] = {
      {"x", "y", 0, 0}, {"abcd", "ABcx", 3, 0}, {"abcd", "ABcx", 4, -20},
      {"ab", "ab", 10, 0}, {"ab", "abc", 5, -99}, {"abc", "ab", 3, 99}};
  for (const Case& c : cases) {
    auto a = Guarded8::Counted(c.a, c.n), b = Guarded8::Counted(c.b, c.n);
    EXPECT_EQ(VeskStrNICmp(a.get(), b.get(), c.n), c.order) << c.a << c.n;
  }
}

TEST(CTextSearch, SignedBytesForwardAndBackward) {
  struct Case { const char* s; int c; long first, last; };
  const Case cases[] = {
      {"abc", 'c', 2, 2}, {"abc", 'a', 0, 0}, {"abc", 'x', kNone, kNone},
      {"abc", 0, kNone, kNone}, {"", 'a', kNone, kNone}, {"a/b/c", '/', 1, 3},
      {"\xE9x\xE9", -23, 0, 2}, {"\xE9", 233, kNone, kNone},
      {"a", 'a' + 256, kNone, kNone}};
  for (const Case& c : cases) {
    Guarded8 s(c.s);
    EXPECT_EQ(VeskStrChr(s.get(), c.c), At(s.get(), c.first)) << c.s << c.c;
    EXPECT_EQ(VeskStrChrIndex(s.get(), c.c), c.first) << c.s << c.c;
    EXPECT_EQ(VeskStrRChr(s.get(), c.c), At(s.get(), c.last)) << c.s << c.c;
  }
}

TEST(CTextSearch, Substrings) {
  struct Case { const char* haystack; const char* needle; long exact, folded; };
  const Case cases[] = {
      {"aab", "ab", 1, 1}, {"ab", "abc", kNone, kNone}, {"abc", "", 0, 0},
      {"", "a", kNone, kNone}, {"abcABC", "C", 5, 2}, {"aaab", "aab", 1, 1},
      {"xSUBx", "Sub", kNone, 1}, {"xSUBx", "sub", kNone, 1},
      {"\xC9", "\xE9", kNone, kNone}, {"a\xE9", "\xE9", 1, 1}};
  for (const Case& c : cases) {
    Guarded8 h(c.haystack), n(c.needle);
    EXPECT_EQ(VeskStrStr(h.get(), n.get()), At(h.get(), c.exact)) << c.needle;
    EXPECT_EQ(VeskStrStrIndex(h.get(), n.get()), c.exact) << c.needle;
    EXPECT_EQ(VeskStrCaseStr(h.get(), n.get()), At(h.get(), c.folded));
  }
  // A null or empty needle gives the haystack without reading it.
  auto unreadable = Guarded8::Counted("abc", 0);
  for (const char* needle : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(VeskStrStr(unreadable.get(), needle), unreadable.get());
    EXPECT_EQ(VeskStrCaseStr(unreadable.get(), needle), unreadable.get());
    EXPECT_EQ(VeskStrStrIndex(unreadable.get(), needle), 0);
    EXPECT_EQ(VeskStrStrIndex(nullptr, needle), kNone);
  }
}

// Many near-misses first, so that the search changes method part-way; then
// a window that fits but for its first byte, right before the match.
TEST(CTextSearch, MatchRightAfterANearMissInALongText) {
  for (std::size_t pairs = 40; pairs < 120; ++pairs) {
    std::string text;
    for (std::size_t i = 0; i < pairs; ++i) text += "ab";
    const long at = static_cast<long>(text.size()) + 10;
    Guarded8 h(text + "baaaaaaaab" + "aaaaaaaaab");
    EXPECT_EQ(VeskStrStr(h.get(), "aaaaaaaaab"), h.get() + at) << pairs;
    EXPECT_EQ(VeskStrCaseStr(h.get(), "AAAAAAAAAB"), h.get() + at) << pairs;
  }
}

}  // namespace
