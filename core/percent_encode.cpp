// VeskString: form encoding and escaped heap copies.
#include <algorithm>
#include <cstring>

#include "byte_sets.h"
#include "direct_writer.h"
#include "host/text_services.h"
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

#if VESK_WITH_SSE2
using vesk::Load16;

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

// Encodes [p, stop) into `out` by `Rule`, which has room for three bytes
// per input byte. Runs of kept bytes go 16 at a time.
template <class Rule>
char* EncodeRun(const unsigned char* p, const unsigned char* stop, char* out) {
  constexpr const ByteCodes& codes = Rule::kCodes;
#if VESK_WITH_SSE2
  // Two chunks a step: long runs of kept bytes take one branch per 32.
  for (; stop - p >= 32; p += 32) {
    const unsigned low = Rule::Kept16(p), high = Rule::Kept16(p + 16);
    if ((low & high) == 0xFFFF) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out), Load16(p));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), Load16(p + 16));
      out += 32;
      continue;
    }
    out = PutChunk(p + 16, high, PutChunk(p, low, out, codes), codes);
  }
  for (; stop - p >= 16; p += 16) {
    out = PutChunk(p, Rule::Kept16(p), out, codes);
  }
#endif
  for (; p < stop; ++p) out = PutCode(out, codes, *p);
  return out;
}

#if VESK_WITH_AVX2
using vesk::Load32;

// EncodeRun with one 32-byte test a step instead of two 16-byte ones.
template <class Rule>
VESK_TARGET_AVX2 char* EncodeRunWide(const unsigned char* p,
                                     const unsigned char* stop, char* out) {
  constexpr const ByteCodes& codes = Rule::kCodes;
  for (; stop - p >= 32; p += 32) {
    const unsigned kept = Rule::Kept32(p);
    if (kept == ~0u) {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), Load32(p));
      out += 32;
      continue;
    }
    out = PutChunk(p + 16, kept >> 16, PutChunk(p, kept & 0xFFFF, out, codes),
                   codes);
  }
  return EncodeRun<Rule>(p, stop, out);
}
#endif

// EncodeRun, in its AVX2 form where the rule has one and the machine AVX2,
// which is asked of the processor once.
template <class Rule>
char* EncodeBatch(const unsigned char* p, const unsigned char* stop,
                  char* out) {
#if VESK_WITH_AVX2
  if constexpr (Rule::kHasKept32) {
    if (vesk::g_hasAvx2) return EncodeRunWide<Rule>(p, stop, out);
  }
#endif
  return EncodeRun<Rule>(p, stop, out);
}

// Appends the code of every byte of `text` by `Rule`. Batches that surely
// fit are written directly; a byte that may need growth goes through
// AppendChar.
template <class Rule>
void AppendEncoded(VeskString& out, const char* text) {
  auto* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = p + std::strlen(text);
  const DirectWriter writer(out);
  while (p < end) {
    const long batch = std::min<long>(end - p, writer.Room() / 3);
    if (batch <= 0) {
      AppendCode(out, Rule::kCodes, *p++);
      continue;
    }
    writer.Commit(EncodeBatch<Rule>(p, p + batch, writer.Begin()));
    p += batch;
  }
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
// goes; a single-byte one is coded by `Rule`. Returns the end of the
// output and moves `from` past the characters written. When it stops at a
// character that reaches past `stop`, whose width it has already asked,
// it leaves that width in `pending` (otherwise 0), so that the host is not
// asked twice.
template <class Rule>
char* EscapeRun(const unsigned char*& from, const unsigned char* stop,
                const unsigned char* end, char* out, unsigned long& pending) {
  constexpr const ByteCodes& codes = Rule::kCodes;
  const unsigned char* p = from;  // kept in a register, unlike `from`
  while (p < stop) {
    unsigned long width;
#if VESK_WITH_SSE2
    if (stop - p >= 16) {
      // Sixteen characters of one byte each go through the vector test at
      // once; the widths are still asked one character at a time.
      int singles = 0;
      unsigned asked = 0;
      for (; singles < 16; ++singles) {
        asked = static_cast<unsigned>(PlayerBytesInChar(p[singles]));
        if (asked >= 2) break;  // a multibyte character
      }
      if (singles == 16) {
        out = PutChunk(p, Rule::Kept16(p), out, codes);
        p += 16;
        continue;
      }
      for (; singles > 0; --singles) out = PutCode(out, codes, *p++);
      width = asked;
    } else {
      width = AskWidth(*p);
    }
#else
    width = AskWidth(*p);
#endif
    if (width == 1) {
      out = PutCode(out, codes, *p++);
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
// far as the text goes) and every single-byte one coded by `Rule`.
// Batches that surely fit are written directly; a character that may need
// growth goes through AppendChar.
template <class Rule>
void AppendEscaped(VeskString& out, const unsigned char* p,
                   const unsigned char* end) {
  const DirectWriter writer(out);
  while (p < end) {
    unsigned long width = 0;
    const long batch = std::min<long>(end - p, writer.Room() / 3);
    if (batch > 0) {
      writer.Commit(EscapeRun<Rule>(p, p + batch, end, writer.Begin(), width));
      if (width == 0) continue;
    } else {
      width = AskWidth(*p);
    }
    // This character may need growth: it goes byte by byte.
    if (width == 1) {
      AppendCode(out, Rule::kCodes, *p++);
      continue;
    }
    const long bytes =
        static_cast<long>(std::min<unsigned long>(width, end - p));
    for (long i = 0; i < bytes; ++i) {
      AppendCode(out, vesk::kEscapeAllCodes, *p++);
    }
  }
}

// Walks the text by code-page characters into a work string and hands out
// an exact copy of what it built. Kept out of line: inlined into the
// public copies, it made a short copy slower (docs/PERFORMANCE.md).
template <class Rule>
__attribute__((noinline)) char* EscapedCopy(const VeskString& source) {
  if (source.Length() == 0) return nullptr;
  VeskString work;  // cleared on every way out, exceptions included
  auto* p = reinterpret_cast<const unsigned char*>(source.Text());
  AppendEscaped<Rule>(work, p, p + std::strlen(source.Text()));
  // The escapes hold no NUL, so the length measures the copy.
  return CreateStr(work.Text() != nullptr ? work.Text() : vesk::kEmptyText,
                   static_cast<unsigned long>(work.Length()));
}

// `text` in the host code page when it is UTF-8 content and the caller
// asks for the conversion; null to encode the text as it is.
char* CodePageCopy(const char* text, int version, bool convertToCodePage) {
  return version >= kFirstUtf8Version && convertToCodePage
             ? CreateMBCSFromUTF8(text, true)
             : nullptr;
}

}  // namespace

void VeskString::EncodeString(const char* text, int version, bool plusForSpace,
                              bool convertToCodePage) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(
      CodePageCopy(text, version, convertToCodePage));
  const char* const source =
      converted.get() != nullptr ? converted.get() : text;
  if (plusForSpace) {
    AppendEncoded<vesk::FormPlusRule>(*this, source);
  } else {
    AppendEncoded<vesk::FormRule>(*this, source);
  }
}

void VeskString::EncodeStringHighAscii(const char* text, int version) {
  if (text == nullptr) return;
  const vesk::ScopedBlock converted(CodePageCopy(text, version, true));
  AppendEncoded<vesk::AsciiRule>(
      *this, converted.get() != nullptr ? converted.get() : text);
}

char* VeskString::CreateEscapedCStr(bool strict) const {
  return strict ? EscapedCopy<vesk::StrictRule>(*this)
                : EscapedCopy<vesk::KeepAllRule>(*this);
}

char* VeskString::CreateUpper128ASCIIEscapedCStr() const {
  return EscapedCopy<vesk::AsciiRule>(*this);
}

char* VeskString::CreateEncodedUrl() const {
  return EscapedCopy<vesk::UrlRule>(*this);
}
