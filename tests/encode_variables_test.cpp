// A script object's variables appended as a query.
#include <string>
#include <utility>
#include <vector>

#include "host/object_model.h"
#include "test_support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::RequestCounter;
using Vars = std::vector<std::pair<const char*, ScriptAtom>>;

Pelgc::GCAPI::GCRef<ScriptObject> ObjectOf(const Vars& vars) {
  auto object = ScriptObject::Create();
  for (const auto& [name, value] : vars) object->SetVariable(name, value);
  return object;
}

std::string Encode(const char* text, const Vars& vars, bool noQuestionMark,
                   CorePlayer* player = nullptr, int version = 6) {
  CorePlayer defaultPlayer;
  VeskString s;
  if (text != nullptr) s.AppendString(text);
  s.EncodeVariables(player != nullptr ? player : &defaultPlayer, ObjectOf(vars),
                    version, noQuestionMark);
  return Bytes(s);
}

ScriptAtom Str(const char* text) { return ScriptAtom::FromString(text); }
ScriptAtom Num(double value) { return ScriptAtom::FromNumber(value); }

TEST(EncodeVariablesTest, SeparatorsFollowTheCurrentText) {
  const Vars xy = {{"x", Num(1)}, {"y", Num(2)}};
  const struct {
    const char* text;
    bool noQuestionMark;
    Vars vars;
    std::string expected;
  } kCases[] = {
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
      {"/", false, {{"t", ScriptAtom::FromBool(true)}, {"n", ScriptAtom::Null()},
                    {"u", ScriptAtom::Undefined()}},
       "/?t=true&n=null&u=undefined"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(Encode(c.text, c.vars, c.noQuestionMark), c.expected)
        << (c.text != nullptr ? c.text : "(zeroed)");
  }
}

TEST(EncodeVariablesTest, SettingANameAgainReplacesItInPlace) {
  auto object = ObjectOf({{"a", Num(1)}, {"b", Num(2)}});
  object->SetVariable("a", Str("x y"));
  CorePlayer player;
  VeskString s;
  s.EncodeVariables(&player, object, 6, true);
  EXPECT_EQ(Bytes(s), "a=x+y&b=2");
}

TEST(EncodeVariablesTest, LeftOutVariablesUseNoSeparator) {
  auto object = ScriptObject::Create();
  object->SetVariable("$v", Num(1));
  object->SetVariable("hidden", Num(2), 0x0001);
  object->SetVariable("a$b", Num(3));
  object->SetVariable("shown", Num(4), 0x0002);
  CorePlayer player;
  VeskString s("/");
  RequestCounter counter;
  s.EncodeVariables(&player, object, 6, false);
  EXPECT_EQ(Bytes(s), "/?a%24b=3&shown=4");
  // Four names read; two values; every copy released once.
  EXPECT_EQ(counter.Requests() - 1, 6u);  // less the string's own growth
  EXPECT_EQ(counter.Releases() - 1, 6u);
}

TEST(EncodeVariablesTest, ANameOrValueTheHostCannotGiveIsLeftOut) {
  auto object = ObjectOf({{"x", Num(1)}, {"y", Num(2)}});
  CorePlayer player;
  for (unsigned long failing : {0ul, 1ul}) {
    VeskString s;
    vesk_test::ScopedHeapFault fault(failing, Pelgc::HeapFault::kReturnNull);
    s.EncodeVariables(&player, object, 6, false);
    // Request 0 is x's name: x is left out. Request 1 is x's value: x is
    // left out after its name was read. Either way y comes first, with '?'.
    EXPECT_EQ(Bytes(s), "?y=2") << failing;
  }
}

TEST(EncodeVariablesTest, ConvertsToTheCodePageWhenThePlayerSaysSo) {
  vesk_test::ScopedCodePage page("windows-1252");
  CorePlayer player;
  const Vars vars = {{"\xC3\xA9", Str("\xC3\xA9")}};
  EXPECT_EQ(Encode("", vars, true, &player), "%C3%A9=%C3%A9");
  player.convertToCodePage = true;
  EXPECT_EQ(Encode("", vars, true, &player), "%E9=%E9");
  EXPECT_EQ(Encode("", vars, true, &player, 5), "%C3%A9=%C3%A9");
}

}  // namespace
