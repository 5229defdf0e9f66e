// UTF-8 and UTF-16 conversion shared by the default host's services.
#ifndef VESK_HOST_UTF_H
#define VESK_HOST_UTF_H

#include <cstddef>
#include <string>

namespace vesk_host {

constexpr char32_t kReplacement = 0xFFFD;

// The byte count of the sequence that `lead` begins: 2 to 4 for the lead
// bytes of well-formed sequences, 1 for every other byte.
constexpr std::size_t Utf8LeadWidth(unsigned char lead) {
  return lead >= 0xC2 && lead <= 0xDF   ? 2
         : lead >= 0xE0 && lead <= 0xEF ? 3
         : lead >= 0xF0 && lead <= 0xF4 ? 4
                                        : 1;
}

// Decodes one UTF-8 character from [p, end). Returns the bytes it takes
// (at least 1) and stores the code point, or U+FFFD for an ill-formed
// sequence (overlong forms, surrogates and values past U+10FFFF included).
std::size_t DecodeUtf8(const unsigned char* p, const unsigned char* end,
                       char32_t* code);

// True when [text, text + length) is well-formed UTF-8.
bool IsValidUtf8(const char* text, std::size_t length);

// Appends `code` as UTF-16 units.
void AppendUtf16(char32_t code, std::basic_string<unsigned short>* out);

// Converts UTF-8 bytes to UTF-16 units, ill-formed sequences as U+FFFD.
std::basic_string<unsigned short> Utf8ToUtf16(const char* text,
                                              std::size_t length);

// Writes UTF-16 units as UTF-8 to `out` (when non-null) and returns the
// byte count; an unpaired surrogate becomes U+FFFD. Call it with a null
// `out` first to size the buffer.
std::size_t Utf16ToUtf8(const unsigned short* units, std::size_t count,
                        char* out);

// Decodes text in the host code page to UTF-16 units, ill-formed or
// truncated sequences as U+FFFD.
std::basic_string<unsigned short> CodePageToUtf16(const char* text,
                                                  std::size_t length);

}  // namespace vesk_host

#endif  // VESK_HOST_UTF_H
