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

template <class K>
struct FormCheck {
  const char* name;
  std::size_t at;
  const char *x, *y;
  // The form's mask against the reference's, one bit a byte.
  template <class Each>
  void Expect(std::uint32_t got, Each reference, const char* kernel) const {
    std::uint32_t want = 0;
    for (std::size_t i = 0; i < K::kWidth; ++i) want |= reference(i) << i;
    EXPECT_EQ(got, want) << name << " " << kernel << " at " << at;
  }
  template <bool kFold>
  void Blocks() const {
    Expect(
        K::template Differ<kFold>(x, y),
        [&](std::size_t i) { return Reference::Differ<kFold>(x + i, y + i); },
        kFold ? "folded Differ" : "Differ");
    Expect(
        K::template Candidates<kFold>(x, 7, 'a', 'B' | kFold << 5),
        [&](std::size_t i) {
          return Reference::Candidates<kFold>(x + i, 7, 'a', 'B' | kFold << 5);
        },
        kFold ? "folded Candidates" : "Candidates");
  }
  template <ByteSet... kSets>
  void Kept() const {
    const auto* p = reinterpret_cast<const unsigned char*>(x);
    (Expect(
         K::template Kept<kSets>(p),
         [&](std::size_t i) { return vesk::InSet(kSets, p[i]) ? 1u : 0u; },
         "Kept"),
     ...);
  }
};

template <class K>
void CheckForm(vesk::Form form, const std::string& a, const std::string& b) {
  if (!vesk::FormRuns(form)) return;
  for (std::size_t at = 0; at + K::kWidth + 8 <= a.size(); ++at) {
    const FormCheck<K> check{vesk::FormName(form), at, &a[at], &b[at]};
    check.template Blocks<false>();
    check.template Blocks<true>();
    check.template Kept<ByteSet::kLettersAndDigits, ByteSet::kStrict,
                        ByteSet::kUrl, ByteSet::kAscii, ByteSet::kAll>();
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
