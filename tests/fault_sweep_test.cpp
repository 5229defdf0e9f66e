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
#include <type_traits>
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

Seen Take(char* text) {
  if (text == nullptr) return {};
  Seen seen{true, text, 0};
  Pelgc::SystemDelete(text);
  return seen;
}

// Runs the call under test of one run with the run's fault armed (none in
// the counting run), counting the requests and noting a std::bad_alloc.
struct Faulted {
  bool armed = false;
  unsigned long k = 0;  // 0: the first request fails
  HeapFault fault = HeapFault::kReturnNull;
  bool persistent = false;
  mutable bool threw = false;
  mutable unsigned long requests = 0;

  void operator()(const std::function<void()>& call) const {
    const unsigned long before = Pelgc::GetHeapStats().requests;
    try {
      if (armed) Pelgc::InjectHeapFault(k, fault, persistent);
      call();
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    Pelgc::ClearHeapFault();
    requests += Pelgc::GetHeapStats().requests - before;
  }
};

// What a failure must leave, as each operation documents it.
enum class After {
  kZeroed,     // the string is zeroed
  kUnchanged,  // the string is as it was
  kDropped,    // characters are dropped: what was added is a subsequence
               // of a full output, and a prefix of one when a request threw
  kWhole,      // nothing (zeroed, null), or the full result
};

// One run on the input; `before` receives what the string held first.
using Run = std::function<Seen(In in, const Faulted&, Seen* before)>;
struct Case {
  const char* name;
  After after;
  Run run;
  // kDropped: the output that a failed host call leads to (the text left
  // unconverted, a number measured short), as a second full output.
  Run fallback = nullptr;
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
#define ON(start, ...) \
  On(start, [](S& s, [[maybe_unused]] const S& source,   \
                [[maybe_unused]] In in) { __VA_ARGS__; })
#define REPLACING(...) \
  On(nullptr, [](S& s, const S&, In in) { __VA_ARGS__; }, true)

// What `make(source, in)` returns, `source` holding the input: a new
// string, or a heap text.
template <class Make>
Run Made(Make make) {
  return [=](In in, const Faulted& faulted, Seen*) {
    const S source(in.c_str());
    const Seen was = Look(source);
    std::unique_ptr<S> made;
    char* text = nullptr;
    faulted([&] {
      if constexpr (std::is_same_v<decltype(make(source, in)), char*>) {
        text = make(source, in);
      } else {
        made.reset(make(source, in));
      }
    });
    EXPECT_EQ(Look(source), was);
    return made ? Look(*made) : Take(text);
  };
}
#define MADE(...) \
  Made([]([[maybe_unused]] const S& source, [[maybe_unused]] In in) { \
    return __VA_ARGS__;                                            \
  })

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

// The four escaped copies' texts, a null one as nothing.
S* EscapedCopies(const S& source) {
  std::string all = Take(source.CreateEscapedCStr(true)).bytes;
  all += Take(source.CreateEscapedCStr(false)).bytes;
  all += Take(source.CreateUpper128ASCIIEscapedCStr()).bytes;
  all += Take(source.CreateEncodedUrl()).bytes;
  return new S(all.c_str());
}

marlo::String* Vm(In in) {
  static std::unique_ptr<marlo::String> vm;
  vm = std::make_unique<marlo::String>(in.c_str());
  return vm.get();
}

std::vector<Case> Cases() {
  const After kZeroed = After::kZeroed, kDropped = After::kDropped,
              kWhole = After::kWhole, kUnchanged = After::kUnchanged;
  return {
      {"VeskString(text)", kZeroed, MADE(new S(in.c_str()))},
      {"VeskString(marlo::String*)", kZeroed, MADE(new S(Vm(in)))},
      {"VeskString(n + 1)", kZeroed, MADE(new S(int(in.size()) + 1))},
      {"VeskString(const VeskString&)", kZeroed, MADE(new S(source))},
      {"Set(text, -1)", kZeroed, ON("ab", s.Set(in.c_str(), -1))},
      {"Set(text, n / 2)", kZeroed,
       ON("ab", s.Set(in.c_str(), int(in.size()) / 2))},
      // The UTF-8 view comes first.
      {"Set(marlo::String*)", kZeroed, ON("ab", s.Set(Vm(in))), nullptr, 1},
      {"Copy", kZeroed, ON("ab", s.Copy(source))},
      {"operator=(VeskString)", kZeroed, ON("ab", s = source)},
      {"operator=(text)", kZeroed, ON("ab", s = in.c_str())},
      {"AppendChar, AppendThreeChars, AppendHexByte", kDropped,
       ON("ab", for (char c : in) s.AppendChar(c);
          if (in.size() >= 3) s.AppendThreeChars(in.c_str());
          for (char c : in) s.AppendHexByte(c))},
      {"AppendString(text)", kUnchanged, ON("ab", s.AppendString(in.c_str()))},
      {"AppendString(text, n / 2)", kUnchanged,
       ON("ab", s.AppendString(in.c_str(), int(in.size()) / 2))},
      {"AppendInt", kDropped,
       ON(nullptr, for (int radix : {2, 10, 16, 36}) {
         s.AppendInt(-1234567890123, radix);
       })},
      {"AppendNDigits", kDropped,
       ON(nullptr, s.AppendNDigits(-int(in.size()) - 7, 12)),
       ON(nullptr, s.AppendString("000000000000");
          s.AppendInt(-long(in.size()) - 7, 10))},
      {"AppendDouble", kDropped,
       ON(nullptr, s.AppendDouble(-1.5e-7 * (in.size() + 1)))},
      {"AppendFormat", kDropped, ON(nullptr, Formatted(s, in, false)),
       ON(nullptr, Formatted(s, in, true))},
      {"Format", kDropped, REPLACING(s.Format("%s|%2|%f", in.c_str(), 7, .5)),
       REPLACING(s.Format("%s|00%d|%f", in.c_str(), 7, .5))},
      {"SubString", kWhole,
       MADE(new S(source.SubString(1, int(in.size()) / 2)))},
      {"CharFromCode", kWhole, MADE(new S(S::CharFromCode(in.size() + 65.5)))},
      {"EncodeString converted", kDropped,
       ON("a=", s.EncodeString(in.c_str(), 6, true, true)),
       ON("a=", s.EncodeString(in.c_str(), 5, true, true))},
      {"EncodeString", kDropped,
       ON("a=", s.EncodeString(in.c_str(), 5, false, false))},
      {"EncodeStringHighAscii", kDropped,
       ON("a=", s.EncodeStringHighAscii(in.c_str(), 6)),
       ON("a=", s.EncodeStringHighAscii(in.c_str(), 5))},
      {"the escaped copies", kDropped, MADE(EscapedCopies(source))},
      {"EncodeVariables", kDropped, ON("/p", EncodeVariables(s, in, true)),
       ON("/p", EncodeVariables(s, in, false))},
      {"CreateStr(text)", kWhole, MADE(CreateStr(in.c_str()))},
      {"CreateStr(n)", kWhole, MADE(CreateStr(in.size()))},
      {"CreateStr(text, n)", kWhole, MADE(CreateStr(in.c_str(), in.size()))},
      {"CreateStr(marlo::String*)", kWhole, MADE(CreateStr(Vm(in)))},
      {"ConcatStr", kWhole, MADE(ConcatStr(in.c_str(), in.c_str()))},
      {"U64ToChar", kWhole, MADE(U64ToChar(in.size() * 1000000007ULL))},
  };
}

bool IsSubsequence(const std::string& part, const std::string& whole) {
  std::size_t matched = 0;
  for (char c : whole) matched += matched < part.size() && part[matched] == c;
  return matched == part.size();
}

bool IsPrefix(const std::string& part, const std::string& whole) {
  return whole.compare(0, part.size(), part) == 0;
}

// `outputs`: what the operation gives without a fault, then its fallback.
void ExpectFailureLeft(const Case& c, const Faulted& run, const Seen& before,
                       const Seen& after, const std::vector<Seen>& outputs) {
  if (c.after == After::kZeroed) {
    EXPECT_TRUE(after == (run.k < c.untouched ? before : Seen{}));
  } else if (c.after == After::kUnchanged) {
    EXPECT_TRUE(after == before);
  } else if (c.after == After::kWhole) {
    EXPECT_TRUE(!after.text || after == outputs[0]);
  } else {
    ASSERT_TRUE(IsPrefix(before.bytes, after.bytes)) << after.bytes;
    const std::string added = after.bytes.substr(before.bytes.size());
    bool explained = false;
    for (const Seen& output : outputs) {
      const std::string full = output.bytes.substr(before.bytes.size());
      explained |= run.threw ? IsPrefix(added, full)
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
      std::vector<Seen> outputs{c.run(in, counting, &before)};
      if (c.fallback) outputs.push_back(c.fallback(in, Faulted(), &before));
      for (unsigned long k = 0; k < counting.requests; ++k) {
        for (HeapFault fault :
             {HeapFault::kReturnNull, HeapFault::kThrowBadAlloc}) {
          for (bool persistent : {false, true}) {
            SCOPED_TRACE(testing::Message()
                         << c.name << " on " << in.size() << " bytes, request "
                         << k + 1 << " of " << counting.requests
                         << (fault == HeapFault::kReturnNull ? ", null"
                                                             : ", throw")
                         << (persistent ? " from then on" : " once"));
            const unsigned long live = Pelgc::GetHeapStats().live;
            const Faulted run{true, k, fault, persistent};
            ExpectFailureLeft(c, run, before, c.run(in, run, &before),
                              outputs);
            ++faults;
            if (Pelgc::GetHeapStats().live != live) {
              ++leaks;
              ADD_FAILURE() << "left a block live";
            }
          }
        }
      }
    }
  }
  std::printf("fault sweep: %zu operations swept on %zu inputs, %lu faults "
              "injected, %lu leaks found\n",
              cases.size(), std::size(kInputs), faults, leaks);
}

}  // namespace
