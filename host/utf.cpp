#include "utf.h"

namespace vesk_host {
namespace {

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

bool IsHighSurrogate(unsigned unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(unsigned unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

std::size_t Utf8Width(char32_t code) {
  return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

char* PutUtf8(char32_t code, char* out) {
  const std::size_t width = Utf8Width(code);
  static const unsigned char kLead[] = {0, 0x00, 0xC0, 0xE0, 0xF0};
  for (std::size_t i = width - 1; i > 0; --i) {
    out[i] = static_cast<char>(0x80 | (code & 0x3F));
    code >>= 6;
  }
  out[0] = static_cast<char>(kLead[width] | code);
  return out + width;
}

}  // namespace

std::size_t DecodeUtf8(const unsigned char* p, const unsigned char* end,
                       char32_t* code) {
  const unsigned char lead = p[0];
  const std::size_t width = Utf8LeadWidth(lead);
  if (width == 1) {
    *code = lead < 0x80 ? lead : kReplacement;
    return 1;
  }
  // The lead holds the top 7 - width bits of the value; a value below
  // `minimum` would fit in fewer bytes (an overlong form).
  char32_t value = lead & (0x7Fu >> width);
  static const char32_t kMinimum[] = {0, 0, 0x80, 0x800, 0x10000};
  const char32_t minimum = kMinimum[width];
  std::size_t taken = 1;
  for (; taken < width; ++taken) {
    if (p + taken >= end || !IsContinuation(p[taken])) break;
    value = (value << 6) | (p[taken] & 0x3F);
  }
  const bool wellFormed = taken == width && value >= minimum &&
                          value <= 0x10FFFF &&
                          !(value >= 0xD800 && value <= 0xDFFF);
  *code = wellFormed ? value : kReplacement;
  return taken;
}

bool IsValidUtf8(const char* text, std::size_t length) {
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* end = p + length;
  while (p < end) {
    char32_t code;
    const std::size_t taken = DecodeUtf8(p, end, &code);
    // U+FFFD itself is well-formed: three bytes EF BF BD.
    if (code == kReplacement && taken != 3) return false;
    if (code == kReplacement &&
        (p[0] != 0xEF || p[1] != 0xBF || p[2] != 0xBD)) {
      return false;
    }
    p += taken;
  }
  return true;
}

void AppendUtf16(char32_t code, std::basic_string<unsigned short>* out) {
  if (code < 0x10000) {
    out->push_back(static_cast<unsigned short>(code));
    return;
  }
  code -= 0x10000;
  out->push_back(static_cast<unsigned short>(0xD800 | (code >> 10)));
  out->push_back(static_cast<unsigned short>(0xDC00 | (code & 0x3FF)));
}

std::basic_string<unsigned short> Utf8ToUtf16(const char* text,
                                              std::size_t length) {
  std::basic_string<unsigned short> units;
  const auto* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* end = p + length;
  while (p < end) {
    char32_t code;
    p += DecodeUtf8(p, end, &code);
    AppendUtf16(code, &units);
  }
  return units;
}

std::size_t Utf16ToUtf8(const unsigned short* units, std::size_t count,
                        char* out) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < count; ++i) {
    char32_t code = units[i];
    if (IsHighSurrogate(code) && i + 1 < count &&
        IsLowSurrogate(units[i + 1])) {
      code = 0x10000 + ((code - 0xD800) << 10) + (units[i + 1] - 0xDC00);
      ++i;
    } else if (IsHighSurrogate(code) || IsLowSurrogate(code)) {
      code = kReplacement;
    }
    bytes += Utf8Width(code);
    if (out != nullptr) out = PutUtf8(code, out);
  }
  return bytes;
}

}  // namespace vesk_host
