// The heap requests and releases of every allocating operation, in order,
// as the default host's observers see them, with the text each leaves.
#include <cstring>
#include <string>

#include "host/object_model.h"
#include "host/vm_string.h"
#include "support.h"

namespace {

using vesk_test::Bytes;
using vesk_test::TakeHeapText;

// " +N" a request of N bytes that may come back null, " +N!" one that may
// not; " -text" a release, with what the block held up to its first NUL.
std::string g_log;

void OnRequest(unsigned long size, Pelgc::FixedMallocOpts opts) {
  g_log += " +" + std::to_string(size) + (opts == Pelgc::kNeverNull ? "!" : "");
}

void OnRelease(const void* block) {
  const auto* text = static_cast<const char*>(block);
  g_log += " -" + std::string(text, strnlen(text, 12));
}

// The operation `op` with `arg` on `s`: the string's text or the heap text
// made.
std::string Apply(char op, VeskString& s, const std::string& arg) {
  const char* a = arg.c_str();
  auto object = ScriptObject::Create();
  object->SetVariable("x", ScriptAtom::FromString(a));
  object->SetVariable("y", ScriptAtom::FromNumber(2));
  CorePlayer player;
  player.convertToCodePage = true;
  marlo::String script(a);
  g_log.clear();
  switch (op) {
    case 's': s.Set(a, -1); break;
    case 'c': vesk_test::Put(s, arg); break;
    case 'a': s.AppendString(a); break;
    case 'k': return Bytes(VeskString(std::stoi(arg)));
    case 'b': return Bytes(s.SubString(1, std::stoi(arg)));
    case 'n': s.AppendNDigits(std::stoi(arg), 3); break;
    case 'f': return Bytes(VeskString::CharFromCode(std::stoi(arg)));
    case 'd': s.AppendDouble(std::stod(arg)); break;
    case 'F': s.Format("%d", std::stoi(arg)); break;
    case 'e': s.EncodeString(a, 6, true, true); break;
    case 'h': s.EncodeStringHighAscii(a, 6); break;
    case 'S': return TakeHeapText(s.CreateEscapedCStr(true));
    case 'L': return TakeHeapText(s.CreateEscapedCStr(false));
    case 'U': return TakeHeapText(s.CreateUpper128ASCIIEscapedCStr());
    case 'u': return TakeHeapText(s.CreateEncodedUrl());
    case 'v': s.EncodeVariables(&player, object, 6, false); break;
    case 'C': return TakeHeapText(CreateStr(a));
    case 'N': return TakeHeapText(CreateStr(a, 2));
    case 'E': return TakeHeapText(CreateStr(arg.size()));
    case 'V': return TakeHeapText(CreateStr(&script));
    case '+': return TakeHeapText(ConcatStr(a, a));
    case '6': return TakeHeapText(U64ToChar(std::stoul(arg)));
    default: ADD_FAILURE() << "no operation " << op;
  }
  return Bytes(s);
}

// Rows: an operation, the string it works on (`start` in a buffer of
// `capacity` bytes, or as a new string for 0), its argument, the log of the
// operation and of the string's release, and the last 12 bytes it gives.
// The string "/p", a NUL and "=" holds no pair yet: the 16-bit text that
// the query looks for pairs in ends at the NUL.
TEST(RequestsTest, EachOperationMakesItsRequestsAndReleasesInOrder) {
  const std::string k1022(1022, 'a'), nul("/p\0=", 4), tail = "aaaaaaaaaaaa";
  const struct {
    char op;
    int capacity;
    std::string start, arg, log, result;
  } kRows[] = {
      {'s', 0, "abcdef", "xy", " -xy", "xy"},
      {'s', 0, "ab", "abcdef", " -ab +7 -abcdef", "abcdef"},
      {'s', 0, "ab", "", " -ab", ""},
      {'k', 0, "", "10", " +10 -", ""},
      {'c', 0, "", "x", " +257 -x", "x"},
      {'a', 0, "abc", "de", " +262 -abc -abcde", "abcde"},
      {'c', 10, "", "123456789", " -123456789", "123456789"},
      {'c', 10, "", "1234567890", " +266 -123456789 -1234567890", "1234567890"},
      {'a', 10, "", "12345678", " -12345678", "12345678"},
      {'a', 10, "", "123456789", " +266 - -123456789", "123456789"},
      {'c', 1023, k1022, "b", " +1279 -" + tail + " -" + tail,
       tail.substr(1) + "b"},
      {'c', 1024, k1022 + "a", "b", " +1536 -" + tail + " -" + tail,
       tail.substr(1) + "b"},
      {'a', 1024, k1022.substr(1), "bc", " +1536 -" + tail + " -" + tail,
       tail.substr(2) + "bc"},
      {'b', 0, "hello", "3", " +4! +4 -ell -ell -hello", "ell"},
      {'n', 0, "", "7", " +257 +257 -7 -007", "007"},
      {'f', 0, "", "65", " +2 -A", "A"},
      {'f', 0, "", "0", "", ""},
      {'d', 0, "", "0.5", " +4 +260 -0.5 -0.5", "0.5"},
      {'F', 0, "old", "42", " -old +257 -42", "42"},
      {'e', 0, "", "\xC3\xA9 ", " +4 +257 -\xE9  -%E9+", "%E9+"},
      {'h', 0, "", "\xC3\xA9", " +3 +257 -\xE9 -%E9", "%E9"},
      {'S', 0, "a b", "", " +257 +6 -a%20b -a%20b -a b", "a%20b"},
      {'L', 0, "a b", "", " +257 +4 -a b -a b -a b", "a b"},
      {'U', 0, "a\xE9", "", " +257 +5 -a%E9 -a%E9 -a\xE9", "a%E9"},
      {'u', 0, "a<", "", " +257 +5 -a%3C -a%3C -a<", "a%3C"},
      {'v', 257, nul, "\xC3\xA9",
       " +2 +3 +2 -x +3 -\xE9 -\xC3\xA9 -x +2 +2 +2 -y +2 -2 -2 -y -/p",
       nul.substr(2) + "?x=%E9&y=2"},
      {'C', 0, "", "ab", " +3 -ab", "ab"},
      {'N', 0, "", "abc", " +3 -ab", "ab"},
      {'E', 0, "", "abcd", " +5 -", ""},
      {'V', 0, "", "h\xC3\xA9", " +4! +4 -h\xC3\xA9 -h\xC3\xA9", "h\xC3\xA9"},
      {'+', 0, "", "ab", " +5 -abab", "abab"},
      {'6', 0, "", "42", " +21 -42", "42"},
  };
  vesk_test::ScopedCodePage page("windows-1252");
  Pelgc::SetRequestObserver(OnRequest);
  Pelgc::SetReleaseObserver(OnRelease);
  for (const auto& row : kRows) {
    std::string result;
    {
      VeskString s(row.capacity);
      row.capacity ? vesk_test::Put(s, row.start)
                   : s.Set(row.start.c_str(), -1);
      result = Apply(row.op, s, row.arg);
    }
    SCOPED_TRACE(testing::Message()
                 << "operation " << row.op << " on "
                 << testing::PrintToString(row.start) << " with " << row.arg);
    EXPECT_EQ(g_log, row.log);
    EXPECT_EQ(result.substr(result.size() < 12 ? 0 : result.size() - 12),
              row.result);
  }
  Pelgc::SetRequestObserver(nullptr);
  Pelgc::SetReleaseObserver(nullptr);
}

}  // namespace
