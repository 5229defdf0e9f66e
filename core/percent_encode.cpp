// VeskString: form encoding and escaped heap copies.
#include <algorithm>
#include <cstring>
#include <type_traits>

#include "byte_sets.h"
#include "direct_writer.h"
#include "host/text_services.h"
#include "internal.h"
#include "kernels.h"
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

// Writes the kWidth single-byte characters at `p`, whose kept ones `kept`
// marks, to `out`, which has room for three bytes per input byte: a block
// kept whole as one copy, otherwise each half as a block of its own down to
// 16 bytes, then byte by byte.
template <std::size_t kWidth>
char* PutBlock(const unsigned char* p, std::uint32_t kept, char* out,
               const ByteCodes& codes) {
  constexpr std::uint32_t kAll = kWidth == 32 ? ~0u : (1u << kWidth) - 1;
  if (kept == kAll) {
    std::memcpy(out, p, kWidth);
    return out + kWidth;
  }
  if constexpr (kWidth > 16) {
    constexpr std::size_t kHalf = kWidth / 2;
    out = PutBlock<kHalf>(p, kept & ((1u << kHalf) - 1), out, codes);
    return PutBlock<kHalf>(p + kHalf, kept >> kHalf, out, codes);
  }
  for (std::size_t i = 0; i < kWidth; ++i) out = PutCode(out, codes, p[i]);
  return out;
}

// Encodes [p, stop) into `out` by `Rule`, which has room for three bytes
// per input byte: in blocks of K, then of K's narrower forms.
template <class Rule, class K>
char* EncodeRun(const unsigned char* p, const unsigned char* stop, char* out) {
  if constexpr (K::kWidth > 1) {
    for (; stop - p >= static_cast<long>(K::kWidth); p += K::kWidth) {
      const std::uint32_t kept = K::template Kept<Rule::kKept>(p);
      out = PutBlock<K::kWidth>(p, kept, out, Rule::kCodes);
    }
    return EncodeRun<Rule, typename K::Narrower>(p, stop, out);
  }
  for (; p < stop; ++p) out = PutCode(out, Rule::kCodes, *p);
  return out;
}

template <class Rule>
struct Encoder {
  template <class K>
  struct With {
    static char* Run(const unsigned char* p, const unsigned char* stop,
                     char* out) {
      return EncodeRun<Rule, K>(p, stop, out);
    }
  };
};

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
    writer.Commit(vesk::Dispatch<Encoder<Rule>::template With>(p, p + batch,
                                                               writer.Begin()));
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
template <class Rule, class K>
char* EscapeRun(const unsigned char*& from, const unsigned char* stop,
                const unsigned char* end, char* out, unsigned long& pending) {
  constexpr const ByteCodes& codes = Rule::kCodes;
  constexpr long kWidth = static_cast<long>(K::kWidth);
  const unsigned char* p = from;
  while (p < stop) {
    if (stop - p < kWidth) {
      if constexpr (kWidth > 1) {
        from = p;
        return EscapeRun<Rule, typename K::Narrower>(from, stop, end, out,
                                                     pending);
      }
    }
    // A block of single-byte characters goes through the kept test at
    // once; the widths are still asked one character at a time.
    long singles = 0;
    unsigned asked = 0;
    for (; singles < kWidth; ++singles) {
      asked = static_cast<unsigned>(PlayerBytesInChar(p[singles]));
      if (asked >= 2) break;  // a multibyte character
    }
    if (singles == kWidth) {
      // A single byte goes by its code, which needs no kept test.
      const std::uint32_t kept =
          kWidth > 1 ? K::template Kept<Rule::kKept>(p) : 0;
      out = PutBlock<K::kWidth>(p, kept, out, codes);
      p += kWidth;
      continue;
    }
    for (; singles > 0; --singles) out = PutCode(out, codes, *p++);
    const unsigned long width = asked;
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
template <class Rule, class K>
void AppendEscaped(VeskString& out, const unsigned char* p,
                   const unsigned char* end) {
  const DirectWriter writer(out);
  while (p < end) {
    unsigned long width = 0;
    const long batch = std::min<long>(end - p, writer.Room() / 3);
    if (batch > 0) {
      writer.Commit(
          EscapeRun<Rule, K>(p, p + batch, end, writer.Begin(), width));
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
// an exact copy of what it built.
template <class Rule>
struct EscapedCopy {
  template <class K>
  struct With {
    // Blocks of 16 bytes at most: the copies make a host call for every
    // character, and 32-byte blocks made them slower (docs/PERFORMANCE.md).
    using Block = std::conditional_t<(K::kWidth > 16), typename K::Narrower, K>;
    static char* Run(const VeskString* source) {
      if (source->Length() == 0) return nullptr;
      VeskString work;  // cleared on every way out, exceptions included
      auto* p = reinterpret_cast<const unsigned char*>(source->Text());
      AppendEscaped<Rule, Block>(work, p, p + std::strlen(source->Text()));
      // The escapes hold no NUL, so the length measures the copy.
      return CreateStr(work.Text() != nullptr ? work.Text() : vesk::kEmptyText,
                       static_cast<unsigned long>(work.Length()));
    }
  };
};

template <class Rule>
char* Escaped(const VeskString& source) {
  return vesk::Dispatch<EscapedCopy<Rule>::template With>(&source);
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
  return strict ? Escaped<vesk::StrictRule>(*this)
                : Escaped<vesk::KeepAllRule>(*this);
}

char* VeskString::CreateUpper128ASCIIEscapedCStr() const {
  return Escaped<vesk::AsciiRule>(*this);
}

char* VeskString::CreateEncodedUrl() const {
  return Escaped<vesk::UrlRule>(*this);
}
