// The default host's code pages, their conversions and character widths.
#include <string>
#include <vector>

#include "host/vm_string.h"
#include "test_support.h"

namespace {

using vesk_test::ScopedCodePage;

std::string Converted(const char* utf8) {
  return vesk_test::TakeHeapText(CreateMBCSFromUTF8(utf8, true));
}

TEST(CodePageTest, SettingIsProcessWideAndRejectsUnknownNames) {
  EXPECT_STREQ(HostCodePage(), "windows-1252");
  {
    ScopedCodePage page("gbk");
    EXPECT_STREQ(HostCodePage(), "gbk");
    EXPECT_FALSE(SetHostCodePage("klingon"));
    EXPECT_FALSE(SetHostCodePage(nullptr));
    EXPECT_STREQ(HostCodePage(), "gbk");
  }
  EXPECT_STREQ(HostCodePage(), "windows-1252");
}

TEST(CodePageTest, ConvertsUtf8ToTheCodePage) {
  const char* kText = "a\xC3\xA9\xE2\x82\xAC\xE6\x97\xA5";  // a, e-acute, euro, kanji
  const struct { const char* page; std::string expected; } kCases[] = {
      {"windows-1252", "a\xE9\x80?"},
      {"shift_jis", "a??\x93\xFA"},
      {"gbk", "a\xA8\xA6\x80\xC8\xD5"},
      {"big5", "a?\xA3\xE1\xA4\xE9"},
      {"euc-kr", "a?\xA2\xE6\xEC\xED"},
      {"utf-8", kText},
  };
  for (const auto& c : kCases) {
    ScopedCodePage page(c.page);
    EXPECT_EQ(Converted(kText), c.expected) << c.page;
    EXPECT_EQ(Converted(""), "") << c.page;
    EXPECT_EQ(Converted("a\xC3"), "(null)") << c.page;  // not UTF-8
  }
  EXPECT_EQ(Converted(nullptr), "(null)");
  vesk_test::ScopedHeapFault fault(0, Pelgc::HeapFault::kReturnNull);
  EXPECT_EQ(Converted("abc"), "(null)");
}

TEST(CodePageTest, CharacterWidthsFollowTheLeadBytes) {
  const struct { const char* page; std::vector<std::pair<int, int>> widths; } kCases[] = {
      {"windows-1252", {{0x41, 1}, {0x81, 1}, {0xFF, 1}}},
      {"shift_jis", {{0x41, 1}, {0x80, 1}, {0x81, 2}, {0x9F, 2}, {0xA0, 1},
                     {0xDF, 1}, {0xE0, 2}, {0xFC, 2}, {0xFD, 1}}},
      {"gbk", {{0x80, 1}, {0x81, 2}, {0xFE, 2}, {0xFF, 1}}},
      {"utf-8", {{0x41, 1}, {0x80, 1}, {0xC1, 1}, {0xC2, 2}, {0xE0, 3},
                 {0xF4, 4}, {0xF5, 1}}},
  };
  for (const auto& c : kCases) {
    ScopedCodePage page(c.page);
    for (const auto& [lead, width] : c.widths) {
      EXPECT_EQ(PlayerBytesInChar(static_cast<unsigned char>(lead)), width)
          << c.page << " lead " << lead;
    }
  }
}

std::vector<unsigned short> Units(const char* text, int version) {
  const VeskString16 wide(nullptr, text, version);
  const StringRep16* rep = wide.Rep();
  return std::vector<unsigned short>(rep->String(), rep->String() + rep->Length());
}

TEST(CodePageTest, SixteenBitFormDecodesByVersion) {
  ScopedCodePage page("shift_jis");
  using U = std::vector<unsigned short>;
  EXPECT_EQ(Units(nullptr, 6), U{});
  EXPECT_EQ(Units("a\xE6\x97\xA5", 6), (U{'a', 0x65E5}));
  EXPECT_EQ(Units("a\x93\xFA", 5), (U{'a', 0x65E5}));
  EXPECT_EQ(Units("\x81=", 5), (U{0xFFFD, '='}));  // no such character
  EXPECT_EQ(Units("a\x93", 5), (U{'a', 0xFFFD}));  // cut short
  EXPECT_EQ(Units("\xFF", 6), U{0xFFFD});
}

}  // namespace
