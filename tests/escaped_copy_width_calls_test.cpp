// The escaped copies ask the host for a character's width once, at its lead
// byte, in text order, and for no other byte.
#include "support.h"

namespace {

// The default host's observer sees every PlayerBytesInChar call, so the
// test counts the module's real calls without a host of its own.
std::string g_asked;
void Record(unsigned char lead) { g_asked += static_cast<char>(lead); }

std::string Repeat(const std::string& piece, int times) {
  std::string text;
  for (int i = 0; i < times; ++i) text += piece;
  return text;
}

TEST(EscapedCopyWidthCallsTest, OneCallPerCharacterAtItsLeadByte) {
  // Code page, text (a NUL in it ends the walk), and the bytes that
  // PlayerBytesInChar must be asked about, in order.
  const struct {
    const char* page;
    std::string text, asked;
  } cases[] = {
      {"windows-1252", "a b", "a b"},
      {"shift_jis", "a\x83\\z", "a\x83z"},
      {"shift_jis", "\x83\x83\x83", "\x83\x83"},
      {"shift_jis", "x\x83", "x\x83"},  // cut short by the NUL
      {"shift_jis", std::string("ab\0\x83z", 5), "ab"},
      {"utf-8", "\xE2\x82\xAC!\xF0\x9F\x98\x80", "\xE2!\xF0"},
      {"windows-1252", std::string(1000, 'q'), std::string(1000, 'q')},
      {"shift_jis", Repeat("abcdefghijklmno\x83\x5C", 40),
       Repeat("abcdefghijklmno\x83", 40)},
  };
  for (const auto& c : cases) {
    const vesk_test::ScopedCodePage page(c.page);
    VeskString source;
    vesk_test::Put(source, c.text);
    for (int copier = 0; copier < 4; ++copier) {
      g_asked.clear();
      ObservePlayerBytesInChar(Record);
      char* copy = copier == 0   ? source.CreateEscapedCStr(true)
                   : copier == 1 ? source.CreateEscapedCStr(false)
                   : copier == 2 ? source.CreateUpper128ASCIIEscapedCStr()
                                 : source.CreateEncodedUrl();
      ObservePlayerBytesInChar(nullptr);
      Pelgc::SystemDelete(copy);
      EXPECT_EQ(g_asked, c.asked) << c.page << ", copier " << copier << ", "
                                  << c.text.size() << " bytes";
    }
  }
}

}  // namespace
