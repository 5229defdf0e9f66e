// One VeskString driven through a sequence of operations coded in the
// input, each under a heap fault the input may plan, and compared after
// every step with the model: outcome, heap requests, state, text, length
// and capacity, and whatever the step returned.
#include <memory>
#include <optional>

#include "fuzz/fuzz_support.h"

namespace {

using model::FormatArg;
using vesk_fuzz::Step;

const char* SharedEmpty() {
  static const VeskString empty("");
  return empty.Text();
}

void ExpectSame(const VeskString& s, const model::String& m) {
  VESK_CHECK(s.Length() == m.length && s.Capacity() == m.capacity);
  switch (m.state) {
    case model::String::kZeroed: VESK_CHECK(s.Text() == nullptr); break;
    case model::String::kShared: VESK_CHECK(s.Text() == SharedEmpty()); break;
    case model::String::kOwn:
      VESK_CHECK(s.Text() != nullptr && s.Text() != SharedEmpty());
      VESK_CHECK(std::memcmp(s.Text(), m.buffer.data(), m.length + 1u) == 0);
  }
}

std::string Text(FuzzedDataProvider& in) {
  return in.ConsumeRandomLengthString(1200);
}

// Null now and then.
const char* Maybe(FuzzedDataProvider& in, const std::string& text) {
  return in.ConsumeIntegralInRange(0, 15) == 0 ? nullptr : text.c_str();
}

double Double(FuzzedDataProvider& in) {
  switch (in.ConsumeIntegralInRange(0, 2)) {
    case 0: return in.ConsumeIntegral<int>() / 4.0;
    case 1: {
      const auto bits = in.ConsumeIntegral<unsigned long>();
      double value;
      std::memcpy(&value, &bits, sizeof value);
      return value;
    }
    default: return in.ConsumeFloatingPoint<double>();
  }
}

// A format of literal bytes and directives, with arguments of the types its
// directives take; the texts live as long as it does.
struct Formatted {
  static constexpr unsigned kMaxArgs = 4;
  std::string format;
  std::vector<FormatArg> args;
  std::string texts[kMaxArgs];
};

void ConsumeFormat(FuzzedDataProvider& in, Formatted* f) {
  for (int pieces = in.ConsumeIntegralInRange(0, 12); pieces > 0; --pieces) {
    const char c = in.ConsumeIntegral<char>();
    if (c != '%' && c != '\0' && in.ConsumeBool()) {
      f->format += c;
      continue;
    }
    const char d = in.PickValueInArray(
        {'%', 'p', 's', 'd', 'x', 'c', 'b', 'f', '3', '2', 'q', 'D', '5'});
    const std::string kinds = "pfs3dxcb2";  // the directives with arguments
    const auto kind = kinds.find(d);
    if (kind != std::string::npos && f->args.size() == Formatted::kMaxArgs) {
      break;
    }
    f->format += '%';
    f->format += d;
    if (kind == std::string::npos) continue;
    std::string& text = f->texts[f->args.size()];
    FormatArg arg{FormatArg::kInt};
    if (kind == 0) {
      arg = {FormatArg::kPointer, in.ConsumeIntegral<long>()};
    } else if (kind == 1) {
      arg = {FormatArg::kDouble, 0, Double(in)};
    } else if (kind == 2) {
      text = in.ConsumeRandomLengthString(40);
      arg = {FormatArg::kText, 0, 0, Maybe(in, text)};
    } else if (kind == 3) {  // three readable bytes, whatever they are
      text = in.ConsumeBytesAsString(3);
      text.resize(3, 'z');
      arg = {FormatArg::kText, 0, 0, text.c_str()};
    } else {
      arg.integer = in.ConsumeIntegral<int>();
    }
    f->args.push_back(arg);
  }
  if (in.ConsumeBool()) f->format += '%';  // a lone '%' at the end
}

// Calls Format or AppendFormat with `args` as C arguments of their types.
template <int Left, class... A>
void CallFormat(VeskString& s, bool replace, const Formatted& f,
                std::size_t next, A... a) {
  if constexpr (Left > 0) {
    if (next < f.args.size()) {
      const FormatArg& arg = f.args[next];
      switch (arg.kind) {
        case FormatArg::kInt:
          return CallFormat<Left - 1>(s, replace, f, next + 1, a...,
                                      static_cast<int>(arg.integer));
        case FormatArg::kDouble:
          return CallFormat<Left - 1>(s, replace, f, next + 1, a..., arg.real);
        case FormatArg::kText:
          return CallFormat<Left - 1>(s, replace, f, next + 1, a..., arg.text);
        case FormatArg::kPointer:
          return CallFormat<Left - 1>(s, replace, f, next + 1, a...,
                                      reinterpret_cast<void*>(arg.integer));
      }
    }
  }
  if (replace) {
    s.Format(f.format.c_str(), a...);
  } else {
    s.AppendFormat(f.format.c_str(), a...);
  }
}

class Driver {
 public:
  explicit Driver(FuzzedDataProvider& in) : m_in(in) { m_s.emplace(); }

  void Next() {
    const int op = m_in.ConsumeIntegralInRange(0, 24);
    const vesk_fuzz::Fault fault = vesk_fuzz::ConsumeFault(m_in);
    Run(op, fault);
    if (!m_s) m_s.emplace();  // a capacity constructor threw
    ExpectSame(*m_s, m_m);
  }

 private:
  VeskString& S() { return *m_s; }

  // Runs `op` on the string and on the model alike.
  template <class Op>
  vesk_fuzz::Outcome Both(const vesk_fuzz::Fault& fault, Op op) {
    return Step(fault, [&] { op(*m_s); }, [&] { op(m_m); });
  }

  void Run(int op, const vesk_fuzz::Fault& fault) {
    FuzzedDataProvider& in = m_in;
    model::String& m = m_m;
    const std::string text = op <= 9 || op >= 21 ? Text(in) : std::string();
    const char* t = Maybe(in, text);
    switch (op) {
      case 0: {
        const int n = in.ConsumeIntegralInRange(-8, 1400);
        Both(fault, [&](auto& s) { s.Set(t, n); });
        break;
      }
      case 1: {  // a source inside the string's own text
        if (m.state == model::String::kZeroed) break;
        const int at = in.ConsumeIntegralInRange(0, m.length);
        const int n = in.ConsumeIntegralInRange(-1, m.length);
        Step(fault, [&] { S().Set(S().Text() + at, n); },
             [&] { m.Set(m.CText() + at, n); });
        break;
      }
      case 2:
        Step(fault, [&] { S() = t; }, [&] { m.Set(t, -1); });
        break;
      case 3: {  // from another string, zeroed or not, or from itself
        const int how = in.ConsumeIntegralInRange(0, 4);
        Step(fault,
             [&] {
               VeskString other;
               if (how > 0) other.Set(text.c_str(), -1);
               if (how == 1) S() = other;
               if (how == 3) S() = S();
               if (how == 4) S().Copy(S());
               if (how < 3 && how != 1) S().Copy(other);
             },
             [&] {
               model::String other;
               if (how > 0) other.Set(text.c_str(), -1);
               m.Copy(how >= 3 ? m : other);
             });
        break;
      }
      case 4: {
        const int capacity = in.ConsumeIntegralInRange(-2, 1100);
        Step(fault,
             [&] {
               m_s.reset();
               m_s.emplace(capacity);
             },
             [&] {
               m.Clear();
               m = model::String::WithCapacity(capacity);
             });
        break;
      }
      case 5: {
        const bool secure = in.ConsumeBool();
        Step(fault, [&] { secure ? S().SecureClear() : S().Clear(); },
             [&] { m.Clear(); });
        break;
      }
      case 6: {
        const char c = in.ConsumeIntegral<char>();
        Both(fault, [&](auto& s) { s.AppendChar(c); });
        break;
      }
      case 7:
        Both(fault, [&](auto& s) { s.AppendString(t); });
        break;
      case 8: {
        const int n = in.ConsumeIntegralInRange(0, 1400);
        Both(fault, [&](auto& s) { s.AppendString(t, n); });
        break;
      }
      case 9: {
        std::string three = text;
        three.resize(3, 'x');
        Both(fault, [&](auto& s) { s.AppendThreeChars(three.data()); });
        break;
      }
      case 10: {
        const auto byte = in.ConsumeIntegral<unsigned char>();
        Both(fault, [&](auto& s) { s.AppendHexByte(byte); });
        break;
      }
      case 11: {
        const unsigned n = in.ConsumeBool() ? in.ConsumeIntegral<unsigned>()
                                            : in.ConsumeIntegralInRange(0, 300);
        Both(fault, [&](auto& s) { s.Truncate(n); });
        break;
      }
      case 12:
        Both(fault, [&](auto& s) { s.RemoveTrailingSpaces(); });
        break;
      case 13:  // on a string with text only: on a zeroed one it is open
        if (m.state == model::String::kZeroed) break;
        if (in.ConsumeBool()) {
          Both(fault, [&](auto& s) { s.ToUpper(); });
        } else {
          Both(fault, [&](auto& s) { s.ToLower(); });
        }
        break;
      case 14: {
        const int start = in.ConsumeIntegralInRange(-2, m.length + 1);
        const int end = in.ConsumeIntegralInRange(-3, m.length + 1);
        std::unique_ptr<VeskString> got;
        model::String want;
        if (Step(fault,
                 [&] { got.reset(new VeskString(S().SubString(start, end))); },
                 [&] { want = m.SubString(start, end); }) ==
            vesk_fuzz::Outcome::kDone) {
          ExpectSame(*got, want);
        }
        break;
      }
      case 15: {
        const double code = Double(in);
        std::unique_ptr<VeskString> got;
        model::String want;
        if (Step(fault,
                 [&] {
                   got.reset(new VeskString(VeskString::CharFromCode(code)));
                 },
                 [&] { want = model::String::CharFromCode(code); }) ==
            vesk_fuzz::Outcome::kDone) {
          ExpectSame(*got, want);
        }
        break;
      }
      case 16: {
        const int index = in.ConsumeIntegralInRange(-2, m.length + 1);
        const double got = S().CharCodeAt(index);
        const double want = m.CharCodeAt(index);
        VESK_CHECK(got == want || (std::isnan(got) && std::isnan(want)));
        break;
      }
      case 17: {  // comparisons with another string and with C text
        const std::string other_text = Text(in);
        VeskString other;
        model::String m_other;
        if (in.ConsumeBool()) {  // else both stay zeroed
          other.Set(other_text.c_str(), -1);
          m_other.Set(other_text.c_str(), -1);
        }
        const char* c_text = Maybe(in, other_text);
        VESK_CHECK((S() == c_text) == m.Equals(c_text));
        VESK_CHECK((S() == other) == m.Equals(m_other));
        VESK_CHECK((S() == S()) && !(S() < S()));
        VESK_CHECK((S() < other) == m.Less(m_other));
        VESK_CHECK((other < S()) == m_other.Less(m));
        break;
      }
      case 18: {
        const long value = in.ConsumeIntegral<long>();
        const int radix = in.ConsumeIntegralInRange(-1, 38);
        Both(fault, [&](auto& s) { s.AppendInt(value, radix); });
        break;
      }
      case 19: {
        const int value = in.ConsumeIntegral<int>();
        const int digits = in.ConsumeIntegralInRange(-3, 30);
        Both(fault, [&](auto& s) { s.AppendNDigits(value, digits); });
        break;
      }
      case 20: {
        const double value = Double(in);
        Both(fault, [&](auto& s) { s.AppendDouble(value); });
        break;
      }
      case 21: {
        Formatted f;
        ConsumeFormat(in, &f);
        const bool replace = in.ConsumeBool();
        Step(fault,
             [&] { CallFormat<Formatted::kMaxArgs>(S(), replace, f, 0); },
             [&] {
               replace ? m.Format(f.format.c_str(), f.args)
                       : m.AppendFormat(f.format.c_str(), f.args);
             });
        break;
      }
      case 22: {
        const int version = in.ConsumeIntegralInRange(4, 7);
        const bool plus = in.ConsumeBool();
        const bool convert = in.ConsumeBool();
        Both(fault,
             [&](auto& s) { s.EncodeString(t, version, plus, convert); });
        break;
      }
      case 23: {
        const int version = in.ConsumeIntegralInRange(4, 7);
        Both(fault, [&](auto& s) { s.EncodeStringHighAscii(t, version); });
        break;
      }
      default: {
        const auto rule = in.ConsumeIntegralInRange(0, 3);
        char* got = nullptr;
        model::HeapText want;
        Step(fault,
             [&] {
               got = rule == 0   ? S().CreateEscapedCStr(true)
                     : rule == 1 ? S().CreateEscapedCStr(false)
                     : rule == 2 ? S().CreateUpper128ASCIIEscapedCStr()
                                 : S().CreateEncodedUrl();
             },
             [&] { want = m.Escaped(static_cast<model::Escape>(rule)); });
        vesk_fuzz::ExpectSame(got, want);
        break;
      }
    }
  }

  FuzzedDataProvider& m_in;
  std::optional<VeskString> m_s;
  model::String m_m;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size) {
  vesk_fuzz::BindModelHost();
  FuzzedDataProvider in(data, size);
  vesk_fuzz::PickCodePage(in);
  const vesk_fuzz::LiveBlocksBalance balance;
  Driver driver(in);
  for (int steps = 0; in.remaining_bytes() > 0 && steps < 200; ++steps) {
    driver.Next();
  }
  return 0;
}
