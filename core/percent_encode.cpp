// VeskString: form encoding and escaped heap copies.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "../host/text_services.h"
#include "byte_sets.h"
#include "direct_writer.h"
#include "internal.h"
#include "vector_blocks.h"
#include "veskstring.h"

namespace {

using vesk::ByteCodes;
using vesk::DirectWriter;

// Writes the code of `byte` to `out` as one four-byte copy, count byte
// included, and advances by the count. `out` needs room for three bytes and
// one to spare, which the place of the terminator always gives.
inline char* PutCode(char* out, const ByteCodes& codes, unsigned char byte) {
  const char* code = codes.code[byte];
  const int count = code[3];
  std::memcpy(out, code, 4);
  return out + count;
}

// The same through AppendChar, where growth may be needed.
void AppendCode(VeskString& out, const ByteCodes& codes, unsigned char byte) {
  const char* code = codes.code[byte];
  for (int i = 0; i < code[3]; ++i) out.AppendChar(code[i]);
}

// The vector test of a kept set: a mask of the kept bytes among 16.
using Classifier = unsigned (*)(const unsigned char* sixteen);
template <Classifier C>
using Rule = std::integral_constant<Classifier, C>;

#if defined(__SSE2__)
using vesk::BlockMask;
using vesk::InRange;
using vesk::Load16;

// A mask with bit i set when byte i at `p` is one of the 62 letters and
// digits. Bytes from 0x80 up fall outside both ranges.
inline unsigned LettersAndDigits(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  const __m128i letter = InRange(_mm_or_si128(chunk, _mm_set1_epi8(0x20)), 'a', 26);
  const __m128i digit = InRange(chunk, '0', 10);
  return BlockMask(_mm_or_si128(letter, digit));
}

// A mask with bit i set when byte i of `chunk` is below 0x80.
inline unsigned AsciiBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  return ~BlockMask(chunk) & 0xFFFF;
}

inline __m128i Equals(__m128i chunk, char c) {
  return _mm_cmpeq_epi8(chunk, _mm_set1_epi8(c));
}

// Letters, digits, '-' and '.'.
inline unsigned StrictUrlBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  return LettersAndDigits(p) |
         BlockMask(_mm_or_si128(Equals(chunk, '-'), Equals(chunk, '.')));
}

// Letters, digits and the 24 marks (0x21 to 0x2F, then : ; = ? @ [ ] _ ~):
// the printable bytes 0x21 to 0x7E but < > \ ^ ` { | }. '<' and '>', like
// '\' and '^', differ in bit 1 alone, so one compare tests each pair.
inline unsigned UrlBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  const __m128i pairs = _mm_or_si128(chunk, _mm_set1_epi8(0x02));
  const __m128i left_out =
      _mm_or_si128(_mm_or_si128(Equals(pairs, '>'), Equals(pairs, '^')),
                   _mm_or_si128(Equals(chunk, '`'), InRange(chunk, '{', 3)));
  return BlockMask(_mm_andnot_si128(left_out, InRange(chunk, 0x21, 0x7E - 0x21 + 1)));
}

inline unsigned EveryByte(const unsigned char*) { return 0xFFFF; }

// Writes the 16 single-byte characters at `p`, whose kept ones `keptMask`
// marks, to `out`, which has room for three bytes per input byte.
inline char* PutChunk(const unsigned char* p, unsigned keptMask, char* out,
                      const ByteCodes& codes) {
  if (keptMask == 0xFFFF) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Load16(p));
    return out + 16;
  }
  for (int i = 0; i < 16; ++i) out = PutCode(out, codes, p[i]);
  return out;
}
#endif

// Calls `body` with the vector test of the bytes that `codes` keeps as a
// compile-time constant, so that it is inlined into the loops; null for a
// rule without one. Always inlined: called out of line, it took the body's
// captures through the stack, and reloading them right after they were
// stored cost a short escaped copy about 5%.
template <class Body>
__attribute__((always_inline)) inline void WithRule(const ByteCodes& codes, Body body) {
#if defined(__SSE2__)
  if (&codes == &vesk::kFormCodes || &codes == &vesk::kFormPlusCodes) {
    return body(Rule<LettersAndDigits>());
  }
  if (&codes == &vesk::kStrictCodes) return body(Rule<StrictUrlBytes>());
  if (&codes == &vesk::kUrlCodes) return body(Rule<UrlBytes>());
  if (&codes == &vesk::kAsciiCodes) return body(Rule<AsciiBytes>());
  if (&codes == &vesk::kKeepAllCodes) return body(Rule<EveryByte>());
#endif
  body(Rule<nullptr>());
}

// Encodes [p, stop) into `out`, which has room for three bytes per input
// byte. Runs of kept bytes go 16 at a time.
template <Classifier Classify>
char* EncodeRun(const unsigned char* p, const unsigned char* stop, char* out,
                const ByteCodes& codes) {
#if defined(__SSE2__)
  if constexpr (Classify != nullptr) {
    // Two chunks a step: long runs of kept bytes take one branch per 32.
    for (; stop - p >= 32; p += 32) {
      const unsigned low = Classify(p), high = Classify(p + 16);
      if ((low & high) == 0xFFFF) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Load16(p));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), Load16(p + 16));
        out += 32;
        continue;
      }
      out = PutChunk(p + 16, high, PutChunk(p, low, out, codes), codes);
    }
    for (; stop - p >= 16; p += 16) out = PutChunk(p, Classify(p), out, codes);
  }
#endif
  for (; p < stop; ++p) out = PutCode(out, codes, *p);
  return out;
}

#if VESK_WITH_AVX2
// The form encoders' vector tests on 32 bytes, for machines with AVX2,
// which is asked of the processor once. Each marks the bytes that its
// 16-byte form marks.
using vesk::InRange32;
using vesk::Load32;

VESK_TARGET_AVX2 inline unsigned LettersAndDigits32(const unsigned char* p) {
  const __m256i chunk = Load32(p);
  const __m256i letter =
      InRange32(_mm256_or_si256(chunk, _mm256_set1_epi8(0x20)), 'a', 26);
  const __m256i digit = InRange32(chunk, '0', 10);
  return static_cast<unsigned>(_mm256_movemask_epi8(_mm256_or_si256(letter, digit)));
}

VESK_TARGET_AVX2 inline unsigned AsciiBytes32(const unsigned char* p) {
  return ~static_cast<unsigned>(_mm256_movemask_epi8(Load32(p)));
}

template <Classifier C>
constexpr Classifier kWide = nullptr;
template <>
constexpr Classifier kWide<LettersAndDigits> = LettersAndDigits32;
template <>
constexpr Classifier kWide<AsciiBytes> = AsciiBytes32;

// EncodeRun with one 32-byte test a step instead of two 16-byte ones.
template <Classifier Classify>
VESK_TARGET_AVX2 char* EncodeRunWide(const unsigned char* p, const unsigned char* stop,
                              char* out, const ByteCodes& codes) {
  for (; stop - p >= 32; p += 32) {
    const unsigned kept = kWide<Classify>(p);
    if (kept == ~0u) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), Load32(p));
      out += 32;
      continue;
    }
    out = PutChunk(p + 16, kept >> 16, PutChunk(p, kept & 0xFFFF, out, codes), codes);
  }
  return EncodeRun<Classify>(p, stop, out, codes);
}
#endif

// EncodeRun, in its AVX2 form where the rule has one and the machine AVX2.
template <Classifier Classify>
char* EncodeBatch(const unsigned char* p, const unsigned char* stop, char* out,
                  const ByteCodes& codes) {
#if VESK_WITH_AVX2
  if constexpr (kWide<Classify> != nullptr) {
    if (vesk::g_hasAvx2) return EncodeRunWide<Classify>(p, stop, out, codes);
  }
#endif
  return EncodeRun<Classify>(p, stop, out, codes);
}

// Appends the code of every byte of [p, end). Batches that surely fit are
// written directly; a byte that may need growth goes through AppendChar.
void AppendEncoded(VeskString& out, const unsigned char* p,
                   const unsigned char* end, const ByteCodes& codes) {
  const DirectWriter writer(out);
  WithRule(codes, [&](auto rule) {
    while (p < end) {
      const long batch = std::min<long>(end - p, writer.Room() / 3);
      if (batch <= 0) {
        AppendCode(out, codes, *p++);
        continue;
      }
      writer.Commit(EncodeBatch<decltype(rule)::value>(p, p + batch,
                                                       writer.Begin(), codes));
      p += batch;
    }
  });
}

void AppendEncoded(VeskString& out, const char* text, const ByteCodes& codes) {
  auto* p = reinterpret_cast<const unsigned char*>(text);
  AppendEncoded(out, p, p + std::strlen(text), codes);
}

// The byte count of the character that `lead` begins, asked of the host:
// 1 for a single-byte character, which the host may also give as 0. The
// escaped copies call this once for the lead byte of every character, in
// text order, and for no other byte.
inline unsigned long AskWidth(unsigned char lead) {
  const auto asked = static_cast<unsigned>(PlayerBytesInChar(lead));
  return asked >= 2 ? asked : 1;
}

// Escapes whole characters from `from` into `out` while they surely fit:
// `out` has room for three bytes per input byte up to `stop`. A multibyte
// character is escaped byte by byte, as far as the text (up to `end`)
// goes. Returns the end of the output and moves `from` past the characters
// written. When it stops at a character that reaches past `stop`, whose
// width it has already asked, it leaves that width in `pending` (otherwise
// 0), so that the host is not asked twice.
template <Classifier Classify>
char* EscapeRun(const unsigned char*& from, const unsigned char* stop,
                const unsigned char* end, char* out, const ByteCodes& rule,
                unsigned long& pending) {
  const unsigned char* p = from;  // kept in a register, unlike `from`
  while (p < stop) {
    unsigned long width;
#if defined(__SSE2__)
    if constexpr (Classify != nullptr) {
      if (stop - p >= 16) {
        // Sixteen characters of one byte each go through the vector test
        // at once; the widths are still asked one character at a time.
        int singles = 0;
        for (width = 1; singles < 16; ++singles) {
          width = AskWidth(p[singles]);
          if (width != 1) break;
        }
        if (singles == 16) {
          out = PutChunk(p, Classify(p), out, rule);
          p += 16;
          continue;
        }
        for (; singles > 0; --singles) out = PutCode(out, rule, *p++);
      } else {
        width = AskWidth(*p);
      }
    } else {
      width = AskWidth(*p);
    }
#else
    width = AskWidth(*p);
#endif
    if (width == 1) {
      out = PutCode(out, rule, *p++);
      continue;
    }
    const long bytes = static_cast<long>(
        std::min<unsigned long>(width, end - p));  // cut short by the NUL
    if (bytes > stop - p) {
      pending = width;
      break;
    }
    for (long i = 0; i < bytes; ++i) {
      out = PutCode(out, vesk::kEscapeAllCodes, *p++);
    }
  }
  from = p;
  return out;
}

// Appends [p, end) with every multibyte character escaped byte by byte (as
// far as the text goes) and every single-byte one coded by `rule`. Batches
// that surely fit are written directly; a character that may need growth
// goes through AppendChar.
void AppendEscaped(VeskString& out, const unsigned char* p,
                   const unsigned char* end, const ByteCodes& rule) {
  const DirectWriter writer(out);
  WithRule(rule, [&](auto classifier) {
    while (p < end) {
      unsigned long width = 0;
      const long batch = std::min<long>(end - p, writer.Room() / 3);
      if (batch > 0) {
        writer.Commit(EscapeRun<decltype(classifier)::value>(
            p, p + batch, end, writer.Begin(), rule, width));
        if (width == 0) continue;
      } else {
        width = AskWidth(*p);
      }
      // This character may need growth: it goes byte by byte.
      if (width == 1) {
        AppendCode(out, rule, *p++);
        continue;
      }
      const long bytes =
          static_cast<long>(std::min<unsigned long>(width, end - p));
      for (long i = 0; i < bytes; ++i) {
        AppendCode(out, vesk::kEscapeAllCodes, *p++);
      }
    }
  });
}

// Walks the text by code-page characters into a work string and hands out
// an exact copy of what it built.
char* EscapedCopy(const VeskString& source, const ByteCodes& rule) {
  if (source.Length() == 0) return nullptr;
  VeskString work;  // cleared on every way out, exceptions included
  auto* p = reinterpret_cast<const unsigned char*>(source.Text());
  AppendEscaped(work, p, p + std::strlen(source.Text()), rule);
  // The escapes hold no NUL, so the length measures the copy.
  return CreateStr(work.Text() != nullptr ? work.Text() : vesk::kEmptyText,
                   static_cast<unsigned long>(work.Length()));
}

}  // namespace

void VeskString::EncodeString(const char* text, int version, bool plusForSpace,
                              bool convertToCodePage) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(version >= 6 && convertToCodePage
                                        ? CreateMBCSFromUTF8(text, true)
                                        : nullptr);
  AppendEncoded(*this, converted.get() != nullptr ? converted.get() : text,
                plusForSpace ? vesk::kFormPlusCodes : vesk::kFormCodes);
}

void VeskString::EncodeStringHighAscii(const char* text, int version) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(
      version >= 6 ? CreateMBCSFromUTF8(text, true) : nullptr);
  AppendEncoded(*this, converted.get() != nullptr ? converted.get() : text,
                vesk::kAsciiCodes);
}

char* VeskString::CreateEscapedCStr(bool strict) const {
  return EscapedCopy(*this, strict ? vesk::kStrictCodes : vesk::kKeepAllCodes);
}

char* VeskString::CreateUpper128ASCIIEscapedCStr() const {
  return EscapedCopy(*this, vesk::kAsciiCodes);
}

char* VeskString::CreateEncodedUrl() const {
  return EscapedCopy(*this, vesk::kUrlCodes);
}
