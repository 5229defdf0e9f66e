// Null texts in comparison and search, and a search that changes method.
#include <gtest/gtest.h>

#include <string>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::Guarded8;
using vesk_test::kNone;

// The fuzz target never passes a null text first.
TEST(CTextCompare, NullTextsAreNeverEqual) {
  for (const char* a : {static_cast<const char*>(nullptr), "a"}) {
    EXPECT_FALSE(StrEqual(a, nullptr) || StrEqual(nullptr, a));
    EXPECT_FALSE(VarStrEqual(a, nullptr, true));
    EXPECT_FALSE(VarStrEqual(nullptr, a, false));
  }
}

TEST(CTextSearch, EmptyOrNullNeedle) {
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
