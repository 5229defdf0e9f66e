// The heap requests and releases of every allocating operation, in order,
// as the default host's observers see them, with the text each leaves.
#include <functional>
#include <string>

#include "host/object_model.h"
#include "host/vm_string.h"
#include "support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::TakeHeapText;
using S = VeskString;

// "+N" a request of N bytes that may come back null, "+N!" one that may
// not; "-text" a release, with what the block held up to its first NUL.
std::string g_log;

void Mark() { g_log.clear(); }

void OnRequest(unsigned long size, Pelgc::FixedMallocOpts opts) {
  g_log += " +" + std::to_string(size) + (opts == Pelgc::kNeverNull ? "!" : "");
}

void OnRelease(const void* block) {
  g_log += " -" + std::string(static_cast<const char*>(block)).substr(0, 12);
}

std::string Filled(int n) { return std::string(static_cast<size_t>(n), 'a'); }

// The query of a string holding "/p", a NUL and "=": the 16-bit text ends
// at the NUL, so no pair is there yet.
std::string Variables() {
  auto object = ScriptObject::Create();
  object->SetVariable("x", ScriptAtom::FromString("\xC3\xA9"));
  object->SetVariable("y", ScriptAtom::FromNumber(2));
  CorePlayer player;
  player.convertToCodePage = true;
  S s("/p");
  vesk_test::Put(s, std::string("\0=", 2));
  Mark();
  s.EncodeVariables(&player, object, 6, false);
  return Bytes(s);
}

struct Row {
  const char* call;
  std::function<std::string()> act;  // marks where the log starts
  std::string log;
  std::string result;
};

TEST(RequestsTest, EachOperationMakesItsRequestsAndReleasesInOrder) {
  const Row kRows[] = {
      {"Set within the capacity",
       [] {
         S s("abcdef");
         Mark();
         s.Set("xy", -1);
         return Bytes(s);
       },
       " -xy", "xy"},
      {"Set past the capacity",
       [] {
         S s("ab");
         Mark();
         s.Set("abcdef", -1);
         return Bytes(s);
       },
       " -ab +7 -abcdef", "abcdef"},
      {"Set to an empty text",
       [] {
         S s("ab");
         Mark();
         s.Set("", -1);
         return Bytes(s);
       },
       " -ab", ""},
      {"capacity constructor",
       [] {
         Mark();
         return Bytes(S(10));
       },
       " +10 -", ""},
      {"growth from the shared empty text",
       [] {
         S s("");
         Mark();
         s.AppendChar('x');
         return Bytes(s);
       },
       " +257 -x", "x"},
      {"growth below 1024: required + 256",
       [] {
         S s("abc");
         Mark();
         s.AppendString("de");
         return Bytes(s);
       },
       " +262 -abc -abcde", "abcde"},
      {"growth from 1024: required + half the capacity",
       [] {
         S s(1024);
         s.AppendString(Filled(1022).c_str());
         Mark();
         s.AppendString("bc");
         return Bytes(s).substr(1020);
       },
       " +1537 -aaaaaaaaaaaa -aaaaaaaaaaaa", "aabc"},
      {"SubString",
       [] {
         S s("hello");
         Mark();
         return Bytes(s.SubString(1, 3));
       },
       " +4! +4 -ell -ell -hello", "ell"},
      {"AppendNDigits",
       [] {
         S s;
         Mark();
         s.AppendNDigits(7, 3);
         return Bytes(s);
       },
       " +257 +257 -7 -007", "007"},
      {"CharFromCode",
       [] {
         Mark();
         return Bytes(S::CharFromCode(65));
       },
       " +2 -A", "A"},
      {"CharFromCode of a NUL",
       [] {
         Mark();
         return Bytes(S::CharFromCode(0));
       },
       "", ""},
      {"AppendDouble",
       [] {
         S s;
         Mark();
         s.AppendDouble(0.5);
         return Bytes(s);
       },
       " +4 +260 -0.5 -0.5", "0.5"},
      {"Format",
       [] {
         S s("old");
         Mark();
         s.Format("%d", 42);
         return Bytes(s);
       },
       " -old +257 -42", "42"},
      {"EncodeString, converted",
       [] {
         S s;
         Mark();
         s.EncodeString("\xC3\xA9 ", 6, true, true);
         return Bytes(s);
       },
       " +4 +257 -\xE9  -%E9+", "%E9+"},
      {"EncodeStringHighAscii, converted",
       [] {
         S s;
         Mark();
         s.EncodeStringHighAscii("\xC3\xA9", 6);
         return Bytes(s);
       },
       " +3 +257 -\xE9 -%E9", "%E9"},
      {"CreateEscapedCStr(true)",
       [] {
         S s("a b");
         Mark();
         return TakeHeapText(s.CreateEscapedCStr(true));
       },
       " +257 +6 -a%20b -a%20b -a b", "a%20b"},
      {"CreateEscapedCStr(false)",
       [] {
         S s("a b");
         Mark();
         return TakeHeapText(s.CreateEscapedCStr(false));
       },
       " +257 +4 -a b -a b -a b", "a b"},
      {"CreateUpper128ASCIIEscapedCStr",
       [] {
         S s("a\xE9");
         Mark();
         return TakeHeapText(s.CreateUpper128ASCIIEscapedCStr());
       },
       " +257 +5 -a%E9 -a%E9 -a\xE9", "a%E9"},
      {"CreateEncodedUrl",
       [] {
         S s("a<");
         Mark();
         return TakeHeapText(s.CreateEncodedUrl());
       },
       " +257 +5 -a%3C -a%3C -a<", "a%3C"},
      {"EncodeVariables", Variables,
       " +2 +3 +2 -x +3 -\xE9 -\xC3\xA9 -x +2 +2 +2 -y +2 -2 -2 -y -/p",
       std::string("/p\0=?x=%E9&y=2", 14)},
      {"CreateStr(text)",
       [] {
         Mark();
         return TakeHeapText(CreateStr("ab"));
       },
       " +3 -ab", "ab"},
      {"CreateStr(text, n)",
       [] {
         Mark();
         return TakeHeapText(CreateStr("abc", 2));
       },
       " +3 -ab", "ab"},
      {"CreateStr(n)",
       [] {
         Mark();
         return TakeHeapText(CreateStr(4UL));
       },
       " +5 -", ""},
      {"CreateStr(script string)",
       [] {
         marlo::String vm("h\xC3\xA9");
         Mark();
         return TakeHeapText(CreateStr(&vm));
       },
       " +4! +4 -h\xC3\xA9 -h\xC3\xA9", "h\xC3\xA9"},
      {"ConcatStr",
       [] {
         Mark();
         return TakeHeapText(ConcatStr("ab", "c"));
       },
       " +4 -abc", "abc"},
      {"U64ToChar",
       [] {
         Mark();
         return TakeHeapText(U64ToChar(42));
       },
       " +21 -42", "42"},
  };
  vesk_test::ScopedCodePage page("windows-1252");
  Pelgc::SetRequestObserver(OnRequest);
  Pelgc::SetReleaseObserver(OnRelease);
  for (const Row& row : kRows) {
    const std::string result = row.act();
    EXPECT_EQ(g_log, row.log) << row.call;
    EXPECT_EQ(result, row.result) << row.call;
  }
  Pelgc::SetRequestObserver(nullptr);
  Pelgc::SetReleaseObserver(nullptr);
}

}  // namespace
