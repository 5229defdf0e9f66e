// VeskString: form encoding and escaped heap copies.
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "../host/text_services.h"
#include "byte_sets.h"
#include "direct_writer.h"
#include "internal.h"
#include "veskstring.h"

namespace {

using vesk::ByteSet;
using vesk::DirectWriter;

inline void AppendEscape(VeskString& out, unsigned char byte) {
  out.AppendChar('%');
  out.AppendHexByte(byte);
}

inline char* PutEscape(char* out, unsigned char byte) {
  out[0] = '%';
  out[1] = VeskString::HexChar(byte >> 4);
  out[2] = VeskString::HexChar(byte);
  return out + 3;
}

// One input byte, written directly: kept as it is, a space as '+' when
// asked, otherwise escaped.
inline char* PutEncodedByte(char* out, unsigned char byte, bool kept,
                            bool plusForSpace) {
  if (kept) {
    *out = static_cast<char>(byte);
    return out + 1;
  }
  if (byte == ' ' && plusForSpace) {
    *out = '+';
    return out + 1;
  }
  return PutEscape(out, byte);
}

// The same, byte by byte through AppendChar, where growth may be needed.
void AppendEncodedByte(VeskString& out, unsigned char byte, const ByteSet& kept,
                       bool plusForSpace) {
  if (kept[byte]) {
    out.AppendChar(static_cast<char>(byte));
  } else if (byte == ' ' && plusForSpace) {
    out.AppendChar('+');
  } else {
    AppendEscape(out, byte);
  }
}

// The vector test of a kept set: a mask of the kept bytes among 16.
using Classifier = unsigned (*)(const unsigned char* sixteen);
template <Classifier C>
using Rule = std::integral_constant<Classifier, C>;

#if defined(__SSE2__)
inline __m128i Load16(const unsigned char* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// A mask with bit i set when byte i of `chunk` is one of the 62 letters and
// digits. Signed compares leave every byte from 0x80 up outside both ranges.
inline unsigned LettersAndDigits(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  const __m128i letter = _mm_or_si128(chunk, _mm_set1_epi8(0x20));
  const __m128i isLetter =
      _mm_and_si128(_mm_cmpgt_epi8(letter, _mm_set1_epi8('a' - 1)),
                    _mm_cmplt_epi8(letter, _mm_set1_epi8('z' + 1)));
  const __m128i isDigit =
      _mm_and_si128(_mm_cmpgt_epi8(chunk, _mm_set1_epi8('0' - 1)),
                    _mm_cmplt_epi8(chunk, _mm_set1_epi8('9' + 1)));
  return static_cast<unsigned>(
      _mm_movemask_epi8(_mm_or_si128(isLetter, isDigit)));
}

// A mask with bit i set when byte i of `chunk` is below 0x80.
inline unsigned AsciiBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  return ~static_cast<unsigned>(_mm_movemask_epi8(chunk)) & 0xFFFF;
}

inline __m128i Equals(__m128i chunk, char c) {
  return _mm_cmpeq_epi8(chunk, _mm_set1_epi8(c));
}

inline unsigned Mask(__m128i bytes) {
  return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

// Letters, digits, '-' and '.'.
inline unsigned StrictUrlBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  return LettersAndDigits(p) |
         Mask(_mm_or_si128(Equals(chunk, '-'), Equals(chunk, '.')));
}

// Letters, digits and the 24 marks: 0x21 to 0x2F, then : ; = ? @ [ ] _ ~.
inline unsigned UrlBytes(const unsigned char* p) {
  const __m128i chunk = Load16(p);
  __m128i marks = _mm_and_si128(_mm_cmpgt_epi8(chunk, _mm_set1_epi8(0x20)),
                                _mm_cmplt_epi8(chunk, _mm_set1_epi8(0x30)));
  for (char c : {':', ';', '=', '?', '@', '[', ']', '_', '~'}) {
    marks = _mm_or_si128(marks, Equals(chunk, c));
  }
  return LettersAndDigits(p) | Mask(marks);
}

inline unsigned EveryByte(const unsigned char*) { return 0xFFFF; }

// Writes the 16 single-byte characters at `p`, whose kept ones `keptMask`
// marks, to `out`, which has room for three bytes per input byte.
char* PutChunk(const unsigned char* p, unsigned keptMask, char* out,
               bool plusForSpace) {
  if (keptMask == 0xFFFF) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Load16(p));
    return out + 16;
  }
  for (int i = 0; i < 16; ++i) {
    out = PutEncodedByte(out, p[i], (keptMask >> i & 1) != 0, plusForSpace);
  }
  return out;
}
#endif

// Calls `body` with the vector test of `kept` as a compile-time constant,
// so that it is inlined into the loops; null for a set without one.
template <class Body>
void WithRule(const ByteSet& kept, Body body) {
#if defined(__SSE2__)
  if (&kept == &vesk::kLettersAndDigits) return body(Rule<LettersAndDigits>());
  if (&kept == &vesk::kLettersDigitsDashDot) return body(Rule<StrictUrlBytes>());
  if (&kept == &vesk::kUrlCharacters) return body(Rule<UrlBytes>());
  if (&kept == &vesk::kAsciiBytes) return body(Rule<AsciiBytes>());
  if (&kept == &vesk::kEveryByte) return body(Rule<EveryByte>());
#endif
  body(Rule<nullptr>());
}

// Encodes [p, stop) into `out`, which has room for three bytes per input
// byte. Runs of kept bytes of the two common sets go 16 at a time.
template <Classifier Classify>
char* EncodeRun(const unsigned char* p, const unsigned char* stop, char* out,
                const ByteSet& kept, bool plusForSpace) {
#if defined(__SSE2__)
  if constexpr (Classify != nullptr) {
    for (; stop - p >= 16; p += 16) {
      out = PutChunk(p, Classify(p), out, plusForSpace);
    }
  }
#endif
  for (; p < stop; ++p) out = PutEncodedByte(out, *p, kept[*p], plusForSpace);
  return out;
}

// Appends every byte of `text` up to its NUL: kept bytes as they are, a
// space as '+' when asked, the rest escaped. Batches that surely fit are
// written directly; a byte that may need growth goes through AppendChar.
void AppendEncoded(VeskString& out, const char* text, const ByteSet& kept,
                   bool plusForSpace) {
  auto* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = p + std::strlen(text);
  const DirectWriter writer(out);
  WithRule(kept, [&](auto rule) {
    while (p < end) {
      const long batch = std::min<long>(end - p, writer.Room() / 3);
      if (batch <= 0) {
        AppendEncodedByte(out, *p++, kept, plusForSpace);
        continue;
      }
      writer.Commit(EncodeRun<decltype(rule)::value>(
          p, p + batch, writer.Begin(), kept, plusForSpace));
      p += batch;
    }
  });
}

// The byte count of the code-page character that each lead byte begins,
// asked of the host once per lead byte and operation: the code page does
// not change in the middle of one.
class CharacterWidths {
 public:
  // 1 for a single-byte character; otherwise the bytes to escape.
  long Of(unsigned char lead) {
    unsigned long& known = m_known[lead >> 6];
    const unsigned long bit = 1UL << (lead & 63);
    if ((known & bit) == 0) {
      const auto width = static_cast<unsigned>(PlayerBytesInChar(lead));
      m_width[lead] = width >= 2 ? width : 1;
      known |= bit;
    }
    return m_width[lead];
  }

  // Whether every byte below 0x80 is a character of its own, asked of the
  // host at most once per operation.
  bool AsciiIsSingleByte() {
    if (m_asciiKnown == 0) {
      m_asciiKnown = 1;
      for (int lead = 0; lead < 0x80; ++lead) {
        if (Of(static_cast<unsigned char>(lead)) != 1) m_asciiKnown = 2;
      }
    }
    return m_asciiKnown == 1;
  }

 private:
  unsigned long m_known[4] = {};  // which entries of m_width are filled
  unsigned m_width[256];
  int m_asciiKnown = 0;  // 0 not asked yet, 1 single-byte, 2 not
};

// Escapes whole characters of [p, stop) into `out`, which has room for
// three bytes per input byte; stops early before a multibyte character
// that reaches past `stop`. Returns the end of the output.
template <Classifier Classify>
char* EscapeRun(const unsigned char*& p, const unsigned char* stop,
                const unsigned char* end, char* out, const ByteSet& kept,
                CharacterWidths& widths) {
  while (p < stop) {
#if defined(__SSE2__)
    // ASCII chunks of single-byte characters go 16 bytes at a time.
    if constexpr (Classify != nullptr) {
      // Asking for every ASCII width pays off on long texts only.
      if (stop - p >= 16 && AsciiBytes(p) == 0xFFFF && end - p >= 256 &&
          widths.AsciiIsSingleByte()) {
        out = PutChunk(p, Classify(p), out, false);
        p += 16;
        continue;
      }
    }
#endif
    const long width = widths.Of(*p);
    if (width == 1) {
      out = PutEncodedByte(out, *p, kept[*p], false);
      ++p;
      continue;
    }
    const long bytes = std::min<long>(width, end - p);  // cut short by the NUL
    if (bytes > stop - p) break;
    for (long i = 0; i < bytes; ++i) out = PutEscape(out, *p++);
  }
  return out;
}

// Walks the text by code-page characters: a multibyte character is escaped
// byte by byte (as far as the text goes), a single byte by `kept`. Batches
// that surely fit are written directly; a character that may need growth
// goes through AppendChar.
char* EscapedCopy(const VeskString& source, const ByteSet& kept) {
  if (source.Length() == 0) return nullptr;
  VeskString work;  // cleared on every way out, exceptions included
  const DirectWriter writer(work);
  CharacterWidths widths;
  auto* p = reinterpret_cast<const unsigned char*>(source.Text());
  const unsigned char* const end = p + std::strlen(source.Text());
  WithRule(kept, [&](auto rule) {
    while (p < end) {
      const long batch = std::min<long>(end - p, writer.Room() / 3);
      const unsigned char* const start = p;
      if (batch > 0) {
        writer.Commit(EscapeRun<decltype(rule)::value>(
            p, p + batch, end, writer.Begin(), kept, widths));
      }
      if (p != start) continue;
      // No whole character fits: this one goes byte by byte.
      const long width = widths.Of(*p);
      if (width == 1) {
        AppendEncodedByte(work, *p++, kept, false);
      } else {
        const long bytes = std::min<long>(width, end - p);
        for (long i = 0; i < bytes; ++i) AppendEscape(work, *p++);
      }
    }
  });
  return CreateStr(work.Text() != nullptr ? work.Text() : vesk::kEmptyText);
}

}  // namespace

void VeskString::EncodeString(const char* text, int version, bool plusForSpace,
                              bool convertToCodePage) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(version >= 6 && convertToCodePage
                                        ? CreateMBCSFromUTF8(text, true)
                                        : nullptr);
  AppendEncoded(*this, converted.get() != nullptr ? converted.get() : text,
                vesk::kLettersAndDigits, plusForSpace);
}

void VeskString::EncodeStringHighAscii(const char* text, int version) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(
      version >= 6 ? CreateMBCSFromUTF8(text, true) : nullptr);
  AppendEncoded(*this, converted.get() != nullptr ? converted.get() : text,
                vesk::kAsciiBytes, false);
}

char* VeskString::CreateEscapedCStr(bool strict) const {
  return EscapedCopy(*this,
                     strict ? vesk::kLettersDigitsDashDot : vesk::kEveryByte);
}

char* VeskString::CreateUpper128ASCIIEscapedCStr() const {
  return EscapedCopy(*this, vesk::kAsciiBytes);
}

char* VeskString::CreateEncodedUrl() const {
  return EscapedCopy(*this, vesk::kUrlCharacters);
}
