// Every operation of the module that can allocate, run once to count its
// heap requests and then again with each of them failing in turn: returning
// null and throwing std::bad_alloc, failing that request only and every one
// from it on. Only std::bad_alloc may pass; what is left must be a valid
// string in the state that the operation names for a failure; and no block
// may stay live once everything is released.
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "host/object_model.h"
#include "host/vm_string.h"
#include "support.h"

namespace {

using Pelgc::HeapFault;
using S = VeskString;
using In = const std::string&;

// What an operation left: a string (`text` false when zeroed) or a heap
// text (`text` false for null).
struct Seen {
  bool text = false;
  std::string bytes;
  int capacity = 0;
  bool operator==(const Seen& o) const {
    return text == o.text && bytes == o.bytes && capacity == o.capacity;
  }
  friend void PrintTo(const Seen& seen, std::ostream* out) {
    *out << (seen.text ? testing::PrintToString(seen.bytes) : "none") << "/"
         << seen.capacity;
  }
};

Seen Look(const S& s) {
  if (s.Text() == nullptr) {
    EXPECT_EQ(std::make_pair(s.Length(), s.Capacity()), std::make_pair(0, 0));
  } else {
    EXPECT_GE(s.Length(), 0);
    EXPECT_LT(s.Length(), s.Capacity());
    EXPECT_EQ(s.Text()[s.Length()], '\0') << s.Length();
  }
  return {s.Text() != nullptr, vesk_test::Bytes(s), s.Capacity()};
}

// A heap text, which it releases.
Seen Look(char* text) {
  return {text != nullptr, text ? vesk_test::TakeHeapText(text) : "", 0};
}

// The fault of one run (none, as in the counting run, by default), with
// what the run saw: its requests, and whether a std::bad_alloc passed.
struct Fault {
  unsigned long k = ~0UL;  // 0: the first request fails
  HeapFault fault = HeapFault::kReturnNull;
  bool persistent = false, threw = false;
  unsigned long requests = 0;
};

// What a failure must leave, as each operation documents it: the string
// zeroed; the string as it was; characters dropped (what was added is a
// subsequence of a full output, and a prefix of one when a request threw);
// or nothing (zeroed, null) or the full result.
enum After { kZeroed, kUnchanged, kDropped, kWhole };

// An operation, named by its call: `act(s, source, in)` with `s` holding
// `start` (the input when null) and `source` the input, which must stay as
// it was. kMade: it makes a new string or a heap text, which `act` gives;
// kReplacing: what `s` held first does not count.
enum Kind { kOn, kReplacing, kMade };
struct Op {
  const char* call = nullptr;
  const char* start = nullptr;
  Kind kind = kOn;
  std::function<Seen(S& s, const S& source, In in, bool fallback)> act;
};
#define CALL(...) #__VA_ARGS__
// Each action uses only some of its parameters.
#define ACT(...)                                              \
  []([[maybe_unused]] S& s, [[maybe_unused]] const S& source, \
     [[maybe_unused]] In in,                                  \
     [[maybe_unused]] bool fallback) -> Seen { __VA_ARGS__; }
#define ON(start, ...) \
  Op { CALL(__VA_ARGS__), start, kOn, ACT(__VA_ARGS__; return {}) }
#define REPLACING(...) \
  Op { CALL(__VA_ARGS__), nullptr, kReplacing, ACT(__VA_ARGS__; return {}) }
#define MADE(...) \
  Op { CALL(__VA_ARGS__), nullptr, kMade, ACT(return Look(__VA_ARGS__)) }

// One run of `op` on the input with `run`'s fault armed, `before`
// receiving what `s` held first. `fallback`: the call gives the output
// that a failed host call leads to (the text left unconverted, a number
// measured short), which a failure may also leave.
Seen RunOp(const Op& op, In in, Fault& run, Seen* before,
           bool fallback = false) {
  S s(op.start != nullptr ? op.start : in.c_str());
  const S source(in.c_str());
  const Seen was = Look(source);
  *before = op.kind == kOn ? Look(s) : Seen{};
  Seen made;
  const unsigned long requests = Pelgc::GetHeapStats().requests;
  Pelgc::InjectHeapFault(run.k, run.fault, run.persistent);
  try {
    made = op.act(s, source, in, fallback);
  } catch (const std::bad_alloc&) {
    run.threw = true;
  }
  Pelgc::ClearHeapFault();
  run.requests += Pelgc::GetHeapStats().requests - requests;
  EXPECT_EQ(Look(source), was);
  return op.kind == kMade ? made : Look(s);
}

struct Case {
  After after;
  Op op;
  // kZeroed: leading requests whose failure leaves the string as it was.
  unsigned long untouched = 0;
};

// "00%d" is what '%2' gives when its measure gets no block.
void Formatted(S& s, In in, bool padded) {
  s.AppendFormat(padded ? "%s|%d|%x|%c%b|%f|00%d|%3|%p|%%|%q%"
                        : "%s|%d|%x|%c%b|%f|%2|%3|%p|%%|%q%",
                 in.c_str(), -42, 255, 'A', 1, -0.5, 7, "xyz",
                 reinterpret_cast<void*>(0xBEEF));
}

void EncodeVariables(S& s, In in, bool convert) {
  auto object = ScriptObject::Create();
  object->SetVariable("n1", ScriptAtom::FromString(in.c_str()));
  object->SetVariable("$x", ScriptAtom::FromNumber(1));
  object->SetVariable("n 2", ScriptAtom::FromNumber(-2.5));
  CorePlayer player;
  player.convertToCodePage = convert;
  s.EncodeVariables(&player, object, 6, false);
}

// A VM string holding the input, which lives until the next one is made.
marlo::String* Vm(In in) {
  static std::unique_ptr<marlo::String> vm;
  return (vm = std::make_unique<marlo::String>(in.c_str())).get();
}

std::vector<Case> Cases() {
  return {
      {kZeroed, MADE(S(in.c_str()))},
      {kZeroed, MADE(S(Vm(in)))},
      {kZeroed, MADE(S(int(in.size()) + 1))},
      {kZeroed, MADE(S(source))},
      {kZeroed, ON("ab", s.Set(in.c_str(), -1))},
      {kZeroed, ON("ab", s.Set(in.c_str(), int(in.size()) / 2))},
      {kZeroed, ON("ab", s.Set(Vm(in))), 1},  // the UTF-8 view first
      {kZeroed, ON("ab", s.Copy(source))},
      {kZeroed, ON("ab", s = source)},
      {kZeroed, ON("ab", s = in.c_str())},
      {kDropped,
       ON(
           "ab", for (std::size_t i = 0; i < in.size();
                      ++i) { s.AppendChar(in[i]), s.AppendHexByte(in[i]); })},
      {kDropped,
       ON("ab", s.AppendThreeChars(in.size() >= 3 ? in.c_str() : "xyz"))},
      {kUnchanged, ON("ab", s.AppendString(in.c_str()))},
      {kUnchanged, ON("ab", s.AppendString(in.c_str(), int(in.size()) / 2))},
      {kDropped, ON(nullptr, s.AppendInt(-1234567890123, 2))},
      {kDropped, ON(nullptr, s.AppendInt(-1234567890123, 10))},  // its own path
      {kDropped,
       ON(nullptr, fallback ? s.AppendString("000000000000"),
          s.AppendInt(-long(in.size()) - 7, 10)
                            : s.AppendNDigits(-int(in.size()) - 7, 12))},
      {kDropped, ON(nullptr, s.AppendDouble(-1.5e-7 * (in.size() + 1)))},
      {kDropped, ON(nullptr, Formatted(s, in, fallback))},
      {kDropped, REPLACING(s.Format(fallback ? "%s|00%d|%f" : "%s|%2|%f",
                                    in.c_str(), 7, .5))},
      {kWhole, MADE(source.SubString(1, int(in.size()) / 2))},
      {kWhole, MADE(S::CharFromCode(in.size() + 65.5))},
      {kDropped,
       ON("a=", s.EncodeString(in.c_str(), 6 - fallback, true, true))},
      {kDropped, ON("a=", s.EncodeString(in.c_str(), 5, false, false))},
      {kDropped, ON("a=", s.EncodeStringHighAscii(in.c_str(), 6 - fallback))},
      {kDropped, MADE(source.CreateEscapedCStr(true))},
      {kDropped, MADE(source.CreateEscapedCStr(false))},
      {kDropped, MADE(source.CreateUpper128ASCIIEscapedCStr())},
      {kDropped, MADE(source.CreateEncodedUrl())},
      {kDropped, ON("/p", EncodeVariables(s, in, !fallback))},
      {kWhole, MADE(CreateStr(in.c_str()))},
      {kWhole, MADE(CreateStr(in.size()))},
      {kWhole, MADE(CreateStr(in.c_str(), in.size()))},
      {kWhole, MADE(CreateStr(Vm(in)))},
      {kWhole, MADE(ConcatStr(in.c_str(), in.c_str()))},
      {kWhole, MADE(U64ToChar(in.size() * 1000000007ULL))},
  };
}

bool IsSubsequence(const std::string& part, const std::string& whole) {
  std::size_t matched = 0;
  for (char c : whole) matched += matched < part.size() && part[matched] == c;
  return matched == part.size();
}

// `outputs`: what the operation gives without a fault, and its fallback.
void ExpectFailureLeft(const Case& c, const Fault& run, const Seen& before,
                       const Seen& after, const std::vector<Seen>& outputs) {
  if (c.after == kWhole) {
    if (after.text) {
      EXPECT_EQ(after, outputs[0]);
    }
  } else if (c.after != kDropped) {
    EXPECT_EQ(after,
              c.after == kZeroed && run.k >= c.untouched ? Seen{} : before);
  } else {
    ASSERT_EQ(after.bytes.rfind(before.bytes, 0), 0u) << after.bytes;
    const auto fits = [&](const Seen& out) {  // `out` begins with `before`
      return run.threw ? out.bytes.rfind(after.bytes, 0) == 0  // a prefix
                       : IsSubsequence(after.bytes, out.bytes);
    };
    EXPECT_TRUE(fits(outputs[0]) || fits(outputs[1]))
        << testing::PrintToString(after) << " fits neither "
        << testing::PrintToString(outputs[0]) << " nor "
        << testing::PrintToString(outputs[1]);
  }
}

TEST(FaultSweepTest, EveryAllocatingOperationFailsCleanly) {
  std::string bytes;  // every byte value but 0, long enough to grow twice
  for (int i = 0; i < 1500; ++i) bytes += static_cast<char>(1 + i % 255);
  // UTF-8, each 3-byte character two or more Shift-JIS ones when read so.
  std::string japanese;
  for (int i = 0; i < 100; ++i)
    japanese += "\xE6\x97\xA5\xE8\xAA\x9E\xE3\x83\x86\xE3\x80\x81 ";
  const std::pair<const char*, std::string> kInputs[] = {
      {"windows-1252", ""}, {"windows-1252", bytes}, {"shift_jis", japanese}};
  const std::vector<Case> cases = Cases();
  const HeapFault kThrow = HeapFault::kThrowBadAlloc;
  const char* kHow[] = {"null once", "throw once", "null from then on",
                        "throw from then on"};
  unsigned long faults = 0, leaks = 0;
  for (const auto& [codePage, in] : kInputs) {
    vesk_test::ScopedCodePage page(codePage);
    for (const Case& c : cases) {
      Seen before;
      Fault counting, plain;
      const std::vector<Seen> outputs{RunOp(c.op, in, counting, &before),
                                      RunOp(c.op, in, plain, &before, true)};
      // Four runs a request: null, then std::bad_alloc; once, then on.
      for (unsigned long i = 0; i < 4 * counting.requests; ++i, ++faults) {
        Fault run{i / 4, i % 2 ? kThrow : HeapFault::kReturnNull, i % 4 >= 2};
        SCOPED_TRACE(testing::Message()
                     << c.op.call << " on " << in.size() << " bytes, request "
                     << run.k + 1 << ", " << kHow[i % 4]);
        const unsigned long live = Pelgc::GetHeapStats().live;
        const Seen after = RunOp(c.op, in, run, &before);
        ExpectFailureLeft(c, run, before, after, outputs);
        leaks += Pelgc::GetHeapStats().live != live;
        EXPECT_EQ(Pelgc::GetHeapStats().live, live) << "left a block live";
      }
    }
  }
  std::printf(
      "fault sweep: %zu operations swept on %zu inputs, %lu faults "
      "injected, %lu leaks found\n",
      cases.size(), std::size(kInputs), faults, leaks);
}

}  // namespace
