// VeskString: form encoding and escaped heap copies.
#include "../host/text_services.h"
#include "byte_sets.h"
#include "internal.h"
#include "veskstring.h"

namespace {

using vesk::ByteSet;

inline void AppendEscape(VeskString& out, unsigned char byte) {
  out.AppendChar('%');
  out.AppendHexByte(byte);
}

// Appends every byte of `text` up to its NUL: kept bytes as they are, a
// space as '+' when asked, the rest escaped.
void AppendEncoded(VeskString& out, const char* text, const ByteSet& kept,
                   bool plusForSpace) {
  for (auto* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
    if (kept[*p]) {
      out.AppendChar(static_cast<char>(*p));
    } else if (*p == ' ' && plusForSpace) {
      out.AppendChar('+');
    } else {
      AppendEscape(out, *p);
    }
  }
}

// Walks the text by code-page characters: a multibyte character is escaped
// byte by byte (as far as the text goes), a single byte by `kept`.
char* EscapedCopy(const VeskString& source, const ByteSet& kept) {
  if (source.Length() == 0) return nullptr;
  VeskString work;  // cleared on every way out, exceptions included
  auto* p = reinterpret_cast<const unsigned char*>(source.Text());
  while (*p != 0) {
    const auto width = static_cast<unsigned>(PlayerBytesInChar(*p));
    if (width >= 2) {
      for (unsigned i = 0; i < width && *p != 0; ++i) AppendEscape(work, *p++);
    } else if (kept[*p]) {
      work.AppendChar(static_cast<char>(*p++));
    } else {
      AppendEscape(work, *p++);
    }
  }
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
