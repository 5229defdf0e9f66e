// Host text services: the host code page and its conversions, the
// character-width rule, number-to-text conversion and the NaN value.
#ifndef VESK_HOST_TEXT_SERVICES_H
#define VESK_HOST_TEXT_SERVICES_H

// The quiet NaN.
double VeskNaN();

// The text of `value` as a heap text from Pelgc::SystemNew, which the caller
// releases with Pelgc::SystemDelete; null when the heap gives no block.
// The shortest digits that read back as `value`, in plain notation for
// 1e-6 <= |value| < 1e21 and as "1.5e-7" or "1e+21" outside; "NaN",
// "Infinity", "-Infinity", and "0" for both zeros.
char* ConvertDoubleToString(double value);

// ---- The host code page ----------------------------------------------------
// One process-wide setting, by the host's name for a page as HostCodePageAt
// lists them (the default first; aliases are not taken). An unknown or null
// name returns false and changes nothing.
bool SetHostCodePage(const char* name);
const char* HostCodePage();

// A code page by the host's name for it and the other names a user may
// know it by, space-separated.
struct HostCodePageNames {
  const char* name;
  const char* aliases;
};
// The names of the index-th code page that SetHostCodePage takes, the
// default first; null past the last.
const HostCodePageNames* HostCodePageAt(int index);

// `utf8` in the host code page as a host heap text requested with
// kMayReturnNull, characters the code page cannot hold as '?'. Null for a
// null text, for text that is not valid UTF-8 (the caller then uses the
// raw bytes), when the C library cannot convert to the page, and when the
// heap gives no block. The module always passes
// true for `terminate`; the text returned is NUL-terminated either way.
char* CreateMBCSFromUTF8(const char* utf8, bool terminate);

// The byte count of the code-page character that begins with `lead`: 1 in
// single-byte code pages and for bytes that lead no longer character.
int PlayerBytesInChar(unsigned char lead);

// Calls `observer` with every byte that PlayerBytesInChar is asked about,
// before it answers, so that a test can see which calls a caller makes;
// null, the default, calls nothing. One process-wide setting.
void ObservePlayerBytesInChar(void (*observer)(unsigned char lead));

#endif  // VESK_HOST_TEXT_SERVICES_H
