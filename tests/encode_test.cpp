// Form encoding, the escaped heap copies and a script object's variables
// appended as a query.
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "host/object_model.h"
#include "host/text_services.h"
#include "support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::Repeat;

// The escaping rules: the two encoders, then the four escaped copies.
enum Rule { kForm, kHighAscii, kStrict, kLenient, kUpper128, kUrl, kRules };

// Whether `rule` keeps the byte `b` as it is.
bool Kept(int rule, int b) {
  const bool alnum = b < 0x80 && std::isalnum(b);  // ASCII's 62
  const bool kept[kRules] = {
      alnum, b < 0x80, alnum || std::strchr("-.", b),
      true,  b < 0x80, alnum || std::strchr("!\"#$%&'()*+,-./:;=?@[]_~", b)};
  return b != 0 && kept[rule];
}

// What a rule gives for text of single-byte characters: each byte as it is
// when kept, else '%' and two upper-case hex digits.
std::string Encoded(const std::string& text, int rule) {
  std::string out;
  for (char c : text) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "%%%02X", c & 0xFF);
    out += Kept(rule, c & 0xFF) ? std::string(1, c) : escape;
  }
  return out;
}

// The escaped copy that `rule` (kStrict and after) makes of `s`.
std::string EscapedCopy(int rule, const VeskString& s) {
  return vesk_test::TakeHeapText(rule == kStrict    ? s.CreateEscapedCStr(true)
                                 : rule == kLenient ? s.CreateEscapedCStr(false)
                                 : rule == kUpper128
                                     ? s.CreateUpper128ASCIIEscapedCStr()
                                     : s.CreateEncodedUrl());
}

// What the encoder or escaped copy of `rule` makes of `text`.
std::string Encode(int rule, const std::string& text) {
  VeskString out;
  if (rule == kForm) out.EncodeString(text.c_str(), 5, false, false);
  if (rule == kHighAscii) out.EncodeStringHighAscii(text.c_str(), 5);
  return rule <= kHighAscii ? Bytes(out)
                            : EscapedCopy(rule, VeskString(text.c_str()));
}

// Each byte value alone, and after runs of kept bytes long enough for the
// 16- and 32-byte steps, at changing offsets within them.
TEST(EncodeTest, EveryRuleKeepsExactlyItsBytes) {
  std::vector<std::string> texts(4);  // the runs, one per shift
  for (int b = 1; b < 256; ++b) {
    texts.emplace_back(1, char(b));
    for (int shift = 0; shift < 4; ++shift) {
      texts[shift] +=
          std::string(size_t(40 + (b + 9 * shift) % 32), 'a') + char(b);
    }
  }
  for (int rule = 0; rule < kRules; ++rule) {
    for (const std::string& text : texts) {
      EXPECT_EQ(Encode(rule, text), Encoded(text, rule))
          << rule << " " << text.size() << " " << int(text[0]);
    }
  }
}

// Appended to buffers filled to each level: a character that may not fit
// goes by itself, and the next one by its own rule.
TEST(EncodeTest, AppendedAtEveryFillLevel) {
  for (int length = 0; length < 10; ++length) {
    VeskString t(10);
    t.AppendString(std::string(size_t(length), '~').c_str());
    t.EncodeString(nullptr, 6, true, true);  // null texts: nothing
    t.EncodeStringHighAscii(nullptr, 6);
    t.EncodeString("ab cd", 5, true, false);
    t.EncodeStringHighAscii("ab\xE9gh", 5);
    EXPECT_EQ(Bytes(t), std::string(size_t(length), '~') + "ab+cdab%E9gh")
        << length << " bytes there first";
  }
}

std::string g_asked;  // the lead bytes whose widths the host was asked
void Record(unsigned char lead) { g_asked += static_cast<char>(lead); }

// Rows: a code page, a string's bytes (a NUL among them ends the walk),
// the bytes whose widths the host must be asked, once per character at
// its lead byte and in order, and the copy that every escaping rule makes:
// multibyte characters escaped byte by byte, none of an empty string.
TEST(EncodeTest, EscapedCopiesWalkTheTextByCharacters) {
  const std::string run(300, 'a');  // long: the vector steps
  const struct {
    const char* page;
    std::string bytes, asked, copy;
  } kRows[] = {
      {"windows-1252", "a-b", "a-b", "a-b"},
      {"shift_jis", "", "", "(null)"},
      {"shift_jis", "ab\x83\\z", "ab\x83z", "ab%83%5Cz"},
      {"shift_jis", "\x83\x83\x83", "\x83\x83", "%83%83%83"},
      {"shift_jis", "x\x83", "x\x83", "x%83"},  // cut short by the NUL
      {"shift_jis", std::string("ab\0\x83z", 5), "ab", "ab"},
      {"shift_jis", run + "\x83\\z", run + "\x83z", run + "%83%5Cz"},
      {"utf-8", "\xE2\x82\xAC.\xF0\x9F\x98\x80", "\xE2.\xF0",
       "%E2%82%AC.%F0%9F%98%80"},
      {"windows-1252", std::string(1000, 'q'), std::string(1000, 'q'),
       std::string(1000, 'q')},
      {"shift_jis", Repeat("abcdefghijklmno\x83\x5C", 17 * 40),
       Repeat("abcdefghijklmno\x83", 16 * 40),
       Repeat("abcdefghijklmno%83%5C", 21 * 40)},
  };
  for (const auto& row : kRows) {
    vesk_test::ScopedCodePage page(row.page);
    VeskString source;
    vesk_test::Put(source, row.bytes);
    for (int rule = kStrict; rule < kRules; ++rule) {
      g_asked.clear();
      ObservePlayerBytesInChar(Record);
      const std::string copy = EscapedCopy(rule, source);
      ObservePlayerBytesInChar(nullptr);
      SCOPED_TRACE(testing::Message()
                   << row.page << ", rule " << rule << ", "
                   << testing::PrintToString(row.bytes.substr(0, 40)) << " ("
                   << row.bytes.size() << " bytes)");
      EXPECT_EQ(g_asked, row.asked);
      EXPECT_EQ(copy, row.copy);
    }
  }
}

// A variable: its name, its value and its flags.
struct Var {
  const char* name;
  ScriptAtom value;
  std::uint16_t flags;
};

// Rows: the current text, the variables and the query appended. Flags
// 0x0001 leave a variable out. Names or values the host cannot give (heap
// request 0 is x's name, 1 its value) leave it out too, and the next one
// comes first with '?'. Below version 6 names and values stay UTF-8, and
// the current text is read in the code page as 16-bit units.
TEST(EncodeTest, VariablesFollowTheCurrentText) {
  const ScriptAtom one = ScriptAtom::FromNumber(1),
                   e = ScriptAtom::FromString("\xC3\xA9");
  const std::vector<Var> xy = {{"x", one, 0}, {"y", one, 0}};
  const struct {
    const char* text;
    bool noQuestionMark;
    std::vector<Var> vars;
    std::string expected;
    unsigned long failing = ~0UL;  // none
    int version = 6;
  } kRows[] = {
      {nullptr, false, xy, "?x=1&y=1"},
      {"/a/b?", false, {{"x", one, 0}}, "/a/b?&x=1"},
      {"/a=b", false, {{"x", one, 0}}, "/a=b&x=1"},
      {"/a=b", false, {{"x", one, 0}}, "/a=b&x=1", ~0UL, 5},
      {"/p&q", true, xy, "/p&q&x=1&y=1"},
      {"/", false, {{"h", one, 1}, {"a$", one, 2}}, "/?a%24=1"},
      {nullptr, false, xy, "?y=1", 0},
      {nullptr, false, xy, "?y=1", 1},
      {"", true, {{"\xC3\xA9", e, 0}}, "%C3%A9=%C3%A9", ~0UL, 5},
  };
  vesk_test::ScopedCodePage page("windows-1252");
  for (const auto& row : kRows) {
    auto object = ScriptObject::Create();
    for (const Var& var : row.vars) {
      object->SetVariable(var.name, var.value, var.flags);
    }
    CorePlayer player;
    player.convertToCodePage = true;
    VeskString s;
    if (row.text != nullptr) s.AppendString(row.text);
    Pelgc::InjectHeapFault(row.failing, Pelgc::HeapFault::kReturnNull, false);
    s.EncodeVariables(&player, object, row.version, row.noQuestionMark);
    Pelgc::ClearHeapFault();
    EXPECT_EQ(Bytes(s), row.expected)
        << (row.text ? row.text : "null") << ", " << row.vars.size()
        << " variables, version " << row.version << ", request "
        << long(row.failing) << " failing"
        << (row.noQuestionMark ? ", no '?'" : "");
  }
}

}  // namespace
