// Null texts in comparison and search, a search that changes method, and the
// compare and the searches against plain ones at block and step edges.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::At;
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

// The folded order a byte at a time over at most `n` bytes.
int PlainFoldedCompare(const std::string& a, const std::string& b, std::size_t n) {
  const auto fold = [](char c) {
    const int byte = static_cast<unsigned char>(c);
    return byte >= 'A' && byte <= 'Z' ? byte + 32 : byte;
  };
  for (std::size_t i = 0; i < n; ++i) {
    const int x = fold(a.c_str()[i]), y = fold(b.c_str()[i]);
    if (x != y || x == 0 || i + 1 == n) return x - y;
  }
  return 0;
}

// Texts alike but for case up to one planted difference: bytes that differ
// only in the case bit yet are not letters, bytes from 0x80 up, or one text
// ending there. Lengths and places straddle the block widths and the first
// measured step, and every text ends at a page edge.
TEST(CTextCompare, AgreesWithAPlainCompareAcrossBlockAndStepEdges) {
  const std::pair<char, char> differences[] = {{'@', '`'}, {'[', '{'}, {'\xC1', '\xE1'}, {'z', 0}};
  for (std::size_t length : {1, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128, 129, 255, 256, 257, 300}) {
    std::string a, b;
    for (std::size_t i = 0; i < length; ++i) {
      a += "aZ5/mQ?x"[i % 8];
      b += "Az5/Mq?X"[i % 8];
    }
    for (std::size_t at = 0; at < length; ++at) {
      if (at % 16 > 1 && at % 16 < 15 && length - at > 33) continue;
      for (const auto& [x, y] : differences) {
        std::string p = a, q = b;
        p[at] = x;
        q[at] = y;
        q.resize(y == 0 ? at : length);
        const std::string where = std::to_string(length) + " at " + std::to_string(at) + " " + x;
        const Guarded8 gp(p), gq(q);
        EXPECT_EQ(VeskStrICmp(gp.get(), gq.get()), PlainFoldedCompare(p, q, SIZE_MAX)) << where;
        EXPECT_EQ(VeskStrICmp(gq.get(), gp.get()), PlainFoldedCompare(q, p, SIZE_MAX)) << where;
        for (std::size_t n : {at, at + 1}) {
          const auto cp = Guarded8::Counted(p, n), cq = Guarded8::Counted(q, n);
          EXPECT_EQ(VeskStrNICmp(cp.get(), cq.get(), n), PlainFoldedCompare(p, q, n)) << where << n;
        }
      }
    }
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

// The offset of the first match of `needle` in `text` when `fold` maps
// both, or kNone.
long PlainFind(std::string text, std::string needle, bool fold) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  if (fold) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    std::transform(needle.begin(), needle.end(), needle.begin(), lower);
  }
  const std::size_t at = text.find(needle);
  return at == std::string::npos ? kNone : static_cast<long>(at);
}

// Texts whose lengths straddle the block widths and the first measured
// step, ending at a page edge, with needles of every comparison width and
// one long enough that near misses hand over to the two-way scan; a
// needle is planted at the last place it fits.
TEST(CTextSearch, AgreesWithAPlainSearchAcrossBlockAndStepEdges) {
  const std::string needles[] = {"q",  "qZ", "qzq", "qzzq", "qQzqzzq", std::string(15, 'q') + "z",
                                 "z" + std::string(40, 'q'), std::string(299, 'q') + "Z"};
  std::uint32_t seed = 7;
  const auto next_byte = [&seed] {
    seed = seed * 1103515245u + 12345u;
    const unsigned r = seed >> 16 & 7;
    return r < 5 ? 'q' : r < 6 ? 'Q' : 'z';
  };
  for (std::size_t length : {0, 1, 15, 16, 17, 31, 32, 33, 47, 48, 63, 64, 65, 255, 256, 257,
                             287, 300, 511, 512, 513, 600, 1100}) {
    std::string text;
    for (std::size_t i = 0; i < length; ++i) text += next_byte();
    for (const std::string& needle : needles) {
      for (bool plant : {false, true}) {
        std::string t = text;
        if (plant && needle.size() <= t.size()) t.replace(t.size() - needle.size(), needle.size(), needle);
        Guarded8 h(t);
        const std::string where = std::to_string(length) + " " + needle;
        EXPECT_EQ(VeskStrStr(h.get(), needle.c_str()), At(h.get(), PlainFind(t, needle, false)))
            << where;
        EXPECT_EQ(VeskStrCaseStr(h.get(), needle.c_str()), At(h.get(), PlainFind(t, needle, true)))
            << where;
      }
    }
  }
}

}  // namespace
