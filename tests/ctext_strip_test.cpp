// Stepping over prefixes, whitespace, schemes and slashes.
#include <gtest/gtest.h>

#include <clocale>
#include <string>

#include "core/veskstring.h"
#include "guarded_text.h"

namespace {

using vesk_test::At;
using vesk_test::Guarded16;
using vesk_test::Guarded8;
using vesk_test::kNone;

TEST(CTextStrip, PrefixIn8And16BitText) {
  // Each case reads alike in bytes and in those bytes widened to units.
  struct Case { std::string text; const char* prefix; long folded, exact; };
  const Case cases[] = {
      {"FILE:x", "file:", 5, kNone}, {"file:x", "FILE:", 5, kNone},
      {"abc", "", 0, 0}, {"abc", "abc", 3, 3}, {"ab", "abc", kNone, kNone},
      {"", "a", kNone, kNone}, {"[x", "{", kNone, kNone},
      {"@x", "`", kNone, kNone}, {"\xC9", "\xE9", kNone, kNone},
      {"\xE9x", "\xE9", 1, 1}, {"abc", "AB", 2, kNone}, {"abc", "ab", 2, 2}};
  for (const Case& c : cases) {
    Guarded8 text(c.text), prefix(c.prefix);
    Guarded16 units(vesk_test::Widen(c.text));
    const char* p = prefix.get();
    EXPECT_EQ(StripPrefix(text.get(), p), At(text.get(), c.folded)) << p;
    EXPECT_EQ(StripPrefix(units.get(), p), At(units.get(), c.folded)) << p;
    EXPECT_EQ(StripPrefixCaseSensitive(text.get(), p), At(text.get(), c.exact));
    EXPECT_EQ(StripPrefixCaseSensitive(units.get(), p),
              At(units.get(), c.exact)) << p;
  }
}

TEST(CTextStrip, PrefixOnWholeUnits) {
  // Units above 0xFF match no prefix byte, whatever their low byte.
  struct Case { Guarded16::Units text; const char* prefix; long at; };
  const Case cases[] = {{{'A', 'B', 'C'}, "ab", 2}, {{0x1E9}, "\xE9", kNone},
                        {{0x141}, "A", kNone}, {{0x161}, "A", kNone}};
  for (const Case& c : cases) {
    Guarded16 units(c.text);
    EXPECT_EQ(StripPrefix(units.get(), c.prefix), At(units.get(), c.at));
  }
}

TEST(CTextStrip, NullTextOrPrefix) {
  const char* none = nullptr;
  const unsigned short* none16 = nullptr;
  const unsigned short units[] = {'a', 0};
  for (const char* s : {none, "", "x"}) {
    EXPECT_EQ(StripPrefix(none, s), nullptr);
    EXPECT_EQ(StripPrefixCaseSensitive(s, none), nullptr);
    EXPECT_EQ(StripPrefix(none16, s), nullptr);
    EXPECT_EQ(StripPrefixCaseSensitive(units, none), nullptr);
    EXPECT_EQ(StripScheme(none, s), nullptr);
    EXPECT_EQ(StripScheme(s, none), nullptr);
  }
  EXPECT_EQ(StripWhitespace(none), nullptr);
  EXPECT_EQ(StripAtMostTwoSlashes(none), nullptr);
}

TEST(CTextStrip, WhitespaceSchemeAndSlashes) {
  struct Case { const char *text, *scheme; int blank, slash; long at; };
  const Case cases[] = {
      {" \t\r\nx", "", 4, 0, 4}, {" \v\f ", "", 4, 0, 4}, {"", "", 0, 0, 0},
      {"\xA0x", "\xA0", 0, 0, 1}, {"  FILE:x", "file:", 2, 0, 7},
      {"\thttp://a", "HTTP:", 1, 0, 6}, {"x", "y", 0, 0, kNone},
      {"/x", "/", 0, 1, 1}, {"//x", "//", 0, 2, 2}, {"///x", "", 0, 2, 0}};
  for (const Case& c : cases) {
    Guarded8 text(c.text), scheme(c.scheme);
    EXPECT_EQ(StripWhitespace(text.get()), text.get() + c.blank) << c.text;
    EXPECT_EQ(StripAtMostTwoSlashes(text.get()), text.get() + c.slash);
    EXPECT_EQ(StripScheme(text.get(), scheme.get()), At(text.get(), c.at));
  }
}

// Every byte before an 'x': only the six C-locale blanks are stepped over.
void ExpectFixedWhitespaceSet() {
  const std::string blanks = "\t\n\v\f\r ";
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    Guarded8 text(std::string{c, 'x'});
    const bool blank = blanks.find(c) != std::string::npos;
    EXPECT_EQ(StripWhitespace(text.get()), text.get() + blank) << byte;
  }
}

TEST(CTextStrip, WhitespaceIgnoresTheProcessLocale) {
  ExpectFixedWhitespaceSet();
  const std::string saved = std::setlocale(LC_ALL, nullptr);
  const char* set = nullptr;
  for (const char* name : {"en_US.ISO-8859-1", "C.UTF-8", "C.utf8"}) {
    if ((set = std::setlocale(LC_ALL, name)) != nullptr) break;
  }
  if (set == nullptr) GTEST_SKIP() << "no locale but C can be set";
  RecordProperty("locale", set);
  ExpectFixedWhitespaceSet();
  std::setlocale(LC_ALL, saved.c_str());
}

}  // namespace
