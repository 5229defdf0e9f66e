// Stepping over prefixes, schemes, whitespace and slashes at the start of
// 8-bit and 16-bit text, without copying it.
#include "ctext_scan.h"
#include "veskstring.h"

namespace {

// Element values: bytes unsigned, 16-bit units as they are.
inline unsigned Value(char c) { return static_cast<unsigned char>(c); }
inline unsigned Value(unsigned short unit) { return unit; }

// The module's case fold for a byte value; a 16-bit unit above 0xFF is
// left alone, so it matches no prefix byte.
inline unsigned Fold(unsigned value) {
  return value <= 0xFF ? vesk::FoldByte(static_cast<char>(value)) : value;
}
inline unsigned Same(unsigned value) { return value; }

// Walks text and prefix together while the folded values agree; the prefix
// matched when its own terminator is where the walk stopped.
template <unsigned (*fold)(unsigned), typename Unit>
const Unit* Strip(const Unit* text, const char* prefix) {
  if (text == nullptr || prefix == nullptr) return nullptr;
  unsigned long i = 0;
  while (prefix[i] != '\0' && text[i] != 0 &&
         fold(Value(text[i])) == fold(Value(prefix[i]))) {
    ++i;
  }
  return prefix[i] == '\0' ? text + i : nullptr;
}

// The C locale's isspace set, fixed here so that a locale set by the
// process cannot widen it.
inline bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

}  // namespace

const char* StripPrefix(const char* text, const char* prefix) {
  return Strip<Fold>(text, prefix);
}

const unsigned short* StripPrefix(const unsigned short* text,
                                  const char* prefix) {
  return Strip<Fold>(text, prefix);
}

const char* StripPrefixCaseSensitive(const char* text, const char* prefix) {
  return Strip<Same>(text, prefix);
}

const unsigned short* StripPrefixCaseSensitive(const unsigned short* text,
                                               const char* prefix) {
  return Strip<Same>(text, prefix);
}

const char* StripWhitespace(const char* text) {
  if (text == nullptr) return nullptr;
  while (IsSpace(*text)) ++text;
  return text;
}

const char* StripScheme(const char* text, const char* scheme) {
  return StripPrefix(StripWhitespace(text), scheme);
}

const char* StripAtMostTwoSlashes(const char* text) {
  if (text == nullptr || text[0] != '/') return text;
  return text[1] == '/' ? text + 2 : text + 1;
}
