// The default host's script VM string and its scoped UTF-8 view.
#include <string>
#include <vector>

#include "host/vm_string.h"
#include "test_support.h"

namespace {

using Units = std::vector<unsigned short>;

Units UnitsOf(const marlo::String& s) {
  return Units(s.Units(), s.Units() + s.Length());
}

std::string ViewOf(marlo::String* s) {
  marlo::StUTF8String view(s);
  EXPECT_NE(view.c_str(), nullptr);
  return std::string(view.c_str(), static_cast<size_t>(view.length()));
}

TEST(VmStringTest, DecodesUtf8AndEncodesItBack) {
  struct Row {
    const char* utf8;
    Units units;
    const char* back;  // the view's text
  };
  const Row rows[] = {
      {"", {}, ""},
      {"abc", {'a', 'b', 'c'}, "abc"},
      {"\xC3\xA9", {0xE9}, "\xC3\xA9"},
      {"\xE2\x82\xAC", {0x20AC}, "\xE2\x82\xAC"},
      {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}, "\xF0\x9F\x98\x80"},
      // The least values of two, three and four bytes.
      {"\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80", {0x80, 0x800, 0xD800, 0xDC00},
       "\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80"},
      // Ill-formed input: a lone continuation, overlong forms of '/', U+07FF
      // and U+FFFF, an encoded surrogate, a value past U+10FFFF and a
      // truncated sequence.
      {"\x80", {0xFFFD}, "\xEF\xBF\xBD"},
      {"\xC0\xAF", {0xFFFD, 0xFFFD}, "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"\xE0\x9F\xBF\xF0\x8F\xBF\xBF", {0xFFFD, 0xFFFD},
       "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"\xED\xA0\x80", {0xFFFD}, "\xEF\xBF\xBD"},
      {"\xF4\x90\x80\x80", {0xFFFD}, "\xEF\xBF\xBD"},
      {"a\xE2\x82", {'a', 0xFFFD}, "a\xEF\xBF\xBD"},
  };
  for (const Row& row : rows) {
    marlo::String s(row.utf8);
    EXPECT_EQ(UnitsOf(s), row.units) << row.utf8;
    EXPECT_EQ(s.Length(), static_cast<int>(row.units.size()));
    EXPECT_EQ(ViewOf(&s), row.back) << row.utf8;
  }
}

TEST(VmStringTest, UnpairedSurrogatesBecomeReplacementCharacters) {
  const Units lone = {'a', 0xD800, 'b', 0xDC00, 0xD83D};
  marlo::String s(lone.data(), static_cast<int>(lone.size()));
  EXPECT_EQ(s.Length(), 5);
  EXPECT_EQ(ViewOf(&s), "a\xEF\xBF\xBD" "b\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(VmStringTest, NullAndEmptyGiveAnEmptyViewWithoutARequest) {
  marlo::String empty("");
  marlo::String fromNull(nullptr);
  EXPECT_EQ(fromNull.Length(), 0);
  vesk_test::RequestCounter counter;
  EXPECT_EQ(ViewOf(nullptr), "");
  EXPECT_EQ(ViewOf(&empty), "");
  EXPECT_EQ(counter.Requests(), 0u);
}

}  // namespace
