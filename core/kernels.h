// The block kernels of the fast paths, declared once. A form of the kernels
// is a type K with:
//   K::kWidth        the bytes of one block
//   K::kAll          the mask with a bit for each of them
//   K::Narrower      the form the algorithms use for runs shorter than a
//                    block (ScalarReference is its own)
//   K::Differ<kFold>(a, b)
//                    bit i set when byte i of `a` and byte i of `b` differ,
//                    compared by their folds with kFold
//   K::Candidates<kFold>(block, span, first, last)
//                    bit i set when byte i maps to `first` and byte i + span
//                    to `last`, the bytes mapped by FoldByte with kFold
//   K::Kept<kSet>(p) bit i set when byte i at `p` is in the byte set kSet
// ScalarReference below is the definition, one byte a block; the vector
// forms (SSE2 and AVX2 on x86-64, NEON on AArch64) compute the same masks
// lane by lane, from one body over their lanes (vector_kernels.h), and the
// test suite runs once with each form forced (ForceForm) to hold them to
// it. The algorithm files call these and Dispatch, never an instruction
// set's own functions.
#ifndef VESK_CORE_KERNELS_H
#define VESK_CORE_KERNELS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "veskstring.h"

namespace vesk {

// The module's one case fold, as g_tolower_map gives it: 'A' to 'Z' to
// lower case, every other byte unchanged. ToUpper and ToLower apply the
// tables themselves.
inline unsigned char FoldByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return static_cast<unsigned char>(byte ^ g_tolower_map[byte]);
}

// The byte sets that the percent-encoders keep as they are.
enum class ByteSet {
  kLettersAndDigits,  // the 62 ASCII letters and digits
  kStrict,            // those, '-' and '.': 64 values
  kUrl,               // those and 24 marks a URL keeps, '%' among them: 86
  kAscii,             // 0x00 to 0x7F
  kAll,               // every byte
};

// By byte value alone: no byte from 0x80 up is a letter.
constexpr bool IsAsciiLetterOrDigit(int byte) {
  return (byte >= '0' && byte <= '9') ||
         ((byte & 0xDF) >= 'A' && (byte & 0xDF) <= 'Z');
}

// The 24 marks a URL keeps as bits: bit b % 64 of word b / 64, for b < 128.
constexpr std::uint64_t UrlMarkBits(int word) {
  std::uint64_t bits = 0;
  for (const char* mark = "!\"#$%&'()*+,-./:;=?@[]_~"; *mark != '\0'; ++mark) {
    if (*mark / 64 == word) bits |= std::uint64_t{1} << *mark % 64;
  }
  return bits;
}
inline constexpr std::uint64_t kUrlMarks[] = {UrlMarkBits(0), UrlMarkBits(1)};

constexpr bool IsUrlMark(int byte) {
  return byte >= 0 && byte < 128 && (kUrlMarks[byte / 64] >> byte % 64 & 1);
}

constexpr bool InSet(ByteSet set, int byte) {
  switch (set) {
    case ByteSet::kLettersAndDigits: return IsAsciiLetterOrDigit(byte);
    case ByteSet::kStrict:
      return IsAsciiLetterOrDigit(byte) || byte == '-' || byte == '.';
    case ByteSet::kUrl: return IsAsciiLetterOrDigit(byte) || IsUrlMark(byte);
    case ByteSet::kAscii: return byte < 0x80;
    case ByteSet::kAll: return true;
  }
  return false;
}

// The reference form: each kernel for one byte, as the definition reads.
struct ScalarReference {
  static constexpr std::size_t kWidth = 1;
  static constexpr std::uint32_t kAll = 1;
  using Narrower = ScalarReference;

  template <bool kFold>
  static unsigned char Map(char c) {
    return kFold ? FoldByte(c) : static_cast<unsigned char>(c);
  }
  template <bool kFold>
  static std::uint32_t Differ(const char* a, const char* b) {
    return Map<kFold>(*a) != Map<kFold>(*b);
  }
  template <bool kFold>
  static std::uint32_t Candidates(const char* block, std::size_t span,
                                  unsigned char first, unsigned char last) {
    return Map<kFold>(block[0]) == first && Map<kFold>(block[span]) == last;
  }
  template <ByteSet kSet>
  static std::uint32_t Kept(const unsigned char* p) {
    return InSet(kSet, *p);
  }
};

enum class Form : unsigned char { kScalar, kSse2, kAvx2, kNeon };

// The widest form that both this build and this processor have.
Form WidestForm();
const char* FormName(Form form);
// Whether this build has the form and this processor runs it.
bool FormRuns(Form form);
// Makes the process run the form named ("scalar", "sse2", "avx2" or
// "neon") from now on, so that tests and measurements can hold each form
// to the same cases. False, changing nothing, for a name that is not a
// form this process runs. Call it before the module is used.
bool ForceForm(const char* name);

// For the test and benchmark programs, not the module, which reads no
// environment: forces the form that VESK_KERNELS names, if it names one.
// False when it names a form that this process does not run, so that a run
// meant for that form is skipped rather than run with another.
inline bool ForceFormFromEnvironment() {
  const char* name = std::getenv("VESK_KERNELS");
  return name == nullptr || name[0] == '\0' || ForceForm(name);
}

// The form that Dispatch runs, set at dynamic initialisation. Code run from
// other files' static initialisers before it reads kScalar, which is exact
// like every form.
inline Form g_form = WidestForm();

// Every call inside is inlined: without it g++ left the AVX2 kernels out of
// line, a call per block (docs/PERFORMANCE.md).
#define VESK_FLATTEN __attribute__((flatten))

template <class K, template <class> class Op, class... Args>
VESK_FLATTEN auto RunAs(Args... args) {
  return Op<K>::Run(args...);
}

}  // namespace vesk

#include "kernels_avx2.h"
#include "kernels_neon.h"
#include "kernels_sse2.h"

namespace vesk {

// Op<K>::Run(args...) with K the form this process runs.
template <template <class> class Op, class... Args>
auto Dispatch(Args... args) {
  switch (g_form) {
#if VESK_WITH_AVX2
    case Form::kAvx2: return RunAvx2<Op>(args...);
#endif
#if VESK_WITH_SSE2
    case Form::kSse2: return RunAs<sse2::Kernels, Op>(args...);
#endif
#if VESK_WITH_NEON
    case Form::kNeon: return RunAs<neon::Kernels, Op>(args...);
#endif
    default: return RunAs<ScalarReference, Op>(args...);
  }
}

}  // namespace vesk

#endif  // VESK_CORE_KERNELS_H
