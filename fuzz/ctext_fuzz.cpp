// The free functions over C text against their plain renderings: case-
// insensitive comparison, every search, stripping in both widths, the
// number readers, hex pairs and heap texts. Every text sits in a heap block
// that ends where a reader must stop, so that the address sanitizer sees a
// read beyond it.
#include <algorithm>
#include <climits>
#include <memory>

#include "fuzz/fuzz_support.h"

namespace {

using vesk_fuzz::Step;

constexpr long kNotFound = 4294967295L;

// The first `n` units of `text`, or all and the terminator when `n`
// reaches past them, in a block of just that size.
template <class Unit>
std::unique_ptr<Unit[]> Exact(const std::basic_string<Unit>& text,
                              unsigned long n) {
  const unsigned long count = std::min<unsigned long>(n, text.size() + 1);
  std::unique_ptr<Unit[]> copy(new Unit[count]);
  std::copy(text.c_str(), text.c_str() + count, copy.get());
  return copy;
}

template <class Unit>
long Offset(const Unit* base, const Unit* p) {
  return p == nullptr ? -1 : p - base;
}

long Index(long offset) { return offset < 0 ? kNotFound : offset; }

void Compare(const char* a, const char* b, int c, bool null_b) {
  VESK_CHECK(VeskStrICmp(a, b) == model::ICmp(a, b));
  VESK_CHECK(StrEqual(a, null_b ? nullptr : b) ==
             model::StrEqual(a, null_b ? nullptr : b));
  for (bool exact : {false, true}) {
    VESK_CHECK(VarStrEqual(a, b, exact) == model::VarStrEqual(a, b, exact));
  }
  VESK_CHECK(Offset(a, VeskStrChr(a, c)) == model::Chr(a, c));
  VESK_CHECK(VeskStrChrIndex(a, c) == Index(model::Chr(a, c)));
  VESK_CHECK(Offset(a, VeskStrRChr(a, c)) == model::RChr(a, c));
  const char* needle = null_b ? nullptr : b;
  VESK_CHECK(Offset(a, VeskStrStr(a, needle)) == model::Find(a, needle, false));
  VESK_CHECK(Offset(a, VeskStrCaseStr(a, needle)) ==
             model::Find(a, needle, true));
  VESK_CHECK(VeskStrStrIndex(a, needle) ==
             Index(model::Find(a, needle, false)));
  if (needle == nullptr || needle[0] == '\0') {  // a null haystack is allowed
    VESK_CHECK(VeskStrStr(nullptr, needle) == nullptr);
    VESK_CHECK(VeskStrStrIndex(nullptr, needle) == kNotFound);
  }
}

template <class Unit>
void Strip(const Unit* text, const char* prefix) {
  VESK_CHECK(Offset(text, StripPrefix(text, prefix)) ==
             model::StripPrefix(text, prefix, true));
  VESK_CHECK(Offset(text, StripPrefixCaseSensitive(text, prefix)) ==
             model::StripPrefix(text, prefix, false));
}

void Read(const std::string& a, unsigned long n,
          const std::basic_string<unsigned short>& units) {
  const auto text = Exact(a, ULONG_MAX);
  const auto counted = Exact(a, n);
  const auto wide = Exact(units, ULONG_MAX);
  using U = unsigned long long;
  VESK_CHECK(ToInt(text.get()) ==
             static_cast<int>(model::Decimal(text.get(), ULONG_MAX, true)));
  VESK_CHECK(ToInt(counted.get(), n) ==
             static_cast<int>(model::Decimal(counted.get(), n, true)));
  VESK_CHECK(ToInt(wide.get()) ==
             static_cast<int>(model::Decimal(wide.get(), ULONG_MAX, true)));
  VESK_CHECK(static_cast<U>(ToInt64(text.get())) ==
             model::Decimal(text.get(), ULONG_MAX, true));
  VESK_CHECK(static_cast<U>(ToInt64(counted.get(), n)) ==
             model::Decimal(counted.get(), n, true));
  VESK_CHECK(ToUInt64(text.get()) ==
             model::Decimal(text.get(), ULONG_MAX, false));
  VESK_CHECK(ToInt(static_cast<const char*>(nullptr)) == 0);
  for (std::size_t i = 0; i + 1 < a.size() + 1; ++i) {
    char got = 'k';
    char want = 'k';
    VESK_CHECK(ParseHexChar(a[i]) == model::ParseHexChar(a[i]));
    VESK_CHECK(IsHexChar(a[i]) == (model::ParseHexChar(a[i]) >= 0));
    VESK_CHECK(ParseHexCouple(a[i], a[i + 1], &got) ==
               model::ParseHexCouple(a[i], a[i + 1], &want));
    VESK_CHECK(got == want);
  }
}

void HeapTexts(FuzzedDataProvider& in, const char* a, const char* b,
               const std::string& bytes, unsigned long n) {
  const bool null = in.ConsumeIntegralInRange(0, 7) == 0;
  const char* maybe = null ? nullptr : a;
  const unsigned long count = in.PickValueInArray(
      {n, 0UL, ULONG_MAX, 4294967294UL, 4294967295UL, 1UL << 40});
  const unsigned long readable = std::min<unsigned long>(n, bytes.size());
  const auto counted = Exact(bytes, readable);
  const char* source = null ? nullptr : counted.get();
  const auto value = in.ConsumeIntegral<unsigned long long>();
  for (int call = 0; call < 5; ++call) {
    char* got = nullptr;
    model::HeapText want;
    Step(
        vesk_fuzz::ConsumeFault(in),
        [&] {
          got = call == 0   ? CreateStr(maybe)
                : call == 1 ? CreateStr(count)
                : call == 2 ? CreateStr(source, readable)
                : call == 3 ? ConcatStr(maybe, b)
                            : U64ToChar(value);
        },
        [&] {
          want = call == 0   ? model::CreateStr(maybe)
                 : call == 1 ? model::CreateStr(count)
                 : call == 2 ? model::CreateStr(source, readable)
                 : call == 3 ? model::ConcatStr(maybe, b)
                             : model::U64ToChar(value);
        });
    vesk_fuzz::ExpectSame(got, want);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size) {
  FuzzedDataProvider in(data, size);
  const vesk_fuzz::LiveBlocksBalance balance;
  const std::string a = in.ConsumeRandomLengthString(200);
  const std::string b = in.ConsumeRandomLengthString(200);
  const int c = in.ConsumeIntegralInRange(-300, 300);
  const unsigned long n = in.ConsumeIntegralInRange(0, 220);
  const auto high = in.ConsumeIntegral<unsigned long>();
  const bool null_b = in.ConsumeIntegralInRange(0, 7) == 0;

  const auto text_a = Exact(a, ULONG_MAX);
  const auto text_b = Exact(b, ULONG_MAX);
  Compare(text_a.get(), text_b.get(), c, null_b);
  const auto counted_a = Exact(a, n);
  const auto counted_b = Exact(b, n);
  VESK_CHECK(VeskStrNICmp(counted_a.get(), counted_b.get(), n) ==
             model::NICmp(counted_a.get(), counted_b.get(), n));

  // 16-bit units: the bytes of `a`, some raised above 0xFF.
  std::basic_string<unsigned short> units;
  for (std::size_t i = 0; i < a.size(); ++i) {
    units += static_cast<unsigned short>(
        static_cast<unsigned char>(a[i]) | ((high >> (i % 64)) & 1) << 8);
  }
  const char* prefix = null_b ? nullptr : text_b.get();
  Strip(text_a.get(), prefix);
  Strip(Exact(units, ULONG_MAX).get(), prefix);
  const char* text = text_a.get();
  VESK_CHECK(Offset(text, StripWhitespace(text)) ==
             model::StripWhitespace(text));
  VESK_CHECK(Offset(text, StripScheme(text, prefix)) ==
             model::StripScheme(text, prefix));
  VESK_CHECK(Offset(text, StripAtMostTwoSlashes(text)) ==
             model::StripAtMostTwoSlashes(text));
  VESK_CHECK(StripWhitespace(nullptr) == nullptr);
  VESK_CHECK(StripAtMostTwoSlashes(nullptr) == nullptr);

  Read(a, n, units);
  HeapTexts(in, text, text_b.get(), a, n);
  return 0;
}
