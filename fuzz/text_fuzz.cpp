// The module against oracles that do not restate it, on inputs of three
// kinds chosen by the input's last byte:
//   0  one VeskString through a sequence of assignments, appends and
//      slices, against a std::string holding its text and the growth
//      rule's closed form for its capacity and its heap requests;
//   1  the free functions over C text against the C library in the C
//      locale, every text in a block that ends where a reader must stop;
//   2  every encoder against the table of the bytes its rule keeps, and a
//      decoder where its output is unambiguous.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/text_services.h"
#include "tests/kept_sets.h"

// A failed check is a crash to libFuzzer and a failure to the replay.
[[noreturn]] static void Fail(const char* what, int line) {
  std::fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, line, what);
  std::abort();
}
#define VESK_CHECK(condition) \
  ((condition) ? void() : Fail(#condition, __LINE__))

#include "tests/ctext_oracle.h"

namespace {

// `text` and its terminator in a block of just that size.
template <class Unit>
std::unique_ptr<Unit[]> Exact(const std::basic_string<Unit>& text) {
  std::unique_ptr<Unit[]> copy(new Unit[text.size() + 1]);
  std::copy(text.c_str(), text.c_str() + text.size() + 1, copy.get());
  return copy;
}

void PickCodePage(FuzzedDataProvider& in) {
  int count = 0;
  while (HostCodePageAt(count) != nullptr) ++count;
  SetHostCodePage(
      HostCodePageAt(in.ConsumeIntegralInRange(0, count - 1))->name);
}

// ---- 0: a string and its mirror ----

enum class State { kZeroed, kShared, kOwn };

struct Mirror {
  State state = State::kZeroed;
  std::string text;
  int capacity = 0;

  // Appends `bytes` by AppendString, or a byte by AppendChar (`extra` 0).
  void Append(const std::string& bytes, int extra = 1) {
    const int required = int(text.size() + bytes.size()) + extra;
    if (state != State::kOwn || required >= capacity) {
      const int c = state == State::kShared ? 1 : capacity;
      capacity = (c > 1023 ? c / 2 : 256) + required;
      state = State::kOwn;
    }
    text += bytes;
  }
  // An empty text is the shared one; a new buffer has just the room.
  void Set(const std::string& bytes) {
    const int n = int(bytes.size());
    if (n == 0 || state != State::kOwn || n >= capacity) capacity = n + 1;
    state = bytes.empty() ? State::kShared : State::kOwn;
    text = bytes;
  }
};

void ExpectSame(const VeskString& s, const Mirror& m) {
  static const VeskString empty("");
  const State state = s.Text() == nullptr        ? State::kZeroed
                      : s.Text() == empty.Text() ? State::kShared
                                                 : State::kOwn;
  VESK_CHECK(state == m.state && s.Length() == int(m.text.size()) &&
             s.Capacity() == m.capacity);
  VESK_CHECK(state == State::kZeroed ||
             std::memcmp(s.Text(), m.text.c_str(), m.text.size() + 1) == 0);
}

// One operation on `s` and `m`; `s` may be made anew. Operations 0 to 4
// take a text, and 0 to 3 take it as C text, null one time in sixteen.
void Step(FuzzedDataProvider& in, std::optional<VeskString>& string,
          Mirror& m) {
  const int op = in.ConsumeIntegralInRange(0, 10);
  VeskString& s = *string;
  const std::string text = op <= 4 ? in.ConsumeRandomLengthString(1200) : "";
  const char* t =
      op <= 3 && in.ConsumeIntegralInRange(0, 15) ? text.c_str() : nullptr;
  const std::string c = t ? t : "";  // what C text reads
  const int length = int(m.text.size());
  if (op == 0 || op == 5) {  // op 5: a source inside the string's own text
    if (op == 5 && m.state == State::kZeroed) return;
    const int at = op ? in.ConsumeIntegralInRange(0, length) : 0;
    const int n = op ? in.ConsumeIntegralInRange(-1, length)
                     : in.ConsumeIntegralInRange(-8, 1400);
    const std::string from = op ? m.text.c_str() + at : c;
    s.Set(op ? s.Text() + at : t, n);
    m.Set(n > 0 ? from.substr(0, n) : n == 0 ? "" : from);
  } else if (op == 1) {
    s = t;
    m.Set(c);
  } else if (op == 2 || op == 3) {
    const int n = op == 2 ? -1 : in.ConsumeIntegralInRange(0, 1400);
    n < 0 ? s.AppendString(t) : s.AppendString(t, n);
    if (t) m.Append(n < 0 ? c : c.substr(0, n));
  } else if (op == 4) {  // from another string, zeroed or not, or itself
    const int how = in.ConsumeIntegralInRange(0, 4);
    VeskString other;
    const VeskString& same = s;
    if (how > 0) other = text.c_str();
    if (how == 1 || how == 3) s = how == 1 ? other : same;
    if (how == 0 || how == 2 || how == 4) s.Copy(how == 4 ? same : other);
    if (how == 0) m = Mirror();
    if (how == 1 || how == 2) m.Set(text.c_str());
  } else if (op == 6) {
    const int capacity = in.ConsumeIntegralInRange(-2, 1100);
    string.reset();
    m = capacity > 0 ? Mirror{State::kOwn, "", capacity} : Mirror();
    try {
      string.emplace(capacity);
    } catch (const Pelgc::ObjectTooLargeError&) {
      VESK_CHECK(capacity < 0);
      string.emplace();
    }
  } else if (op == 7) {
    in.ConsumeBool() ? s.SecureClear() : s.Clear();
    m = Mirror();
  } else if (op == 8) {
    const char ch = in.ConsumeIntegral<char>();
    s.AppendChar(ch);
    m.Append(std::string(1, ch), 0);
  } else if (op == 9) {
    const unsigned n = in.ConsumeBool() ? in.ConsumeIntegral<unsigned>()
                                        : in.ConsumeIntegralInRange(0, 300);
    s.Truncate(n);
    if (n < m.text.size()) m.text.resize(n);
  } else {
    const int start = in.ConsumeIntegralInRange(-2, length + 1);
    const int end = in.ConsumeIntegralInRange(-3, length + 1);
    const int last = end == -1 ? length - 1 : end;
    Mirror want;
    if (start >= 0 && start < length && last >= start && last < length) {
      want.Set(m.text.substr(start, last - start + 1).c_str());
    }
    ExpectSame(s.SubString(start, end), want);
  }
}

void Strings(FuzzedDataProvider& in) {
  PickCodePage(in);
  std::optional<VeskString> s(std::in_place);
  Mirror m;
  for (int steps = 0; in.remaining_bytes() > 0 && steps < 200; ++steps) {
    const unsigned long requests = Pelgc::GetHeapStats().requests;
    const int capacity = s->Capacity();
    Step(in, s, m);
    ExpectSame(*s, m);
    VESK_CHECK(s->Capacity() == capacity || m.state != State::kOwn ||
               (Pelgc::GetHeapStats().requests > requests &&
                Pelgc::GetHeapStats().lastSize == unsigned(m.capacity)));
  }
}

// ---- 1: C text ----

void CText(FuzzedDataProvider& in) {
  const std::string a = in.ConsumeRandomLengthString(200);
  const std::string b = in.ConsumeRandomLengthString(200);
  const int c = in.ConsumeIntegralInRange(-300, 300);
  const auto high = in.ConsumeIntegral<unsigned long>();
  const bool nullB = in.ConsumeIntegralInRange(0, 7) == 0;
  const auto textA = Exact(a), textB = Exact(b);
  vesk_test::CheckSearches(textA.get(), textB.get(), c, nullB);
  // The bytes of `a`, some with a high byte added.
  std::basic_string<unsigned short> units(a.begin(), a.end());
  for (std::size_t i = 0; i < a.size(); ++i) {
    units[i] = (units[i] & 0xFF) | ((high >> (i % 64)) & 1) << 8;
  }
  vesk_test::CheckStrips(textA.get(), Exact(units).get(),
                         nullB ? nullptr : textB.get());
  vesk_test::CheckHexDigits(textA.get());
}

// ---- 2: the encoders ----

// The text that an encoder escapes: converted to the code page when asked
// and the host can, else as it is.
std::string Source(const std::string& text, bool convert) {
  char* converted = convert ? CreateMBCSFromUTF8(text.c_str(), true) : nullptr;
  const std::string source = converted != nullptr ? converted : text;
  Pelgc::SystemDelete(converted);
  return source;
}

// In the default code page, a single-byte one, the output is each byte of
// its source, kept or escaped by the table. In others, where multibyte
// characters are escaped whole, decoding the output gives the source back
// when that is unambiguous, and each byte left as it is is one the rule
// keeps.
void Check(const std::string& out, const std::string& source,
           vesk_test::Rule rule, bool plus = false) {
  if (std::strcmp(HostCodePage(), HostCodePageAt(0)->name) == 0) {
    VESK_CHECK(out == vesk_test::Encoded(source, rule, plus));
    return;
  }
  if (vesk_test::Kept(rule)['%'] && source.find('%') != std::string::npos) {
    return;
  }
  std::string decoded;
  for (std::size_t i = 0; i < out.size(); ++i) {
    const unsigned char c = out[i];
    const std::string hex = c == '%' ? out.substr(i + 1, 2) : "";
    VESK_CHECK(c == '%' ? std::strspn(hex.c_str(), "0123456789ABCDEF") == 2
                        : vesk_test::Kept(rule)[c] || (plus && c == '+'));
    decoded += c == '%'           ? char(std::strtol(hex.c_str(), nullptr, 16))
               : plus && c == '+' ? ' '
                                  : char(c);
    i += hex.size();
  }
  VESK_CHECK(decoded == source);
}

void Encoders(FuzzedDataProvider& in) {
  PickCodePage(in);
  const int version = in.ConsumeIntegralInRange(4, 7);
  const bool plus = in.ConsumeBool();
  const bool convert = in.ConsumeBool();
  const std::string text = in.ConsumeRemainingBytesAsString().c_str();
  // The escaped copies of an empty text are none, as the unit tests show.
  const int rules = text.empty() ? vesk_test::kStrict : vesk_test::kRules;
  for (int r = 0; r < rules; ++r) {
    const auto rule = vesk_test::Rule(r);
    const bool converts = version >= 6 && (r == vesk_test::kHighAscii ||
                                           (r == vesk_test::kForm && convert));
    Check(vesk_test::Encode(rule, text, version, plus, convert),
          Source(text, converts), rule, plus && r == vesk_test::kForm);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size) {
  FuzzedDataProvider in(data, size);
  const unsigned long live = Pelgc::GetHeapStats().live;
  const int kind = in.ConsumeIntegralInRange(0, 2);
  kind == 0 ? Strings(in) : kind == 1 ? CText(in) : Encoders(in);
  VESK_CHECK(Pelgc::GetHeapStats().live == live);
  return 0;
}
