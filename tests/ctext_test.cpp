// The free functions over C text, each on texts that end at an unreadable
// page: against the C library at the block and step edges of their scans,
// and at the edges that their documentation names.
#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "host/vm_string.h"
#include "support.h"

#define VESK_CHECK(condition) EXPECT_TRUE(condition) << #condition
#include "ctext_oracle.h"

namespace {

using vesk_test::Guarded16;
using vesk_test::Guarded8;
using vesk_test::Repeat;

constexpr const char* kNullText = nullptr;

// Every function on a text, a second one and a byte, all at page edges.
void CheckAll(const std::string& a, const std::string& b, int c) {
  SCOPED_TRACE(testing::Message()
               << "a \"" << a << "\", b \"" << b << "\", c " << c);
  const Guarded8 ga(a), gb(b);
  const auto* bytes = reinterpret_cast<const unsigned char*>(a.data());
  const Guarded16 wide(Guarded16::Units(bytes, bytes + a.size()));
  vesk_test::CheckSearches(ga.get(), gb.get(), c, false);
  vesk_test::CheckStrips(ga.get(), wide.get(), gb.get());
  for (std::size_t n : {b.size(), b.size() + 1}) {
    const auto ca = Guarded8::Counted(a, n), cb = Guarded8::Counted(b, n);
    EXPECT_EQ(VeskStrNICmp(ca.get(), cb.get(), n),
              vesk_test::FoldedDifference(a.c_str(), b.c_str(), n))
        << "n " << n;
  }
}

// Lengths and places straddle the block widths and the first measured
// step. Comparisons: texts alike but for case up to one planted
// difference, of bytes that differ only in the case bit yet are not
// letters, bytes from 0x80 up, or one text ending there. Searches: needles
// of every comparison width and one long enough that near misses hand over
// to the two-way scan, also planted at the last place they fit.
TEST(CTextTest, ScansAcrossBlockEdges) {
  const std::pair<char, char> kDifferences[] = {
      {'@', '`'}, {'[', '{'}, {'\xC1', '\xE1'}, {'z', 0}};
  std::vector<std::string> needles = {
      "q", "qZ", "qzq", "qzzq", "qQzqzzq", std::string(15, 'q') + "z"};
  needles.push_back("z" + std::string(40, 'q'));
  needles.push_back(std::string(299, 'q') + "Z");
  std::uint32_t seed = 7;
  for (std::size_t length :
       {0,   1,   15,  16,  17,  31,  32,  33,  47,  48,  63,  64,  65,
        127, 128, 129, 255, 256, 257, 287, 300, 511, 512, 513, 600, 1100}) {
    std::string a, b, text;
    for (std::size_t i = 0; i < length; ++i) {
      a += "aZ5/mQ?x"[i % 8];
      b += "Az5/Mq?X"[i % 8];
      seed = seed * 1103515245u + 12345u;
      text += "qqqqqQzz"[seed >> 16 & 7];
    }
    for (std::size_t at = 0; at < length && length <= 300; ++at) {
      if (at % 16 > 1 && at % 16 < 15 && length - at > 33) continue;
      for (const auto& [x, y] : kDifferences) {
        std::string p = a, q = b.substr(0, at);
        p[at] = x;
        if (y != 0) q += y + b.substr(at + 1);  // else `q` ends at `at`
        CheckAll(p, q, x);
        CheckAll(q, p, y);
      }
    }
    for (const std::string& needle : needles) {
      std::string planted = text;
      if (needle.size() <= text.size()) {
        planted.replace(text.size() - needle.size(), needle.size(), needle);
      }
      CheckAll(text, needle, 'Z');
      CheckAll(planted, needle, 'Q');
    }
  }
}

// Rows: a text and a second text, as needle and as prefix: strips that
// skip to the text's end, high bytes for the character searches, empty
// texts.
TEST(CTextTest, DocumentedEdges) {
  const struct {
    std::string text, second;
  } kRows[] = {{" \t", "/"},          {"//", "\xE9"}, {" \tFILE:x", "file:"},
               {"\xE9x\xE9", "\xE9"}, {"abc", ""},    {"", "a"}};
  for (const auto& row : kRows) {
    for (int c : {98, 0, -23, 233, 300, 120 - 256}) {
      CheckAll(row.text, row.second, c);
    }
  }
  // A null text or prefix gives null or false. A null or empty needle is
  // found at the start of any text, even one with no readable byte; a null
  // text holds no needle.
  const unsigned short* none16 = nullptr;
  const auto unreadable = Guarded8::Counted("abc", 0);
  const char* u = unreadable.get();
  for (const char* s : {kNullText, "", "a"}) {
    SCOPED_TRACE(s ? "\"" + std::string(s) + "\"" : "null");
    EXPECT_FALSE(StrEqual(kNullText, s));
    EXPECT_FALSE(VarStrEqual(kNullText, s, false));
    EXPECT_FALSE(VarStrEqual(s, kNullText, true));
    EXPECT_EQ(StripPrefix(kNullText, s), nullptr);
    EXPECT_EQ(StripPrefix(none16, s), nullptr);
    EXPECT_EQ(StripScheme(kNullText, s), nullptr);
    if (s != nullptr && *s != '\0') continue;  // the needles: null and ""
    EXPECT_EQ(VeskStrStr(u, s), u);
    EXPECT_EQ(VeskStrCaseStr(u, s), u);
    EXPECT_EQ(VeskStrStrIndex(u, s), 0);
    EXPECT_EQ(VeskStrStrIndex(kNullText, s), kVeskStrNotFound);
  }
  EXPECT_EQ(StripWhitespace(kNullText), nullptr);
  EXPECT_EQ(StripAtMostTwoSlashes(kNullText), nullptr);
}

// The character searches read `c` as a byte taken signed, -128 to 127:
// 128 and 255 name no byte, whether plain char is signed or not.
TEST(CTextTest, CharacterSearchesTakeTheByteSigned) {
  const Guarded8 text("a\x80\x80\x7F\xFF\xFF");
  const long kNone = kVeskStrNotFound;
  const struct {
    int c;
    long first, last;
  } kRows[] = {{-128, 1, 2},      {128, kNone, kNone}, {-129, kNone, kNone},
               {127, 3, 3},       {-1, 4, 5},          {255, kNone, kNone},
               {0, kNone, kNone}, {'a', 0, 0}};
  const char* t = text.get();
  for (const auto& row : kRows) {
    const char* last = VeskStrRChr(t, row.c);
    EXPECT_EQ(VeskStrChrIndex(t, row.c), row.first) << "c = " << row.c;
    EXPECT_EQ(last ? last - t : kNone, row.last) << "c = " << row.c;
  }
}

// Texts that follow an unreadable page, shorter than a block: the scans
// read no byte before the text.
TEST(CTextTest, ScansReadNothingBeforeTheText) {
  for (std::size_t length = 0; length < 70; ++length) {
    const std::string text = Repeat("xaBcab", length);
    const Guarded8 haystack(text, true, true);
    for (const char* needle : {"cab", "aBcaB", "x", "abx"}) {
      SCOPED_TRACE(testing::Message() << text << ", needle " << needle);
      vesk_test::CheckSearches(haystack.get(), needle, 'c', false);
    }
  }
}

// Long needles of two letters in texts where every place is a near miss,
// so that the block scan soon hands over to the two-way scan: the needle
// planted at each place is found where std::string_view::find finds it,
// also by the case-insensitive search in a text of capitals.
TEST(CTextTest, TwoWayScanFindsTheNeedleAtEveryPlace) {
  const struct {
    const char* what;
    std::string needle, lead;  // `lead` goes just before the needle
  } kRows[] = {
      {"a^20 b a^20", Repeat("a", 20) + "b" + Repeat("a", 20), ""},
      {"(ab)^20 a", Repeat("ab", 41), ""},
      {"(aab)^13 a", Repeat("aab", 40), ""},
      {"a^40 ba", Repeat("a", 40) + "ba", ""},
      {"ab^30 a", "a" + Repeat("b", 30) + "a", ""},
      {"ab^31 after cb^31", "a" + Repeat("b", 31), "c" + Repeat("b", 31)},
  };
  for (const auto& row : kRows) {
    const std::string planted = row.lead + row.needle;
    std::string missed = row.needle;  // one letter changed halfway
    missed[missed.size() / 2] ^= 'a' ^ 'b';
    for (const std::string& filler : {Repeat(row.needle.substr(0, 1), 600),
                                      Repeat(missed, 600), Repeat("ab", 600)}) {
      for (std::size_t at = 0; at <= filler.size() - planted.size(); ++at) {
        std::string text = filler;
        text.replace(at, planted.size(), planted);
        std::string capitals = text;
        for (char& c : capitals) c = char(c - 'a' + 'A');
        const std::size_t found = std::string_view(text).find(row.needle);
        EXPECT_EQ(VeskStrStrIndex(text.c_str(), row.needle.c_str()),
                  long(found))
            << row.what << " at " << at << " in " << filler.substr(0, 45);
        const char* upper = capitals.c_str();
        EXPECT_EQ(VeskStrCaseStr(upper, row.needle.c_str()) - upper,
                  long(found))
            << row.what << " at " << at << " in " << filler.substr(0, 45);
      }
    }
  }
}

// Checking every place of a^n b a in a text of a's costs n bytes a place;
// the search hands over to the two-way scan and stays linear in the text,
// so a needle 256 times longer takes about as long, not 256 times longer.
TEST(CTextTest, SearchTimeDoesNotGrowWithTheNeedle) {
  const std::string text(size_t{1} << 18, 'a');
  const auto seconds = [&](std::size_t n) {
    const std::string needle = std::string(n, 'a') + "ba";
    double best = 1e9;
    for (int run = 0; run < 3; ++run) {
      const auto start = std::chrono::steady_clock::now();
      EXPECT_EQ(VeskStrStr(text.c_str(), needle.c_str()), nullptr) << n;
      EXPECT_EQ(VeskStrCaseStr(text.c_str(), needle.c_str()), nullptr) << n;
      const std::chrono::duration<double> took =
          std::chrono::steady_clock::now() - start;
      best = std::min(best, took.count());
    }
    return best;
  };
  const double shortNeedle = seconds(16), longNeedle = seconds(4096);
  EXPECT_LT(longNeedle, 8 * shortNeedle + 0.001)
      << "a^16 ba: " << shortNeedle << " s, a^4096 ba: " << longNeedle << " s";
}

// Rows: a text, a count, and the value of the counted readers within it
// and, for counts past the text, of every reader.
TEST(CTextTest, NumberReaders) {
  const struct {
    const char* text;
    unsigned long n;
    long long value;
  } kRows[] = {
      {"123x", 10, 123}, {"-45", 10, -45},
      {"+5", 10, 0},     {" 5", 10, 0},
      {"-", 10, 0},      {"12345", 3, 123},
      {"-12", 1, 0},     {"-12", 2, -1},
      {"99", 0, 0},      {"4294967296", 20, 1LL << 32}};  // an int wraps to 0
  for (const auto& [text, n, value] : kRows) {
    const auto counted = Guarded8::Counted(text, n);  // whole for n >= 10
    const char* t = counted.get();
    EXPECT_EQ(ToInt64(t, n), value) << text << n;
    EXPECT_EQ(ToInt(t, n), int(value)) << text << n;
    if (n < 10) continue;
    EXPECT_EQ(ToInt64(t), value) << text;
    EXPECT_EQ(ToInt(t), int(value)) << text;
    EXPECT_EQ(ToUInt64(t), text[0] == '-' ? 0 : value) << text;
  }
  EXPECT_EQ(ToInt(kNullText), 0);
  const Guarded8 wraps("18446744073709551617");  // 2^64 + 1 wraps to 1
  const char* w = wraps.get();
  EXPECT_EQ(std::make_tuple(ToInt64(w), ToInt(w), ToUInt64(w)),
            std::make_tuple(1LL, 1, 1ULL));
  // Units whose low byte is a digit or the sign are neither.
  EXPECT_EQ(ToInt(Guarded16(Guarded16::Units{'1', 0x130, 0x12D}).get()), 1);
}

// Nothing is asked of the heap for a null or too large a text; a null
// script string gives an empty text.
TEST(CTextTest, HeapTextsOfNothing) {
  using vesk_test::TakeHeapText;
  EXPECT_EQ(TakeHeapText(CreateStr(static_cast<marlo::String*>(nullptr))), "");
  const auto unreadable = Guarded8::Counted("x", 0);
  const char* u = unreadable.get();
  const unsigned long requests = Pelgc::GetHeapStats().requests;
  EXPECT_EQ(CreateStr(kNullText), nullptr);
  EXPECT_EQ(CreateStr(kNullText, 5), nullptr);
  EXPECT_EQ(ConcatStr(kNullText, u), nullptr);
  EXPECT_EQ(ConcatStr(u, kNullText), nullptr);
  EXPECT_EQ(CreateStr(ULONG_MAX), nullptr);  // n + 1 wraps to 0
  EXPECT_EQ(CreateStr(u, ULONG_MAX), nullptr);
  EXPECT_THROW(static_cast<void>(CreateStr(4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_THROW(static_cast<void>(CreateStr(u, 4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_EQ(Pelgc::GetHeapStats().requests, requests);
  // The largest count that is passed on; the heap's null comes back.
  Pelgc::InjectHeapFault(0, Pelgc::HeapFault::kReturnNull, false);
  EXPECT_EQ(CreateStr(4294967293UL), nullptr);
  EXPECT_EQ(Pelgc::GetHeapStats().lastSize, 4294967294UL);
}

}  // namespace
