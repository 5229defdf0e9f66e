// Form encoding, the escaped heap copies and a script object's variables
// appended as a query.
#include <cstdint>
#include <string>
#include <vector>

#include "host/object_model.h"
#include "kept_sets.h"
#include "support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::Encode;
using vesk_test::Rule;
using vesk_test::ScopedCodePage;

// Each byte value alone, and after runs of kept bytes long enough for the
// 16- and 32-byte steps, at changing offsets within them.
TEST(EncodeTest, EveryRuleKeepsExactlyItsBytes) {
  std::vector<std::string> texts(4);  // the runs, one per shift
  for (int b = 1; b < 256; ++b) {
    texts.emplace_back(1, char(b));
    for (int shift = 0; shift < 4; ++shift) {
      texts[shift] += std::string(size_t(40 + (b + 9 * shift) % 32), 'a');
      texts[shift] += char(b);
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
  VeskString s("a=");
  s.EncodeString("b c", 5, true, false);
  s.EncodeString(nullptr, 6, true, true);
  s.EncodeStringHighAscii(nullptr, 6);
  EXPECT_EQ(Bytes(s), "a=b+c");
  // Appended to buffers filled to each level: a character that may not fit
  // goes by itself, and the next one by its own rule.
  for (int length = 0; length < 10; ++length) {
    VeskString t(10);
    t.AppendString(std::string(size_t(length), '~').c_str());
    t.EncodeString("ab cd", 5, true, false);
    t.EncodeStringHighAscii("ab\xE9" "cd", 5);
    EXPECT_EQ(Bytes(t), std::string(size_t(length), '~') + "ab+cdab%E9cd");
  }
  for (Rule rule : {vesk_test::kStrict, vesk_test::kLenient,
                    vesk_test::kUpper128, vesk_test::kUrl}) {
    EXPECT_EQ(Encode(rule, ""), "(null)") << rule;
  }
  ScopedCodePage page("shift_jis");
  for (Rule rule : {vesk_test::kStrict, vesk_test::kLenient,
                    vesk_test::kUpper128, vesk_test::kUrl}) {
    EXPECT_EQ(Encode(rule, "ab\x83\x5C" "c"), "ab%83%5Cc");
    EXPECT_EQ(Encode(rule, "\x83"), "%83");  // cut short by the NUL
    const std::string run(300, 'a');  // long: widths asked for all bytes
    EXPECT_EQ(Encode(rule, run + "\x83\x5C" "c"), run + "%83%5Cc");
  }
}

struct Var {
  const char* name;
  ScriptAtom value;
  std::uint16_t flags = 0;
};
using Vars = std::vector<Var>;
ScriptAtom Str(const char* text) { return ScriptAtom::FromString(text); }
ScriptAtom Num(double value) { return ScriptAtom::FromNumber(value); }

// Rows: the current text, the variables and the query appended; variables
// that are set again are replaced in place. Flags 0x0001 leave a variable
// out. Names or values the host cannot give (heap request 0 is x's name, 1
// its value) leave it out too, and the next one comes first with '?'.
TEST(EncodeTest, VariablesFollowTheCurrentText) {
  const Vars xy = {{"x", Num(1)}, {"y", Num(2)}};
  const struct {
    const char* text;
    bool noQuestionMark;
    Vars vars;
    std::string expected;
    bool convert = false;
    int version = 6;
    int failing = -1;
  } kRows[] = {
      {nullptr, false, xy, "?x=1&y=2"},
      {"", true, xy, "x=1&y=2"},
      {"/a/b", false, xy, "/a/b?x=1&y=2"},
      {"/a/b?", false, {{"x", Num(1)}}, "/a/b?&x=1"},
      {"/a=b", false, {{"x", Num(1)}}, "/a=b&x=1"},
      {"/p&q", true, xy, "/p&q&x=1&y=2"},
      {"/a/b", false, {{"x", Str("two words")}, {"y", Str("a&b")}},
       "/a/b?x=two+words&y=a%26b"},
      {"/", false, {}, "/"},
      {"/", false, {{"", Num(1)}, {"x", Str("")}}, "/?=1&x="},
      {"/", false, {{"t", ScriptAtom::FromBool(true)},
        {"n", ScriptAtom::Null()}, {"u", ScriptAtom::Undefined()}},
       "/?t=true&n=null&u=undefined"},
      {"/", false, {{"a", Num(1)}, {"b", Num(2)}, {"a", Str("x y")}},
       "/?a=x+y&b=2"},
      {"/", false, {{"$v", Num(1)}, {"hidden", Num(2), 1}, {"a$b", Num(3)},
        {"shown", Num(4), 2}, {"x", Num(5)}}, "/?a%24b=3&shown=4&x=5"},
      {nullptr, false, xy, "?y=2", false, 6, 0},
      {nullptr, false, xy, "?y=2", false, 6, 1},
      {"", true, {{"\xC3\xA9", Str("\xC3\xA9")}}, "%C3%A9=%C3%A9"},
      {"", true, {{"\xC3\xA9", Str("\xC3\xA9")}}, "%E9=%E9", true},
      {"", true, {{"\xC3\xA9", Str("\xC3\xA9")}}, "%C3%A9=%C3%A9", true, 5},
  };
  ScopedCodePage page("windows-1252");
  for (const auto& row : kRows) {
    auto object = ScriptObject::Create();
    for (const Var& v : row.vars) object->SetVariable(v.name, v.value, v.flags);
    CorePlayer player;
    player.convertToCodePage = row.convert;
    VeskString s;
    if (row.text != nullptr) s.AppendString(row.text);
    if (row.failing >= 0) {
      Pelgc::InjectHeapFault(row.failing, Pelgc::HeapFault::kReturnNull, false);
    }
    s.EncodeVariables(&player, object, row.version, row.noQuestionMark);
    Pelgc::ClearHeapFault();
    EXPECT_EQ(Bytes(s), row.expected) << row.expected << row.failing;
  }
}

}  // namespace
