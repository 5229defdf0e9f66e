// Every form of the block kernels against the scalar reference, block by
// block, over texts that hold every byte value at every lane, every case
// pair, and the marks around each kept set's edges.
#include "core/kernels.h"

#include <cstdint>
#include <string>

#include "support.h"

namespace {

using vesk::ByteSet;
using vesk::ScalarReference;

// The reference's mask over `width` bytes, one bit a byte.
template <class Kernel>
std::uint32_t ReferenceMask(std::size_t width, Kernel kernel) {
  std::uint32_t mask = 0;
  for (std::size_t i = 0; i < width; ++i) mask |= kernel(i) << i;
  return mask;
}

// A form's kernels as plain functions, compared on one block at `at`.
struct FormRow {
  vesk::Form form;
  std::size_t width;
  std::uint32_t (*differ)(const char* a, const char* b, bool fold);
  std::uint32_t (*candidates)(const char* p, std::size_t span, bool fold);
  std::uint32_t (*kept)(const unsigned char* p, ByteSet set);
};

template <class K, bool kFold>
std::uint32_t Candidates(const char* p, std::size_t span) {
  return K::template Candidates<kFold>(p, span, 'a', 'B' | kFold << 5);
}

template <class K>
FormRow Row(vesk::Form form) {
  return {form, K::kWidth,
          [](const char* a, const char* b, bool fold) {
            return fold ? K::template Differ<true>(a, b)
                        : K::template Differ<false>(a, b);
          },
          [](const char* p, std::size_t span, bool fold) {
            return fold ? Candidates<K, true>(p, span)
                        : Candidates<K, false>(p, span);
          },
          [](const unsigned char* p, ByteSet set) {
            switch (set) {
              case ByteSet::kLettersAndDigits:
                return K::template Kept<ByteSet::kLettersAndDigits>(p);
              case ByteSet::kStrict:
                return K::template Kept<ByteSet::kStrict>(p);
              case ByteSet::kUrl: return K::template Kept<ByteSet::kUrl>(p);
              case ByteSet::kAscii: return K::template Kept<ByteSet::kAscii>(p);
              case ByteSet::kAll: break;
            }
            return K::template Kept<ByteSet::kAll>(p);
          }};
}

TEST(Kernels, EveryFormMatchesTheScalarReference) {
  const FormRow rows[] = {
#if VESK_WITH_SSE2
    Row<vesk::sse2::Kernels>(vesk::Form::kSse2),
#endif
#if VESK_WITH_AVX2
    Row<vesk::avx2::Kernels>(vesk::Form::kAvx2),
#endif
#if VESK_WITH_NEON
    Row<vesk::neon::Kernels>(vesk::Form::kNeon),
#endif
    Row<ScalarReference>(vesk::Form::kScalar),
  };
  // Every byte value, then letters in both cases beside the marks and
  // digits, so that folded pairs and candidates meet in every lane.
  std::string a, b;
  for (int i = 0; i < 256; ++i) a += static_cast<char>(i * 167 % 256);
  for (int i = 0; i < 256; ++i) a += "aAbB-.%<>\\^`{|}~ 09zZ@["[i % 24];
  for (std::size_t i = 0; i < a.size(); ++i) {
    b += static_cast<char>(i % 7 == 0 ? a[i] ^ 0x20 : i % 5 == 0 ? 'A' : a[i]);
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(a.data());
  for (const FormRow& row : rows) {
    if (!vesk::FormRuns(row.form)) continue;
    for (std::size_t at = 0; at + row.width + 8 <= a.size(); ++at) {
      const char *x = a.data() + at, *y = b.data() + at;
      const std::string where =
          std::string(vesk::FormName(row.form)) + " at " + std::to_string(at);
      for (const bool fold : {false, true}) {
        EXPECT_EQ(row.differ(x, y, fold),
                  ReferenceMask(row.width,
                                [&](auto i) {
                                  return fold ? ScalarReference::Differ<true>(
                                                    x + i, y + i)
                                              : ScalarReference::Differ<false>(
                                                    x + i, y + i);
                                }))
            << where << " differ, fold " << fold;
        EXPECT_EQ(
            row.candidates(x, 7, fold),
            ReferenceMask(
                row.width,
                [&](auto i) {
                  return fold ? Candidates<ScalarReference, true>(x + i, 7)
                              : Candidates<ScalarReference, false>(x + i, 7);
                }))
            << where << " candidates, fold " << fold;
      }
      for (int set = 0; set <= static_cast<int>(ByteSet::kAll); ++set) {
        const auto kept = static_cast<ByteSet>(set);
        EXPECT_EQ(row.kept(bytes + at, kept),
                  ReferenceMask(row.width,
                                [&](auto i) {
                                  return vesk::InSet(kept, bytes[at + i]) ? 1u
                                                                          : 0u;
                                }))
            << where << " kept set " << set;
      }
    }
  }
}

}  // namespace
