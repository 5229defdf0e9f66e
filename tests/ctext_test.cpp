// The free functions over C text, each on texts that end at an unreadable
// page: against the C library at the block and step edges of their scans,
// and at the edges that their documentation names.
#include <climits>
#include <cstdint>
#include <string>
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

constexpr const char* kNullText = nullptr;

// Every function on a text, a second one and a byte, all at page edges.
void CheckAll(const std::string& a, const std::string& b, int c) {
  const Guarded8 ga(a), gb(b);
  const auto* bytes = reinterpret_cast<const unsigned char*>(a.data());
  const Guarded16 wide(Guarded16::Units(bytes, bytes + a.size()));
  vesk_test::CheckSearches(ga.get(), gb.get(), c, false);
  vesk_test::CheckStrips(ga.get(), wide.get(), gb.get());
  for (std::size_t n : {b.size(), b.size() + 1}) {
    const auto ca = Guarded8::Counted(a, n), cb = Guarded8::Counted(b, n);
    EXPECT_EQ(VeskStrNICmp(ca.get(), cb.get(), n),
              vesk_test::FoldedDifference(a.c_str(), b.c_str(), n))
        << a << " " << b << n;
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
// skip to the text's end, high bytes for the character searches (which
// take them signed only), empty texts.
TEST(CTextTest, DocumentedEdges) {
  const std::pair<std::string, std::string> kRows[] = {
      {" \t", "/"},          {"//", "\xE9"}, {" \tFILE:x", "file:"},
      {"\xE9x\xE9", "\xE9"}, {"abc", ""},    {"", "a"}};
  for (const auto& [a, b] : kRows) {
    for (int c : {98, 0, -23, 233, 300, 120 - 256}) CheckAll(a, b, c);
  }
  // A null text or prefix, or a haystack with a null or empty needle, as
  // documented.
  const unsigned short* none16 = nullptr;
  for (const char* s : {kNullText, "", "a"}) {
    EXPECT_FALSE(StrEqual(kNullText, s) || VarStrEqual(kNullText, s, false) ||
                 VarStrEqual(s, kNullText, true) || StripPrefix(kNullText, s) ||
                 StripPrefix(none16, s) || StripScheme(kNullText, s) ||
                 StripWhitespace(kNullText) || StripAtMostTwoSlashes(kNullText))
        << (s ? s : "null");
  }
  const auto unreadable = Guarded8::Counted("abc", 0);
  const char* u = unreadable.get();
  for (const char* needle : {kNullText, ""}) {
    EXPECT_TRUE(VeskStrStr(u, needle) == u && VeskStrCaseStr(u, needle) == u &&
                VeskStrStrIndex(u, needle) == 0 &&
                VeskStrStrIndex(kNullText, needle) == kVeskStrNotFound);
  }
}

// Rows: a text, a count, and the value of the counted readers within it
// and, for counts past the text, of every reader.
TEST(CTextTest, NumberReaders) {
  const std::tuple<const char*, unsigned long, long long> kRows[] = {
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

// Copies and joins of texts at a page's edge, and a script string's text,
// each in a block of just its size; nothing is asked of the heap for a
// null or too large a text.
TEST(CTextTest, HeapTexts) {
  const auto made = [](char* text, unsigned long size) {
    EXPECT_EQ(Pelgc::GetHeapStats().lastSize, size);
    return vesk_test::TakeHeapText(text);
  };
  marlo::String empty(""), vm("h\xC3\xA9llo \xF0\x9F\x98\x80");
  for (marlo::String* s : {static_cast<marlo::String*>(nullptr), &empty, &vm}) {
    const std::string bytes = s == &vm ? "h\xC3\xA9llo \xF0\x9F\x98\x80" : "";
    const unsigned long n = bytes.size(), half = n / 2;
    const Guarded8 text(bytes), tail(bytes + "?");
    const auto counted = Guarded8::Counted(bytes, half);
    EXPECT_EQ(made(CreateStr(s), n + 1), bytes);
    EXPECT_EQ(made(CreateStr(text.get()), n + 1), bytes);
    EXPECT_EQ(made(ConcatStr(text.get(), tail.get()), 2 * n + 2),
              bytes + bytes + "?");
    EXPECT_EQ(made(CreateStr(counted.get(), half), half + 1),
              bytes.substr(0, half));
  }
  EXPECT_EQ(made(CreateStr(5UL), 6), "");
  const auto unreadable = Guarded8::Counted("x", 0);
  const unsigned long requests = Pelgc::GetHeapStats().requests;
  // ULONG_MAX: n + 1 wraps to 0.
  EXPECT_FALSE(CreateStr(kNullText) || CreateStr(kNullText, 5) ||
               ConcatStr(kNullText, unreadable.get()) ||
               ConcatStr(unreadable.get(), kNullText) || CreateStr(ULONG_MAX) ||
               CreateStr(unreadable.get(), ULONG_MAX));
  EXPECT_THROW(static_cast<void>(CreateStr(4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_THROW(static_cast<void>(CreateStr(unreadable.get(), 4294967294UL)),
               Pelgc::ObjectTooLargeError);
  EXPECT_EQ(Pelgc::GetHeapStats().requests, requests);
  // The largest count that is passed on; the heap's null comes back.
  Pelgc::InjectHeapFault(0, Pelgc::HeapFault::kReturnNull, false);
  EXPECT_EQ(CreateStr(4294967293UL), nullptr);
  EXPECT_EQ(Pelgc::GetHeapStats().lastSize, 4294967294UL);
}

}  // namespace
