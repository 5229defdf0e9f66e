// Every public operation that can allocate, and every host service that the
// module calls, run with each of its heap requests failing in turn (see
// SweepHeapFaults). Only std::bad_alloc may pass; what the operation leaves
// must be a valid string in the state its documentation names for a
// failure; and no block may stay live once everything is released.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "host/object_model.h"
#include "host/vm_string.h"
#include "test_support.h"

namespace {

using vesk_test::FaultedRun;

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
void PrintTo(const Seen& s, std::ostream* os) {
  *os << (s.text ? '"' + s.bytes + '"' : "(none)") << ", capacity "
      << s.capacity;
}

Seen Look(const VeskString& s) {
  vesk_test::ExpectValidState(s);
  return {s.Text() != nullptr, vesk_test::Bytes(s), s.Capacity()};
}

Seen Take(char* text) {
  if (text == nullptr) return {};
  Seen seen{true, text, 0};
  Pelgc::SystemDelete(text);
  return seen;
}

// What a failure must leave, as each operation documents it.
enum class After {
  kZeroed,     // the string is zeroed
  kUnchanged,  // the string is as it was
  kDropped,    // characters are dropped: what was added is a subsequence
               // of a full output, and a prefix of one when a request threw
  kWhole,      // nothing (zeroed, null), or the full result
};

// The arguments of an operation: the string under test (starting from a
// text of the case's choice), the input as a string (never changed) and
// as C text.
struct Ctx {
  VeskString& s;
  const VeskString& source;
  const std::string& in;
  const char* text() const { return in.c_str(); }
  int size() const { return static_cast<int>(in.size()); }
};

using Run = std::function<Seen(const std::string& in, const FaultedRun&,
                               Seen* before)>;

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

// Runs `body(ctx)` and checks that the source stayed as it was.
template <class Body>
Seen WithContext(const char* start, const std::string& in, Body body) {
  VeskString s(start != nullptr ? start : in.c_str());
  const VeskString source(in.c_str());
  const Seen was = Look(source);
  const Seen seen = body(Ctx{s, source, in});
  EXPECT_EQ(Look(source), was);
  return seen;
}

// `act(ctx)` on a string holding `start`, or the input when it is null;
// with `replaces`, what it held does not count as its start.
template <class Act>
Run On(const char* start, Act act, bool replaces = false) {
  return [=](const std::string& in, const FaultedRun& faulted, Seen* before) {
    return WithContext(start, in, [&](const Ctx& c) {
      *before = replaces ? Seen{} : Look(c.s);
      faulted([&] { act(c); });
      return Look(c.s);
    });
  };
}

// The string that `make(ctx)` returns from `new`.
template <class Make>
Run Made(Make make) {
  return [=](const std::string& in, const FaultedRun& faulted, Seen*) {
    return WithContext("", in, [&](const Ctx& c) {
      std::unique_ptr<VeskString> made;
      faulted([&] { made.reset(make(c)); });
      return made != nullptr ? Look(*made) : Seen{};
    });
  };
}

// The heap text that `make(ctx)` hands out.
template <class Make>
Run Handed(Make make) {
  return [=](const std::string& in, const FaultedRun& faulted, Seen*) {
    return WithContext("", in, [&](const Ctx& c) {
      char* text = nullptr;
      faulted([&] { text = make(c); });
      return Take(text);
    });
  };
}

void Formatted(const Ctx& c, bool replace, bool padded) {
  // "00%d" is what '%2' gives when its measure gets no block.
  const char* format = padded ? "%s|%d|%x|%c%b|%f|00%d|%3|%p|%%|%q%"
                              : "%s|%d|%x|%c%b|%f|%2|%3|%p|%%|%q%";
  void* p = reinterpret_cast<void*>(0xBEEF);
  if (replace) {
    c.s.Format(format, c.text(), -42, 255, 'A', 1, -0.5, 7, "xyz", p);
  } else {
    c.s.AppendFormat(format, c.text(), -42, 255, 'A', 1, -0.5, 7, "xyz", p);
  }
}

void EncodeVariables(const Ctx& c, bool convert) {
  auto object = ScriptObject::Create();
  object->SetVariable("n1", ScriptAtom::FromString(c.text()));
  object->SetVariable("$x", ScriptAtom::FromNumber(1));
  object->SetVariable("n 2", ScriptAtom::FromNumber(-2.5));
  object->SetVariable("n3", ScriptAtom::FromBool(true));
  CorePlayer player;
  player.convertToCodePage = convert;
  c.s.EncodeVariables(&player, object, 6, false);
}

std::vector<Case> Cases() {
  using S = VeskString;
  using C = const Ctx&;
  const char* ab = "ab";
  return {
      {"VeskString(const char*)", After::kZeroed,
       Made([](C c) { return new S(c.text()); })},
      {"VeskString(marlo::String*)", After::kZeroed, Made([](C c) {
         marlo::String vm(c.text());
         return new S(&vm);
       })},
      {"VeskString(int)", After::kZeroed,
       Made([](C c) { return new S(c.size() + 1); })},
      {"VeskString(const VeskString&)", After::kZeroed,
       Made([](C c) { return new S(c.source); })},
      {"Set(text, -1)", After::kZeroed,
       On(ab, [](C c) { c.s.Set(c.text(), -1); })},
      {"Set(text, n)", After::kZeroed,
       On(ab, [](C c) { c.s.Set(c.text(), c.size() / 2); })},
      {"Set(marlo::String*)", After::kZeroed, On(ab, [](C c) {
         marlo::String vm(c.text());
         c.s.Set(&vm);
       }), nullptr, 1},  // the UTF-8 view comes first
      {"Copy", After::kZeroed, On(ab, [](C c) { c.s.Copy(c.source); })},
      {"operator=(VeskString)", After::kZeroed,
       On(ab, [](C c) { c.s = c.source; })},
      {"operator=(text)", After::kZeroed, On(ab, [](C c) { c.s = c.text(); })},
      {"AppendChar", After::kDropped, On(ab, [](C c) {
         for (char ch : c.in) c.s.AppendChar(ch);
       })},
      {"AppendString(text)", After::kUnchanged,
       On(ab, [](C c) { c.s.AppendString(c.text()); })},
      {"AppendString(text, n)", After::kUnchanged,
       On(ab, [](C c) { c.s.AppendString(c.text(), c.size() / 2); })},
      {"AppendThreeChars", After::kDropped, On(ab, [](C c) {
         for (int i = 0; i + 3 <= c.size(); i += 3) {
           c.s.AppendThreeChars(c.text() + i);
         }
       })},
      {"AppendHexByte", After::kDropped, On(ab, [](C c) {
         for (char ch : c.in) c.s.AppendHexByte(static_cast<unsigned char>(ch));
       })},
      {"AppendInt", After::kDropped, On(nullptr, [](C c) {
         for (int radix : {2, 10, 16, 36}) c.s.AppendInt(-1234567890123, radix);
       })},
      {"AppendNDigits", After::kDropped,
       On(nullptr, [](C c) { c.s.AppendNDigits(-c.size() - 7, 12); }),
       On(nullptr, [](C c) {
         c.s.AppendString("000000000000");
         c.s.AppendInt(-c.size() - 7, 10);
       })},
      {"AppendDouble", After::kDropped,
       On(nullptr, [](C c) { c.s.AppendDouble(-1.5e-7 * (c.size() + 1)); })},
      {"AppendFormat", After::kDropped,
       On(nullptr, [](C c) { Formatted(c, false, false); }),
       On(nullptr, [](C c) { Formatted(c, false, true); })},
      {"Format", After::kDropped,
       On(nullptr, [](C c) { Formatted(c, true, false); }, true),
       On(nullptr, [](C c) { Formatted(c, true, true); }, true)},
      {"SubString", After::kWhole,
       Made([](C c) { return new S(c.source.SubString(1, c.size() / 2)); })},
      {"CharFromCode", After::kWhole,
       Made([](C c) { return new S(S::CharFromCode(c.size() + 65.5)); })},
      {"EncodeString converted", After::kDropped,
       On("a=", [](C c) { c.s.EncodeString(c.text(), 6, true, true); }),
       On("a=", [](C c) { c.s.EncodeString(c.text(), 5, true, true); })},
      {"EncodeString", After::kDropped,
       On("a=", [](C c) { c.s.EncodeString(c.text(), 5, false, false); })},
      {"EncodeStringHighAscii", After::kDropped,
       On("a=", [](C c) { c.s.EncodeStringHighAscii(c.text(), 6); }),
       On("a=", [](C c) { c.s.EncodeStringHighAscii(c.text(), 5); })},
      {"CreateEscapedCStr(true)", After::kDropped,
       Handed([](C c) { return c.source.CreateEscapedCStr(true); })},
      {"CreateEscapedCStr(false)", After::kDropped,
       Handed([](C c) { return c.source.CreateEscapedCStr(false); })},
      {"CreateUpper128ASCIIEscapedCStr", After::kDropped,
       Handed([](C c) { return c.source.CreateUpper128ASCIIEscapedCStr(); })},
      {"CreateEncodedUrl", After::kDropped,
       Handed([](C c) { return c.source.CreateEncodedUrl(); })},
      {"EncodeVariables", After::kDropped,
       On("/p", [](C c) { EncodeVariables(c, true); }),
       On("/p", [](C c) { EncodeVariables(c, false); })},
      {"CreateStr(text)", After::kWhole,
       Handed([](C c) { return CreateStr(c.text()); })},
      {"CreateStr(n)", After::kWhole, Handed([](C c) {
         return CreateStr(static_cast<unsigned long>(c.size()));
       })},
      {"CreateStr(text, n)", After::kWhole, Handed([](C c) {
         return CreateStr(c.text(), static_cast<unsigned long>(c.size()));
       })},
      {"CreateStr(marlo::String*)", After::kWhole, Handed([](C c) {
         marlo::String vm(c.text());
         return CreateStr(&vm);
       })},
      {"ConcatStr", After::kWhole,
       Handed([](C c) { return ConcatStr(c.text(), c.text()); })},
      {"U64ToChar", After::kWhole,
       Handed([](C c) { return U64ToChar(c.in.size() * 1000000007ULL); })},
      // The host services that the module calls.
      {"StUTF8String", After::kWhole,
       [](const std::string& in, const FaultedRun& faulted, Seen*) {
         marlo::String vm(in.c_str());
         Seen seen;
         faulted([&] {
           marlo::StUTF8String view(&vm);
           seen = {true, view.c_str(), 0};
         });
         return seen;
       }},
      {"CreateMBCSFromUTF8", After::kWhole,
       Handed([](C c) { return CreateMBCSFromUTF8(c.text(), true); })},
      {"ConvertDoubleToString", After::kWhole,
       Handed([](C c) { return ConvertDoubleToString(c.size() * -1.25e-9); })},
      {"CorePlayer::ToString", After::kWhole, Handed([](C c) {
         return CorePlayer().ToString(ScriptAtom::FromString(c.text()));
       })},
      {"Get8BitCopyOfStringData", After::kWhole, Handed([](C c) {
         return ScriptAtom::FromString(c.text()).Get8BitCopyOfStringData();
       })},
  };
}

bool IsSubsequence(const std::string& part, const std::string& whole) {
  std::size_t matched = 0;
  for (char c : whole) {
    if (matched < part.size() && part[matched] == c) ++matched;
  }
  return matched == part.size();
}

bool IsPrefix(const std::string& part, const std::string& whole) {
  return whole.compare(0, part.size(), part) == 0;
}

// `outputs`: what the operation gives without a fault, then its fallback.
void ExpectFailureLeft(const Case& c, const FaultedRun& run,
                       const Seen& before, const Seen& after,
                       const std::vector<Seen>& outputs) {
  switch (c.after) {
    case After::kZeroed:
      EXPECT_EQ(after, run.Failing() < c.untouched ? before : Seen{});
      break;
    case After::kUnchanged:
      EXPECT_EQ(after, before);
      break;
    case After::kWhole:
      if (after.text) {
        EXPECT_EQ(after, outputs[0]);
      }
      break;
    case After::kDropped: {
      ASSERT_TRUE(IsPrefix(before.bytes, after.bytes)) << after.bytes;
      const std::string added = after.bytes.substr(before.bytes.size());
      bool explained = false;
      for (const Seen& output : outputs) {
        const std::string full = output.bytes.substr(before.bytes.size());
        explained |= run.Threw() ? IsPrefix(added, full)
                                 : IsSubsequence(added, full);
      }
      EXPECT_TRUE(explained) << "added: " << added;
      break;
    }
  }
}

void Sweep(const Case& c, const std::string& in) {
  std::vector<Seen> outputs;
  Seen before;
  if (c.fallback) outputs.push_back(c.fallback(in, FaultedRun(), &before));
  vesk_test::SweepHeapFaults([&](const FaultedRun& run) {
    const Seen after = c.run(in, run, &before);
    if (!run.Armed()) {
      outputs.insert(outputs.begin(), after);
    } else {
      ExpectFailureLeft(c, run, before, after, outputs);
    }
  });
}

struct Input {
  const char* name;
  const char* codePage;
  std::string text;
};

std::vector<Input> Inputs() {
  std::string bytes;  // every byte value but 0, long enough to grow twice
  for (int i = 0; i < 1500; ++i) bytes += static_cast<char>(1 + i % 255);
  std::string japanese;  // UTF-8, each 3-byte character two or more
  for (int i = 0; i < 40; ++i) {  // Shift-JIS characters when read as such
    japanese +=
        "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xE3\x81\xAE\xE3\x83\x86\xE3\x82"
        "\xAD\xE3\x82\xB9\xE3\x83\x88\xE3\x80\x81 ";
  }
  return {{"empty", "windows-1252", ""},
          {"short", "windows-1252", "a b&c"},
          {"long", "windows-1252", bytes},
          {"multibyte", "shift_jis", japanese}};
}

TEST(FaultSweepTest, EveryAllocatingOperationFailsCleanly) {
  const vesk_test::SweepTotals start = vesk_test::Totals();
  const std::vector<Case> cases = Cases();
  const std::vector<Input> inputs = Inputs();
  for (const Input& input : inputs) {
    vesk_test::ScopedCodePage page(input.codePage);
    for (const Case& c : cases) {
      SCOPED_TRACE(testing::Message() << c.name << " on " << input.name);
      Sweep(c, input.text);
    }
  }
  const vesk_test::SweepTotals& end = vesk_test::Totals();
  std::printf(
      "fault sweep: %zu operations swept on %zu inputs, %lu faults "
      "injected, %lu leaks found\n",
      cases.size(), inputs.size(), end.faults - start.faults,
      end.leaks - start.leaks);
}

}  // namespace
