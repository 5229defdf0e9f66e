// Every operation of the module that can allocate, run once to count its
// heap requests and then again with each of them failing in turn: returning
// null and throwing std::bad_alloc, failing that request only and every one
// from it on. Only std::bad_alloc may pass; what is left must be a valid
// string in the state that the operation names for a failure; and no block
// may stay live once everything is released.
#include <climits>
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
};

Seen Look(const S& s) {
  const bool shared = s.Text() == vesk_test::SharedEmpty();
  EXPECT_TRUE(s.Text() == nullptr ? s.Length() + s.Capacity() == 0
              : shared            ? s.Length() == 0 && s.Capacity() == 1
                       : s.Length() >= 0 && s.Length() < s.Capacity() &&
                             s.Text()[s.Length()] == '\0');
  return {s.Text() != nullptr, vesk_test::Bytes(s), s.Capacity()};
}

// A heap text, which it releases.
Seen Look(char* text) {
  return {text != nullptr, text ? vesk_test::TakeHeapText(text) : "", 0};
}

// Runs the call under test of one run with the run's fault armed (one past
// any request in the counting run), counting the requests and noting a
// std::bad_alloc.
struct Faulted {
  unsigned long k = ULONG_MAX;  // 0: the first request fails
  HeapFault fault = HeapFault::kReturnNull;
  bool persistent = false;
  mutable bool threw = false;
  mutable unsigned long requests = 0;

  void operator()(const std::function<void()>& call) const {
    const unsigned long before = Pelgc::GetHeapStats().requests;
    Pelgc::InjectHeapFault(k, fault, persistent);
    try {
      call();
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    Pelgc::ClearHeapFault();
    requests += Pelgc::GetHeapStats().requests - before;
  }
};

// What a failure must leave, as each operation documents it: the string
// zeroed; the string as it was; characters dropped (what was added is a
// subsequence of a full output, and a prefix of one when a request threw);
// or nothing (zeroed, null) or the full result.
enum After { kZeroed, kUnchanged, kDropped, kWhole };

// An operation, named by its call; one run of it on the input, `before`
// receiving what the string held first.
using Run = std::function<Seen(In in, const Faulted&, Seen* before)>;
struct Op {
  const char* call = nullptr;
  Run run;
};

struct Case {
  After after;
  Op op;
  // kDropped: the output that a failed host call leads to (the text left
  // unconverted, a number measured short), as a second full output.
  Op fallback = {};
  // kZeroed: leading requests whose failure leaves the string as it was.
  unsigned long untouched = 0;
};

// `act(s, source, in)` on a string `s` holding `start` (the input when
// null; nothing that counts when `replaces`), `source` holding the input.
template <class Act>
Run On(const char* start, Act act, bool replaces = false) {
  return [=](In in, const Faulted& faulted, Seen* before) {
    S s(start != nullptr ? start : in.c_str());
    const S source(in.c_str());
    *before = replaces ? Seen{} : Look(s);
    faulted([&] { act(s, source, in); });
    return Look(s);
  };
}
#define ON(start, ...)                                                  \
  Op{#__VA_ARGS__, On(start, [](S& s, [[maybe_unused]] const S& source, \
                                [[maybe_unused]] In in) { __VA_ARGS__; })}
#define REPLACING(...)                                                \
  Op{#__VA_ARGS__,                                                    \
     On(nullptr, [](S& s, const S&, In in) { __VA_ARGS__; }, true)}

// What `make(source, in)` gives, `source` holding the input: a new string
// or a heap text; `source` must stay as it was.
template <class Make>
Run Made(Make make) {
  return [=](In in, const Faulted& faulted, Seen*) {
    const S source(in.c_str());
    const Seen was = Look(source);
    Seen made;
    faulted([&] { made = Look(make(source, in)); });
    EXPECT_TRUE(Look(source) == was);
    return made;
  };
}
#define MADE(...)                                                         \
  Op{#__VA_ARGS__, Made([]([[maybe_unused]] const S& source,              \
                           [[maybe_unused]] In in) { return __VA_ARGS__; })}

void Formatted(S& s, In in, bool padded) {
  // "00%d" is what '%2' gives when its measure gets no block.
  const char* format = padded ? "%s|%d|%x|%c%b|%f|00%d|%3|%p|%%|%q%"
                              : "%s|%d|%x|%c%b|%f|%2|%3|%p|%%|%q%";
  s.AppendFormat(format, in.c_str(), -42, 255, 'A', 1, -0.5, 7, "xyz",
                 reinterpret_cast<void*>(0xBEEF));
}

void EncodeVariables(S& s, In in, bool convert) {
  auto object = ScriptObject::Create();
  object->SetVariable("n1", ScriptAtom::FromString(in.c_str()));
  object->SetVariable("$x", ScriptAtom::FromNumber(1));
  object->SetVariable("n 2", ScriptAtom::FromNumber(-2.5));
  object->SetVariable("n3", ScriptAtom::FromBool(true));
  CorePlayer player;
  player.convertToCodePage = convert;
  s.EncodeVariables(&player, object, 6, false);
}

marlo::String* Vm(In in) {
  static std::unique_ptr<marlo::String> vm;
  vm = std::make_unique<marlo::String>(in.c_str());
  return vm.get();
}

std::vector<Case> Cases() {
  return {
      {kZeroed, MADE(S(in.c_str()))}, {kZeroed, MADE(S(Vm(in)))},
      {kZeroed, MADE(S(int(in.size()) + 1))}, {kZeroed, MADE(S(source))},
      {kZeroed, ON("ab", s.Set(in.c_str(), -1))},
      {kZeroed, ON("ab", s.Set(in.c_str(), int(in.size()) / 2))},
      {kZeroed, ON("ab", s.Set(Vm(in))), {}, 1},  // the UTF-8 view first
      {kZeroed, ON("ab", s.Copy(source))}, {kZeroed, ON("ab", s = source)},
      {kZeroed, ON("ab", s = in.c_str())},
      {kDropped, ON("ab", for (char c : in) s.AppendChar(c);
                    if (in.size() >= 3) s.AppendThreeChars(in.c_str());
                    for (char c : in) s.AppendHexByte(c))},
      {kUnchanged, ON("ab", s.AppendString(in.c_str()))},
      {kUnchanged, ON("ab", s.AppendString(in.c_str(), int(in.size()) / 2))},
      {kDropped, ON(nullptr, for (int radix : {2, 10, 16, 36}) {
                   s.AppendInt(-1234567890123, radix);
                 })},
      {kDropped, ON(nullptr, s.AppendNDigits(-int(in.size()) - 7, 12)),
       ON(nullptr, s.AppendString("000000000000");
          s.AppendInt(-long(in.size()) - 7, 10))},
      {kDropped, ON(nullptr, s.AppendDouble(-1.5e-7 * (in.size() + 1)))},
      {kDropped, ON(nullptr, Formatted(s, in, false)),
       ON(nullptr, Formatted(s, in, true))},
      {kDropped, REPLACING(s.Format("%s|%2|%f", in.c_str(), 7, .5)),
       REPLACING(s.Format("%s|00%d|%f", in.c_str(), 7, .5))},
      {kWhole, MADE(source.SubString(1, int(in.size()) / 2))},
      {kWhole, MADE(S::CharFromCode(in.size() + 65.5))},
      {kDropped, ON("a=", s.EncodeString(in.c_str(), 6, true, true)),
       ON("a=", s.EncodeString(in.c_str(), 5, true, true))},
      {kDropped, ON("a=", s.EncodeString(in.c_str(), 5, false, false))},
      {kDropped, ON("a=", s.EncodeStringHighAscii(in.c_str(), 6)),
       ON("a=", s.EncodeStringHighAscii(in.c_str(), 5))},
      {kDropped, MADE(source.CreateEscapedCStr(true))},
      {kDropped, MADE(source.CreateEscapedCStr(false))},
      {kDropped, MADE(source.CreateUpper128ASCIIEscapedCStr())},
      {kDropped, MADE(source.CreateEncodedUrl())},
      {kDropped, ON("/p", EncodeVariables(s, in, true)),
       ON("/p", EncodeVariables(s, in, false))},
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

// `outputs`: what the operation gives without a fault, then its fallback.
void ExpectFailureLeft(const Case& c, const Faulted& run, const Seen& before,
                       const Seen& after, const std::vector<Seen>& outputs) {
  if (c.after == kWhole) {
    EXPECT_TRUE(!after.text || after == outputs[0]);
  } else if (c.after != kDropped) {
    EXPECT_TRUE(after == (c.after == kZeroed && run.k >= c.untouched ? Seen{}
                                                                     : before));
  } else {
    ASSERT_EQ(after.bytes.rfind(before.bytes, 0), 0u) << after.bytes;
    const std::string added = after.bytes.substr(before.bytes.size());
    bool explained = false;
    for (const Seen& output : outputs) {
      const std::string full = output.bytes.substr(before.bytes.size());
      explained |= run.threw ? full.rfind(added, 0) == 0  // a prefix
                             : IsSubsequence(added, full);
    }
    EXPECT_TRUE(explained) << "added: " << added;
  }
}

TEST(FaultSweepTest, EveryAllocatingOperationFailsCleanly) {
  std::string bytes;  // every byte value but 0, long enough to grow twice
  for (int i = 0; i < 1500; ++i) bytes += static_cast<char>(1 + i % 255);
  std::string japanese;  // UTF-8, each 3-byte character two or more
  for (int i = 0; i < 40; ++i) {  // Shift-JIS characters when read as such
    japanese += "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE3\x83\x86"
                "\xE3\x82\xAD\xE3\x82\xB9\xE3\x83\x88\xE3\x80\x81 ";
  }
  const std::pair<const char*, std::string> kInputs[] = {
      {"windows-1252", ""}, {"windows-1252", "a b&c"},
      {"windows-1252", bytes}, {"shift_jis", japanese}};
  const std::vector<Case> cases = Cases();
  unsigned long faults = 0, leaks = 0;
  for (const auto& [codePage, in] : kInputs) {
    vesk_test::ScopedCodePage page(codePage);
    for (const Case& c : cases) {
      Seen before;
      const Faulted counting;
      std::vector<Seen> outputs{c.op.run(in, counting, &before)};
      if (c.fallback.run) outputs.push_back(c.fallback.run(in, {}, &before));
      // Four runs a request: null, then std::bad_alloc; once, then on.
      const HeapFault kThrow = HeapFault::kThrowBadAlloc;
      for (unsigned long i = 0; i < 4 * counting.requests; ++i, ++faults) {
        const Faulted run{i / 4, i % 2 ? kThrow : HeapFault::kReturnNull,
                          i % 4 >= 2};
        SCOPED_TRACE(testing::Message()
                     << c.op.call << " on " << in.size() << " bytes, request "
                     << run.k + 1 << " of " << counting.requests
                     << (i % 2 ? ", throw" : ", null")
                     << (run.persistent ? " from then on" : " once"));
        const unsigned long live = Pelgc::GetHeapStats().live;
        ExpectFailureLeft(c, run, before, c.op.run(in, run, &before), outputs);
        const bool leaked = Pelgc::GetHeapStats().live != live;
        leaks += leaked;
        EXPECT_FALSE(leaked) << "left a block live";
      }
    }
  }
  std::printf("fault sweep: %zu operations swept on %zu inputs, %lu faults "
              "injected, %lu leaks found\n",
              cases.size(), std::size(kInputs), faults, leaks);
}

}  // namespace
