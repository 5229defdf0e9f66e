// Every vector form of the block kernels against the scalar reference,
// block by block, over texts that put every byte value, both cases of
// letters and the edges of each kept set in every lane.
#include "core/kernels.h"

#include <cstdint>
#include <string>

#include "support.h"

namespace {

using vesk::ByteSet;
using Reference = vesk::ScalarReference;

// Each kernel of the form `K` on the block at `at` of `a` and `b`: its mask
// against the reference's, which takes one byte at a time, one bit a byte.
template <class K, bool kFold, ByteSet... kSets>
void CheckBlock(const char* form, const std::string& a, const std::string& b,
                std::size_t at) {
  const char *x = &a[at], *y = &b[at];
  [[maybe_unused]] const auto* p = reinterpret_cast<const unsigned char*>(x);
  const auto expect = [&](const char* kernel, std::uint32_t got, auto one) {
    std::uint32_t want = 0;
    for (std::size_t i = 0; i < K::kWidth; ++i) want |= one(i) << i;
    EXPECT_EQ(got, want) << form << " " << kernel << (kFold ? " folded" : "")
                         << " at " << at;
  };
  const char last = 'B' | kFold << 5;
  expect("Differ", K::template Differ<kFold>(x, y),
         [&](std::size_t i) { return Reference::Differ<kFold>(x + i, y + i); });
  expect("Candidates", K::template Candidates<kFold>(x, 3, 'a', last),
         [&](std::size_t i) {
           return Reference::Candidates<kFold>(x + i, 3, 'a', last);
         });
  (expect("Kept", K::template Kept<kSets>(p),
          [&](std::size_t i) { return Reference::Kept<kSets>(p + i); }),
   ...);
}

template <class K>
void CheckForm(vesk::Form form, const std::string& a, const std::string& b) {
  if (!vesk::FormRuns(form)) return;
  for (std::size_t at = 0; at + K::kWidth + 8 <= a.size(); ++at) {
    CheckBlock<K, false, ByteSet::kLettersAndDigits, ByteSet::kStrict,
               ByteSet::kUrl, ByteSet::kAscii, ByteSet::kAll>(
        vesk::FormName(form), a, b, at);
    CheckBlock<K, true>(vesk::FormName(form), a, b, at);
  }
}

TEST(Kernels, EveryFormMatchesTheScalarReference) {
  std::string a, b;
  for (int i = 0; i < 256; ++i) a += static_cast<char>(i * 167 % 256);
  for (int i = 0; i < 256; ++i) a += "aAbB-.%<>\\^`{|}~ 09zZ@["[i % 24];
  for (std::size_t i = 0; i < a.size(); ++i) {
    // The case bit flipped, the low bit flipped, or an 'A' in its place.
    const char c = a[i];
    b += i % 7 == 0 ? c ^ 0x20 : i % 5 == 0 ? c ^ 0x01 : i % 3 == 0 ? 'A' : c;
  }
#if VESK_WITH_SSE2
  CheckForm<vesk::sse2::Kernels>(vesk::Form::kSse2, a, b);
#endif
#if VESK_WITH_AVX2
  CheckForm<vesk::avx2::Kernels>(vesk::Form::kAvx2, a, b);
#endif
#if VESK_WITH_NEON
  CheckForm<vesk::neon::Kernels>(vesk::Form::kNeon, a, b);
#endif
}

}  // namespace
