// Every allocating operation: its heap requests and releases, in order, as
// the default host's observers see them, with the text it leaves; and the
// same operation with each of its requests failing in turn, returning null
// and throwing std::bad_alloc, that request only and every one from it on.
#include <cstring>
#include <new>
#include <optional>
#include <string>

#include "host/object_model.h"
#include "host/vm_string.h"
#include "support.h"

namespace {

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

// The fault armed once the operation's inputs are made (none by default),
// and what the run saw.
struct Fault {
  unsigned long k = ~0UL;  // 0: the operation's first request fails
  Pelgc::HeapFault fault = Pelgc::HeapFault::kReturnNull;
  bool persistent = false, threw = false;
  unsigned long requests = 0;
};

// A string's bytes, or "(zeroed)", once its invariants are checked.
std::string Text(const VeskString& s) {
  if (s.Text() == nullptr) {
    EXPECT_EQ(std::make_pair(s.Length(), s.Capacity()), std::make_pair(0, 0));
    return "(zeroed)";
  }
  EXPECT_LT(s.Length(), s.Capacity());
  EXPECT_EQ(s.Text()[s.Length()], '\0') << s.Length();
  return vesk_test::Bytes(s);
}

// The operations that make a string or a heap text rather than change `s`.
constexpr const char* kMade = "kbfSLUuCNEV+6";

// The operation `op` with `arg`, read at an unreadable page's edge, on
// `s`: what it makes, else the string's text. `fallback`: the call gives the
// output that a failed host call leads to (the text left unconverted, a number
// measured short).
std::string Apply(char op, VeskString& s, const std::string& arg, Fault& run,
                  bool fallback = false) {
  const vesk_test::Guarded8 guarded(arg);
  const char* a = guarded.get();
  const int n = std::atoi(a);
  auto object = ScriptObject::Create();
  object->SetVariable("x", ScriptAtom::FromString(a));
  object->SetVariable("y", ScriptAtom::FromNumber(2));
  CorePlayer player;
  player.convertToCodePage = !fallback;
  marlo::String script(a);
  std::optional<VeskString> source;
  if (op == 'o' || op == '=') source.emplace(a);
  const std::string start = Text(s);  // which a made copy leaves as it is
  g_log.clear();
  const unsigned long requests = Pelgc::GetHeapStats().requests;
  Pelgc::InjectHeapFault(run.k, run.fault, run.persistent);
  std::string made;
  try {
    switch (op) {
      case 's': s.Set(a, -1); break;
      case 'A': s.AppendString(a, int(arg.size()) / 2); break;
      case 'm': s.Set(&script); break;
      case 'o': s.Copy(*source); break;
      case '=': s = *source; break;
      case 'c': vesk_test::Put(s, arg); break;
      case 'a': s.AppendString(a); break;
      case 'x': s.AppendThreeChars(a), s.AppendHexByte(a[0]); break;
      case 'i': s.AppendInt(-n, 2), s.AppendInt(-n, 10); break;
      case 'n':
        fallback               ? s.AppendString("000"),
            s.AppendInt(n, 10) : s.AppendNDigits(n, 3);
        break;
      case 'd': s.AppendDouble(std::atof(a)); break;
      case 'F': s.Format("%d", n); break;
      case 'p':
        s.AppendFormat(fallback ? "%s|00%d|%x|%c%b|%f|%3|%p|%%|%q%"
                                : "%s|%2|%x|%c%b|%f|%3|%p|%%|%q%",
                       a, 7, 255, 'A', 1, -0.5, "xyz", (void*)0xBEEF);
        break;
      case 'e': s.EncodeString(a, 6 - fallback, true, true); break;
      case 'h': s.EncodeStringHighAscii(a, 6 - fallback); break;
      case 'v': s.EncodeVariables(&player, object, 6, false); break;
      case 'k': made = Text(VeskString(n)); break;
      case 'b': made = Text(s.SubString(1, n)); break;
      case 'f': made = Text(VeskString::CharFromCode(n)); break;
      case 'S': made = TakeHeapText(s.CreateEscapedCStr(true)); break;
      case 'L': made = TakeHeapText(s.CreateEscapedCStr(false)); break;
      case 'U': made = TakeHeapText(s.CreateUpper128ASCIIEscapedCStr()); break;
      case 'u': made = TakeHeapText(s.CreateEncodedUrl()); break;
      case 'C': made = TakeHeapText(CreateStr(a)); break;
      case 'N': made = TakeHeapText(CreateStr(a, 2)); break;
      case 'E': made = TakeHeapText(CreateStr(arg.size())); break;
      case 'V': made = TakeHeapText(CreateStr(&script)); break;
      case '+': made = TakeHeapText(ConcatStr(a, a)); break;
      case '6': made = TakeHeapText(U64ToChar(std::stoul(arg))); break;
      default: ADD_FAILURE() << "no operation " << op;
    }
  } catch (const std::bad_alloc&) {
    run.threw = true;
    made = "(null)";
  }
  Pelgc::ClearHeapFault();
  run.requests = Pelgc::GetHeapStats().requests - requests;
  if (source) {
    EXPECT_EQ(Text(*source), arg) << "the source changed";
  }
  if (std::strchr(kMade, op)) {
    EXPECT_EQ(Text(s), start) << "the source changed";
  }
  return std::strchr(kMade, op) ? made : Text(s);
}

// Rows: an operation, the string it works on (`start` in a buffer of
// `capacity` bytes, or as a new string for 0), its argument, the log of the
// operation and of the string's release, and the last 12 bytes it gives.
// The string "/p", a NUL and "=" holds no pair yet: the 16-bit text that
// the query looks for pairs in ends at the NUL.
const std::string k1022(1022, 'a'), kNul("/p\0=", 4),
    kTail(12, 'a'), kE9x4 = "%E9%E9%E9%E9";
const struct Row {
  char op;
  int capacity;
  std::string start, arg, log, result;
} kRows[] = {
    {'s', 0, "abcdef", "xy", " -xy", "xy"},
    {'s', 0, "ab", "abcdef", " -ab +7 -abcdef", "abcdef"},
    {'s', 0, "ab", "", " -ab", ""},
    {'A', 0, "ab", "cdef", " +261 -ab -abcd", "abcd"},
    {'m', 0, "ab", "h\xC3\xA9", " +4! -ab +4 -h\xC3\xA9 -h\xC3\xA9",
     "h\xC3\xA9"},
    {'o', 0, "ab", "xyz", " -ab +4 -xyz -xyz", "xyz"},
    {'=', 0, "abcdef", "xyz", " -xyz -xyz", "xyz"},
    {'k', 0, "", "10", " +10 -", ""},
    {'c', 0, "", "x", " +257 -x", "x"},
    {'a', 0, "abc", "de", " +262 -abc -abcde", "abcde"},
    {'c', 10, "", "123456789", " -123456789", "123456789"},
    {'c', 10, "", "1234567890", " +266 -123456789 -1234567890", "1234567890"},
    {'a', 10, "", "12345678", " -12345678", "12345678"},
    {'a', 10, "", "123456789", " +266 - -123456789", "123456789"},
    {'c', 1023, k1022, "b", " +1279 -" + kTail + " -" + kTail,
     kTail.substr(1) + "b"},
    {'c', 1024, k1022 + "a", "b", " +1536 -" + kTail + " -" + kTail,
     kTail.substr(1) + "b"},
    {'a', 1024, k1022.substr(1), "bc", " +1536 -" + kTail + " -" + kTail,
     kTail.substr(2) + "bc"},
    {'x', 0, "", "abc", " +257 -abc61", "abc61"},
    {'i', 0, "", "5", " +257 -" + std::string(12, '1'), "1111111011-5"},
    {'b', 0, "hello", "3", " +4! +4 -ell -ell -hello", "ell"},
    {'n', 0, "", "7", " +257 +257 -7 -007", "007"},
    {'f', 0, "", "65", " +2 -A", "A"},
    {'f', 0, "", "0", "", ""},
    {'d', 0, "", "0.5", " +4 +260 -0.5 -0.5", "0.5"},
    {'F', 0, "old", "42", " -old +257 -42", "42"},
    {'p', 0, "", "s", " +258 +257 -7 +5 --0.5 -s|07|ff|At|-", "yz|0xbeef|%|"},
    {'e', 0, "", "\xC3\xA9 ", " +4 +257 -\xE9  -%E9+", "%E9+"},
    {'h', 0, "", "\xC3\xA9", " +3 +257 -\xE9 -%E9", "%E9"},
    {'S', 0, "a b", "", " +257 +6 -a%20b -a%20b -a b", "a%20b"},
    {'L', 0, "a b", "", " +257 +4 -a b -a b -a b", "a b"},
    {'U', 0, "a\xE9", "", " +257 +5 -a%E9 -a%E9 -a\xE9", "a%E9"},
    {'u', 0, "a<", "", " +257 +5 -a%3C -a%3C -a<", "a%3C"},
    {'U', 0, std::string(100, '\xE9'), "",
     " +257 +513 -" + kE9x4 + " +301 -" + kE9x4 + " -" + kE9x4 + " -" +
         std::string(12, '\xE9'),
     kE9x4},
    {'v', 257, kNul, "\xC3\xA9",
     " +2 +3 +2 -x +3 -\xE9 -\xC3\xA9 -x +2 +2 +2 -y +2 -2 -2 -y -/p",
     kNul.substr(2) + "?x=%E9&y=2"},
    {'C', 0, "", "ab", " +3 -ab", "ab"},
    {'N', 0, "", "abc", " +3 -ab", "ab"},
    {'E', 0, "", "abcd", " +5 -", ""},
    {'V', 0, "", "h\xC3\xA9", " +4! +4 -h\xC3\xA9 -h\xC3\xA9", "h\xC3\xA9"},
    {'+', 0, "", "ab", " +5 -abab", "abab"},
    {'6', 0, "", "42", " +21 -42", "42"},
};

// One run of the row's operation, `before` receiving what `s` held first.
std::string RunRow(const Row& row, Fault& run, bool fallback = false,
                   std::string* before = nullptr) {
  VeskString s(row.capacity);
  row.capacity ? vesk_test::Put(s, row.start) : s.Set(row.start.c_str(), -1);
  if (before) *before = Text(s);
  return Apply(row.op, s, row.arg, run, fallback);
}

std::string Trace(const Row& row) {
  return std::string("operation ") + row.op + " on " +
         testing::PrintToString(row.start.substr(0, 40)) + " with " +
         testing::PrintToString(row.arg);
}

class RequestsTest : public testing::Test {
 protected:
  void SetUp() override {
    Pelgc::SetRequestObserver(OnRequest);
    Pelgc::SetReleaseObserver(OnRelease);
  }
  void TearDown() override {
    Pelgc::SetRequestObserver(nullptr);
    Pelgc::SetReleaseObserver(nullptr);
  }
  vesk_test::ScopedCodePage m_page{"windows-1252"};
};

TEST_F(RequestsTest, EachOperationMakesItsRequestsAndReleasesInOrder) {
  for (const Row& row : kRows) {
    Fault none;
    const std::string result = RunRow(row, none);
    SCOPED_TRACE(Trace(row));
    EXPECT_EQ(g_log, row.log);
    EXPECT_EQ(result.substr(result.size() < 12 ? 0 : result.size() - 12),
              row.result);
  }
}

bool IsSubsequence(const std::string& part, const std::string& whole) {
  std::size_t matched = 0;
  for (char c : whole) matched += matched < part.size() && part[matched] == c;
  return matched == part.size();
}

// What a failure must leave, as each operation documents it: a zeroed
// string (Set of a script string leaves the string as it was when its
// first request, for the UTF-8 view, fails); the string as it was; nothing
// or the whole result; or characters dropped: what was added is a
// subsequence of the output with or without the host's help, and a prefix
// of one when a request threw. Format replaces what the string held.
void ExpectFailureLeft(const Row& row, const Fault& run, std::string before,
                       std::string after, const std::string (&outputs)[2]) {
  if (std::strchr("sAmo=", row.op)) {
    const bool kept = row.op == 'A' || (row.op == 'm' && run.k == 0);
    EXPECT_EQ(after, kept ? before : "(zeroed)");
  } else if (std::strchr("kbfCNEV+6", row.op)) {
    if (after != "(null)" && after != "(zeroed)") {
      EXPECT_EQ(after, outputs[0]);
    }
  } else {
    if (row.op == 'F' || std::strchr(kMade, row.op)) before = "";
    if (after == "(null)" || after == "(zeroed)") after = "";
    ASSERT_EQ(after.rfind(before, 0), 0u) << after;
    const auto fits = [&](const std::string& out) {
      return run.threw ? out.rfind(after, 0) == 0 : IsSubsequence(after, out);
    };
    EXPECT_TRUE(fits(outputs[0]) || fits(outputs[1]))
        << testing::PrintToString(after) << " fits neither "
        << testing::PrintToString(outputs[0]) << " nor "
        << testing::PrintToString(outputs[1]);
  }
}

TEST_F(RequestsTest, EachRequestFailingLeavesADocumentedStateAndNoLeak) {
  const char* kHow[] = {"null once", "throw once", "null from then on",
                        "throw from then on"};
  for (const Row& row : kRows) {
    Fault plain, helpless;
    const std::string outputs[] = {RunRow(row, plain),
                                   RunRow(row, helpless, true)};
    for (unsigned long i = 0; i < 4 * plain.requests; ++i) {
      Fault run{i / 4,
                i % 2 ? Pelgc::HeapFault::kThrowBadAlloc
                      : Pelgc::HeapFault::kReturnNull,
                i % 4 >= 2};
      SCOPED_TRACE(Trace(row) + ", request " + std::to_string(run.k + 1) +
                   ", " + kHow[i % 4]);
      const unsigned long live = Pelgc::GetHeapStats().live;
      std::string before;
      const std::string after = RunRow(row, run, false, &before);
      EXPECT_EQ(Pelgc::GetHeapStats().live, live) << "left a block live";
      ExpectFailureLeft(row, run, before, after, outputs);
    }
  }
}

}  // namespace
