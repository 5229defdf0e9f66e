// Form encoding and the escaped heap copies.
#include <cstdio>
#include <functional>
#include <string>

#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::RequestCounter;
using vesk_test::ScopedCodePage;

// Takes a heap text, returns its bytes and releases it; "(null)" for null.
std::string Take(char* text) {
  if (text == nullptr) return "(null)";
  std::string bytes(text);
  Pelgc::SystemDelete(text);
  return bytes;
}

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
  return Take(copier(s));
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

TEST(FormEncodingTest, Examples) {
  const struct { std::string text; bool plus; std::string expected; } kCases[] = {
      {"a b", true, "a+b"}, {"a b", false, "a%20b"},
      {"x-y.z_1~*", true, "x%2Dy%2Ez%5F1%7E%2A"}, {"+%", true, "%2B%25"},
      {"\xE9\x0A", true, "%E9%0A"}, {"", true, ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(FormEncode(c.text, c.plus), c.expected);
  EXPECT_EQ(HighEncode("+% \x7F\x01\x80\xFF"), "+% \x7F\x01%80%FF");

  VeskString s("a=");
  s.EncodeString("b c", 5, true, false);
  s.EncodeString(nullptr, 6, true, true);
  s.EncodeStringHighAscii(nullptr, 6);
  EXPECT_EQ(Bytes(s), "a=b+c");
}

TEST(FormEncodingTest, ConvertsOnlyVersionSixTextWhenAsked) {
  const char* kUtf8 = "\xC3\xA9\xE6\x97\xA5";  // e-acute, then a kanji
  const struct {
    const char* codePage;
    int version;
    bool convert;
    const char* form;
    const char* high;
  } kCases[] = {
      {"windows-1252", 5, true, "%C3%A9%E6%97%A5", "%C3%A9%E6%97%A5"},
      {"windows-1252", 6, false, "%C3%A9%E6%97%A5", "%E9?"},
      {"windows-1252", 6, true, "%E9%3F", "%E9?"},
      {"shift_jis", 6, true, "%3F%93%FA", "?%93%FA"},
      {"utf-8", 6, true, "%C3%A9%E6%97%A5", "%C3%A9%E6%97%A5"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(testing::Message() << c.codePage << " v" << c.version);
    ScopedCodePage page(c.codePage);
    RequestCounter counter;
    VeskString form, high;
    form.EncodeString(kUtf8, c.version, true, c.convert);
    high.EncodeStringHighAscii(kUtf8, c.version);
    EXPECT_EQ(Bytes(form), c.form);
    EXPECT_EQ(Bytes(high), c.high);
    const unsigned long copies = (c.version >= 6 && c.convert) + (c.version >= 6);
    EXPECT_EQ(counter.Releases(), copies);  // the buffers live on; copies go
  }
}

TEST(FormEncodingTest, InvalidUtf8IsEncodedRaw) {
  VeskString s;
  RequestCounter counter;
  s.EncodeString("a\xFF", 6, true, true);
  EXPECT_EQ(Bytes(s), "a%FF");
  EXPECT_EQ(counter.Releases(), 0u);  // no copy came back, none released
}

TEST(EscapedCopyTest, Examples) {
  EXPECT_EQ(Copy(Strict, "a b-c.d_e~"), "a%20b-c.d%5Fe%7E");
  EXPECT_EQ(Copy(Lenient, "a b\xE9"), "a b\xE9");
  EXPECT_EQ(Copy(Upper128, "% \x01\xE9"), "% \x01%E9");
  EXPECT_EQ(Copy(Url, "/p?q=a b&r=<1>"), "/p?q=a%20b&r=%3C1%3E");
  EXPECT_EQ(Copy(Url, "%41\x0A\xAB"), "%41%0A%AB");

  RequestCounter counter;
  EXPECT_EQ(Take(VeskString().CreateEncodedUrl()), "(null)");
  EXPECT_EQ(Take(VeskString("").CreateEscapedCStr(true)), "(null)");
  EXPECT_EQ(counter.Requests(), 0u);

  VeskString startsWithNul;
  startsWithNul.AppendChar('\0');
  startsWithNul.AppendChar('a');
  EXPECT_EQ(Take(startsWithNul.CreateEncodedUrl()), "");
}

TEST(EscapedCopyTest, MultibyteCharactersAreEscapedByteByByte) {
  ScopedCodePage page("shift_jis");
  for (Copier copier : {Strict, Lenient, Upper128, Url}) {
    EXPECT_EQ(Copy(copier, "a\x83\x5C" "b"), "a%83%5Cb");
    EXPECT_EQ(Copy(copier, "\x83"), "%83");  // cut short by the NUL
  }
}

}  // namespace
