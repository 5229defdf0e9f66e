// Form encoding, the escaped heap copies and a script object's variables
// appended as a query.
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "host/object_model.h"
#include "kept_sets.h"
#include "support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::Encode;
using vesk_test::Rule;

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
  for (int rule = 0; rule < vesk_test::kRules; ++rule) {
    for (const std::string& text : texts) {
      EXPECT_EQ(Encode(Rule(rule), text), vesk_test::Encoded(text, Rule(rule)))
          << rule << " " << text.size() << " " << int(text[0]);
    }
  }
}

TEST(EncodeTest, SpacesNullTextsAndMultibyteCharacters) {
  // Appended to buffers filled to each level: a character that may not fit
  // goes by itself, and the next one by its own rule.
  for (int length = 0; length < 10; ++length) {
    VeskString t(10);
    t.AppendString(std::string(size_t(length), '~').c_str());
    t.EncodeString(nullptr, 6, true, true);  // null texts: nothing
    t.EncodeStringHighAscii(nullptr, 6);
    t.EncodeString("ab cd", 5, true, false);
    t.EncodeStringHighAscii("ab\xE9gh", 5);
    EXPECT_EQ(Bytes(t), std::string(size_t(length), '~') + "ab+cdab%E9gh");
  }
  // The escaped copies: none of an empty text.
  vesk_test::ScopedCodePage page("shift_jis");
  const std::string run(300, 'a');  // long: widths asked for all bytes
  for (int r = vesk_test::kStrict; r < vesk_test::kRules; ++r) {
    EXPECT_EQ(Encode(Rule(r), ""), "(null)") << r;
    EXPECT_EQ(Encode(Rule(r), "ab\x83\\c"), "ab%83%5Cc") << r;
    EXPECT_EQ(Encode(Rule(r), "\x83"), "%83") << r;  // cut short by the NUL
    EXPECT_EQ(Encode(Rule(r), run + "\x83\\c"), run + "%83%5Cc") << r;
  }
}

// A name, a value and flags.
using Var = std::tuple<const char*, ScriptAtom, std::uint16_t>;

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
      {"", true, {{"\xC3\xA9", e, 0}}, "%E9=%E9"},
      {"", true, {{"\xC3\xA9", e, 0}}, "%C3%A9=%C3%A9", ~0UL, 5},
  };
  vesk_test::ScopedCodePage page("windows-1252");
  for (const auto& row : kRows) {
    auto object = ScriptObject::Create();
    for (const auto& [name, value, flags] : row.vars) {
      object->SetVariable(name, value, flags);
    }
    CorePlayer player;
    player.convertToCodePage = true;
    VeskString s;
    if (row.text != nullptr) s.AppendString(row.text);
    Pelgc::InjectHeapFault(row.failing, Pelgc::HeapFault::kReturnNull, false);
    s.EncodeVariables(&player, object, row.version, row.noQuestionMark);
    Pelgc::ClearHeapFault();
    EXPECT_EQ(Bytes(s), row.expected) << row.expected << row.failing;
  }
}

}  // namespace
