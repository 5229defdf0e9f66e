// Form encoding and the escaped heap copies.
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::ScopedCodePage;

std::string Escape(unsigned char byte) {
  char escape[4];
  std::snprintf(escape, sizeof escape, "%%%02X", byte);
  return escape;
}

std::string FormEncode(const std::string& text, bool plus = false) {
  VeskString s;
  s.EncodeString(text.c_str(), 5, plus, false);
  return Bytes(s);
}

std::string HighEncode(const std::string& text, int version = 5) {
  VeskString s;
  s.EncodeStringHighAscii(text.c_str(), version);
  return Bytes(s);
}

using Copier = char* (*)(const VeskString&);
char* Strict(const VeskString& s) { return s.CreateEscapedCStr(true); }
char* Lenient(const VeskString& s) { return s.CreateEscapedCStr(false); }
char* Upper128(const VeskString& s) { return s.CreateUpper128ASCIIEscapedCStr(); }
char* Url(const VeskString& s) { return s.CreateEncodedUrl(); }

std::string Copy(Copier copier, const std::string& text) {
  VeskString s;
  s.AppendString(text.c_str());
  return vesk_test::TakeHeapText(copier(s));
}

const std::string kAlnum =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

struct KeptSet {
  const char* rule;
  std::function<std::string(const std::string&)> encode;
  std::string kept;
};

const std::vector<KeptSet>& KeptSets() {
  static const std::vector<KeptSet> sets = [] {
    std::string below128, every;
    for (int b = 1; b < 256; ++b) {
      every += static_cast<char>(b);
      if (b < 0x80) below128 += static_cast<char>(b);
    }
    return std::vector<KeptSet>{
        {"EncodeString", [](auto& t) { return FormEncode(t); }, kAlnum},
        {"EncodeStringHighAscii", [](auto& t) { return HighEncode(t); }, below128},
        {"CreateEscapedCStr(true)", [](auto& t) { return Copy(Strict, t); },
         kAlnum + "-."},
        {"CreateEscapedCStr(false)", [](auto& t) { return Copy(Lenient, t); },
         every},
        {"CreateUpper128ASCIIEscapedCStr",
         [](auto& t) { return Copy(Upper128, t); }, below128},
        {"CreateEncodedUrl", [](auto& t) { return Copy(Url, t); },
         kAlnum + "!\"#$%&'()*+,-./:;=?@[]_~"},
    };
  }();
  return sets;
}

std::string Expected(const KeptSet& set, unsigned char byte) {
  const bool kept = set.kept.find(static_cast<char>(byte)) != std::string::npos;
  return kept ? std::string(1, static_cast<char>(byte)) : Escape(byte);
}

TEST(KeptSetTest, EveryRuleKeepsExactlyItsBytes) {
  const size_t kSizes[] = {62, 127, 64, 255, 127, 86};
  for (size_t r = 0; r < KeptSets().size(); ++r) {
    const KeptSet& set = KeptSets()[r];
    EXPECT_EQ(set.kept.size(), kSizes[r]) << set.rule;
    for (int b = 1; b < 256; ++b) {
      EXPECT_EQ(set.encode(std::string(1, static_cast<char>(b))),
                Expected(set, static_cast<unsigned char>(b)))
          << set.rule << " byte " << b;
    }
  }
}

// Each byte value after runs of kept bytes long enough for the 16- and
// 32-byte steps, at changing offsets within them.
TEST(KeptSetTest, EveryByteAfterLongRunsOfKeptBytes) {
  for (const KeptSet& set : KeptSets()) {
    for (int shift : {0, 9, 18, 27}) {
      std::string text, expected;
      for (int b = 1; b < 256; ++b) {
        const std::string run(static_cast<size_t>(40 + (b + shift) % 32), 'a');
        text += run + static_cast<char>(b);
        expected += run + Expected(set, static_cast<unsigned char>(b));
      }
      EXPECT_EQ(set.encode(text), expected) << set.rule << " shift " << shift;
    }
  }
}

TEST(FormEncodingTest, SpaceAndNullText) {
  EXPECT_EQ(FormEncode("a b", true), "a+b");
  EXPECT_EQ(FormEncode("a b", false), "a%20b");
  VeskString s("a=");
  s.EncodeString("b c", 5, true, false);
  s.EncodeString(nullptr, 6, true, true);
  s.EncodeStringHighAscii(nullptr, 6);
  EXPECT_EQ(Bytes(s), "a=b+c");
}

TEST(EscapedCopyTest, MultibyteCharactersAreEscapedByteByByte) {
  ScopedCodePage page("shift_jis");
  for (Copier copier : {Strict, Lenient, Upper128, Url}) {
    EXPECT_EQ(Copy(copier, "a\x83\x5C" "b"), "a%83%5Cb");
    EXPECT_EQ(Copy(copier, "\x83"), "%83");  // cut short by the NUL
  }
}

}  // namespace
