// Stepping over prefixes and whitespace.
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
