// Form encoding and the escaped heap copies.
#include <cstdio>
#include <functional>
#include <string>

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

TEST(KeptSetTest, EveryRuleKeepsExactlyItsBytes) {
  std::string below128, every;
  for (int b = 1; b < 256; ++b) {
    every += static_cast<char>(b);
    if (b < 0x80) below128 += static_cast<char>(b);
  }
  const struct {
    const char* rule;
    std::function<std::string(const std::string&)> encode;
    std::string kept;
  } kRules[] = {
      {"EncodeString", [](auto& t) { return FormEncode(t); }, kAlnum},
      {"EncodeStringHighAscii", [](auto& t) { return HighEncode(t); }, below128},
      {"CreateEscapedCStr(true)", [](auto& t) { return Copy(Strict, t); },
       kAlnum + "-."},
      {"CreateEscapedCStr(false)", [](auto& t) { return Copy(Lenient, t); },
       every},
      {"CreateUpper128ASCIIEscapedCStr", [](auto& t) { return Copy(Upper128, t); },
       below128},
      {"CreateEncodedUrl", [](auto& t) { return Copy(Url, t); },
       kAlnum + "!\"#$%&'()*+,-./:;=?@[]_~"},
  };
  const size_t kSizes[] = {62, 127, 64, 255, 127, 86};
  for (size_t r = 0; r < std::size(kRules); ++r) {
    EXPECT_EQ(kRules[r].kept.size(), kSizes[r]) << kRules[r].rule;
    for (int b = 1; b < 256; ++b) {
      const std::string byte(1, static_cast<char>(b));
      const bool kept = kRules[r].kept.find(byte) != std::string::npos;
      EXPECT_EQ(kRules[r].encode(byte), kept ? byte : Escape(b))
          << kRules[r].rule << " byte " << b;
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
