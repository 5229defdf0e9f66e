// The text module: VeskString, an owned, growable, NUL-terminated 8-bit
// text, and free functions over C text.
//
// Every buffer comes from the host memory manager (host/memory_manager.h).
// Heap texts handed to callers are released with Pelgc::SystemDelete.
#ifndef VESK_CORE_VESKSTRING_H
#define VESK_CORE_VESKSTRING_H

#include <climits>
#include <cstdarg>

static_assert(sizeof(int) == 4, "int must be 32-bit");
static_assert(sizeof(long) == 8 && sizeof(unsigned long) == 8,
              "long must be 64-bit");
static_assert(sizeof(void*) == 8, "pointers must be 64-bit");

namespace marlo {
class String;
}
namespace vesk {
class DirectWriter;
}
namespace Pelgc {
namespace GCAPI {
template <class T>
class GCRef;
}
}  // namespace Pelgc
class CorePlayer;
class ScriptObject;

// Case tables: a byte c folds as c ^ table[(unsigned char)c]. Only ASCII
// letters change.
extern const unsigned char g_tolower_map[256];
extern const unsigned char g_toupper_map[256];

// A string is in one of three states:
//   zeroed        Text() null, Length() 0, Capacity() 0
//   shared empty  Text() the module's constant "", Length() 0, Capacity() 1
//   own buffer    Text() a host heap block of Capacity() bytes, with
//                 Length() < Capacity() and a NUL at Text()[Length()]
// Copies are deep; no two strings share a buffer.
class VeskString {
 public:
  // ---- Storage and assignment ----
  VeskString() noexcept : m_text(nullptr), m_length(0), m_capacity(0) {}
  explicit VeskString(marlo::String* string);
  // Explicit so that no comparison or call allocates behind the caller's back.
  explicit VeskString(const char* text);
  // An empty string in a buffer of exactly `capacity` bytes; 0 gives a
  // zeroed string, a negative capacity is reported as too large.
  explicit VeskString(int capacity);
  VeskString(const VeskString& other);
  ~VeskString() { Clear(); }

  VeskString& operator=(const VeskString& other);
  VeskString& operator=(const char* text);

  // The UTF-8 text of a script VM string.
  void Set(marlo::String* string);
  // A copy of C text, at most `length` bytes of it; -1 measures with strlen.
  void Set(const char* text, int length);
  // A copy of `other`'s text up to its first NUL.
  void Copy(const VeskString& other);
  // Releases the buffer; the string ends zeroed.
  void Clear() noexcept;
  // Overwrites the whole buffer with zeros, then Clear.
  void SecureClear() noexcept;

  const char* Text() const { return m_text; }
  int Length() const { return m_length; }
  int Capacity() const { return m_capacity; }

  // ---- Appending and growth ----
  // Appends one byte (NUL included). A failed growth drops it silently.
  void AppendChar(char c) {
    // The length is read once and widened as unsigned: in a loop of appends
    // it is reloaded from the store just made, and a sign-extending reload
    // of a fresh store stalls (about 3x the whole append on Zen 4).
    const int length = m_length;
    if (length + 1 >= m_capacity && !EnsureCapacity(length + 1)) return;
    PutCharAndNul(m_text + static_cast<unsigned int>(length), c);
    m_length = length + 1;
  }
  // Appends C text; null appends nothing.
  void AppendString(const char* text);
  // Appends at most `n` bytes of the NUL-terminated `text`.
  void AppendString(const char* text, int n);
  // Appends exactly the three bytes at `chars`, whatever their values.
  void AppendThreeChars(const char* chars) {
    AppendChar(chars[0]);
    AppendChar(chars[1]);
    AppendChar(chars[2]);
  }
  // Appends the two upper-case hex digits of `byte`, high nibble first.
  void AppendHexByte(unsigned char byte) {
    AppendChar(HexChar(byte >> 4));
    AppendChar(HexChar(byte));
  }
  // The upper-case hex digit of the low four bits of `value`.
  static char HexChar(int value) { return "0123456789ABCDEF"[value & 15]; }
  // Shortens the text to `newLength` bytes; never lengthens.
  void Truncate(unsigned int newLength);
  // Removes trailing tabs, line feeds, carriage returns and spaces.
  void RemoveTrailingSpaces();

  // ---- Formatted appending ----
  // Every character goes through AppendChar or AppendString, so growth and
  // dropped characters behave as for those appends.
  //
  // Appends `value` in `radix` (2 to 36; digits 0-9 then lower-case a-z).
  // Another radix appends nothing. Only radix 10 writes a '-'; any other
  // radix writes a negative value as its 64-bit two's-complement pattern.
  void AppendInt(long value, int radix);
  // Appends `value` in decimal with '0's in front of it (and of its sign) up
  // to `digits` characters: (-5, 3) gives "0-5".
  void AppendNDigits(int value, int digits);
  // Appends the host's text for `value` (ConvertDoubleToString).
  void AppendDouble(double value);
  // Appends `format` with its directives carried out, each a '%' and the one
  // character after it; there are no flags, widths or precisions:
  //   %%  '%'                      %c  int: its low byte
  //   %p  pointer: "0x" and hex    %b  int: 't' if non-zero, else 'f'
  //   %s  C text; null: nothing    %f  double: as AppendDouble
  //   %d  int: decimal             %3  C text: its first three bytes
  //   %x  int: sign-extended, hex  %2  int: as AppendNDigits(value, 2)
  // Any other character after '%' is skipped with it and takes no argument;
  // a '%' at the very end is dropped. A null format appends nothing.
  void AppendFormatV(const char* format, va_list args);
  // No printf format attribute: g++ and clang reject '%b', '%2' and '%3'.
  void AppendFormat(const char* format, ...);
  // Clear, then AppendFormat: a string that receives nothing stays zeroed.
  void Format(const char* format, ...);

  // ---- Comparison, case and slicing ----
  bool operator==(const VeskString& other) const;
  bool operator==(const char* other) const;
  // Byte order; a zeroed string orders as the empty text.
  bool operator<(const VeskString& other) const;
  // Fold ASCII letters in place up to the first NUL. A zeroed string is
  // left as it is.
  void ToUpper();
  void ToLower();
  // Characters `start` to `end`, both included; `end` -1 means the last.
  // Arguments outside the string give a zeroed string.
  VeskString SubString(int start, int end) const;
  // The byte at `index` as a signed 8-bit code, or NaN outside the string.
  double CharCodeAt(int index) const;
  // A one-character string of the low byte of `code` truncated to int; a
  // zero byte gives the shared empty state.
  static VeskString CharFromCode(double code);

  // ---- Percent-encoding ----
  // Appends `text` form-encoded: ASCII letters and digits as they are, a
  // space as '+' when `plusForSpace`, every other byte as %XX. Text of
  // `version` 6 and above goes to the host code page first when
  // `convertToCodePage`. A null text appends nothing.
  void EncodeString(const char* text, int version, bool plusForSpace,
                    bool convertToCodePage);
  // Appends `text` with only its bytes 0x80 to 0xFF as %XX; text of
  // `version` 6 and above goes to the host code page first.
  void EncodeStringHighAscii(const char* text, int version);
  // Escaped heap copies of the text up to its first NUL, for the caller to
  // release with Pelgc::SystemDelete; null for an empty string or when the
  // heap gives no block. Multibyte code-page characters are escaped byte by
  // byte; single bytes by the rule of each:
  //   strict: keeps letters, digits, '-' and '.'; otherwise keeps all.
  char* CreateEscapedCStr(bool strict) const;
  //   keeps 0x01 to 0x7F.
  char* CreateUpper128ASCIIEscapedCStr() const;
  //   keeps letters, digits and !"#$%&'()*+,-./:;=?@[]_~
  char* CreateEncodedUrl() const;
  // Appends the object's variables as form-encoded name=value pairs, '?'
  // before the first (nothing with `noQuestionMark`) unless the text holds
  // '=', '&' or '?' already, then '&' between. Variables whose name starts
  // with '$', whose flags have bit 0x0001, or whose name or value the host
  // cannot give are left out.
  void EncodeVariables(CorePlayer* player,
                       Pelgc::GCAPI::GCRef<ScriptObject> object, int version,
                       bool noQuestionMark);

 private:
  friend class vesk::DirectWriter;

  // Makes room for `required` + 1 bytes; false when the heap gives none.
  bool EnsureCapacity(int required);
  // Writes `c` and a NUL after it with one two-byte store.
  static void PutCharAndNul(char* at, char c) {
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    const unsigned short pair = static_cast<unsigned char>(c);
#else
    const unsigned short pair =
        static_cast<unsigned short>(static_cast<unsigned char>(c) << 8);
#endif
    __builtin_memcpy(at, &pair, 2);
  }
  void AppendBytes(const char* text, unsigned long n);

  char* m_text;
  int m_length;
  int m_capacity;
};

// ---- C-text utilities ----
// Free functions over NUL-terminated text. None of them reads beyond a
// terminator, nor beyond `n` bytes in the counted forms. Pointer results
// point into the text argument itself, never into a copy.

// -- Comparison and search --
// Case-insensitive functions fold 'A' to 'Z' through g_tolower_map; every
// other byte, 0x80 to 0xFF included, stands for itself.

// The index searches return this when nothing is found: 0xFFFFFFFF held in
// 64 bits, not -1.
constexpr long kVeskStrNotFound = 4294967295L;

// True when both are non-null and equal ignoring case.
bool StrEqual(const char* a, const char* b);
// Three-way comparison ignoring case: the difference of the first folded
// bytes that differ, as unsigned values. Neither text may be null.
int VeskStrICmp(const char* a, const char* b);
// The same over at most `n` bytes; `n` 0 gives 0 and reads nothing.
int VeskStrNICmp(const char* a, const char* b, unsigned long n);
// False when either is null; otherwise byte-exact or case-insensitive.
bool VarStrEqual(const char* a, const char* b, bool caseSensitive);
// Character searches test each byte as a signed 8-bit value against `c`, so
// a byte of 0x80 or more is found as -128 to -1 and an argument of 128 to
// 255 never matches. The terminator never matches: `c` 0 finds nothing.
// `s` may not be null.
const char* VeskStrChr(const char* s, int c);
long VeskStrChrIndex(const char* s, int c);
const char* VeskStrRChr(const char* s, int c);
// The first occurrence of `needle` in `haystack`. A null or empty needle
// gives `haystack` itself, null included, without reading it.
const char* VeskStrStr(const char* haystack, const char* needle);
const char* VeskStrCaseStr(const char* haystack, const char* needle);
// The offset of VeskStrStr's match, or kVeskStrNotFound for null.
long VeskStrStrIndex(const char* haystack, const char* needle);

// -- Prefix and whitespace stripping --
// A pointer just after `prefix` at the start of `text`, or null when it is
// not there or either is null. The case-insensitive forms match 'a' to 'z'
// with 'A' to 'Z' only. In 16-bit text each unit is compared with the
// prefix byte read unsigned, so a unit above 0xFF matches no prefix byte.
const char* StripPrefix(const char* text, const char* prefix);
const unsigned short* StripPrefix(const unsigned short* text,
                                  const char* prefix);
const char* StripPrefixCaseSensitive(const char* text, const char* prefix);
const unsigned short* StripPrefixCaseSensitive(const unsigned short* text,
                                               const char* prefix);
// Steps over tab, line feed, vertical tab, form feed, carriage return and
// space, whatever locale the process has set. Null gives null.
const char* StripWhitespace(const char* text);
// StripPrefix(StripWhitespace(text), scheme).
const char* StripScheme(const char* text, const char* scheme);
// Steps over one or two leading '/'. Null gives null.
const char* StripAtMostTwoSlashes(const char* text);

// -- Number parsing and hex digits --
// The value of a hex digit of either case, or -1.
int ParseHexChar(char c);
bool IsHexChar(char c);
// Decodes a pair of hex digits, high first. Returns how many leading
// characters of the pair are digits (0, 1 or 2) and writes the byte to
// *out only when it returns 2.
int ParseHexCouple(char hi, char lo, char* out);
// Decimal readers: an optional leading '-', then digits up to the first
// non-digit. No '+', no whitespace. Null or no digits give 0; too many
// digits wrap around in the width of the result. The counted forms look
// at no more than `n` elements, the '-' included.
int ToInt(const char* text);
int ToInt(const char* text, unsigned long n);
int ToInt(const unsigned short* text);
long long ToInt64(const char* text);
long long ToInt64(const char* text, unsigned long n);
// As ToInt64, without a sign: a leading '-' gives 0.
unsigned long long ToUInt64(const char* text);

// -- Heap texts --
// Each result is a host heap block owned by the caller, who releases it
// with Pelgc::SystemDelete. Sizes are exact; a size of 2^32 - 1 or more is
// reported as too large, and null comes back when the heap gives nothing.
// A bare 0 or nullptr is ambiguous among the CreateStr forms: pass a typed
// pointer or an unsigned long count.

// A copy of `text`; null gives null.
char* CreateStr(const char* text);
// An empty text in a block of n + 1 bytes. The largest n wraps that size
// to 0 and gives null without a request.
char* CreateStr(unsigned long n);
// Exactly the first `n` bytes of `text`, NULs included, and a NUL. `text`
// must have `n` readable bytes; null gives null.
char* CreateStr(const char* text, unsigned long n);
// The UTF-8 form of a script VM string; null gives an empty text.
char* CreateStr(marlo::String* string);
// `a` followed by `b`; null when either is null.
char* ConcatStr(const char* a, const char* b);
// `value` in decimal, in a block of 21 bytes; null when the heap gives
// nothing.
char* U64ToChar(unsigned long long value);

#endif  // VESK_CORE_VESKSTRING_H
