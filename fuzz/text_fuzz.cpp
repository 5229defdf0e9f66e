// The free functions over C text against the C library in the C locale,
// every text in a block of just its size, so that a read past its
// terminator is one that AddressSanitizer reports.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <memory>

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

}  // namespace

// Two texts, a byte, the bits that give some of the 16-bit copy's units of
// the first text a high byte, and whether the second text is null.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data,
                                      std::size_t size) {
  FuzzedDataProvider in(data, size);
  const std::string a = in.ConsumeRandomLengthString(200);
  const std::string b = in.ConsumeRandomLengthString(200);
  const int c = in.ConsumeIntegralInRange(-300, 300);
  const auto high = in.ConsumeIntegral<unsigned long>();
  const bool nullB = in.ConsumeIntegralInRange(0, 7) == 0;
  const auto textA = Exact(a), textB = Exact(b);
  vesk_test::CheckSearches(textA.get(), textB.get(), c, nullB);
  std::basic_string<unsigned short> units(a.begin(), a.end());
  for (std::size_t i = 0; i < a.size(); ++i) {
    units[i] = (units[i] & 0xFF) | ((high >> (i % 64)) & 1) << 8;
  }
  vesk_test::CheckStrips(textA.get(), Exact(units).get(),
                         nullB ? nullptr : textB.get());
  vesk_test::CheckHexDigits(textA.get());
  return 0;
}
