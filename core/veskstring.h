// The text module: VeskString, an owned, growable, NUL-terminated 8-bit
// text, and free functions over C text in the manner of the C string
// library. This header is the module's manual: each declaration is
// described by the comment above it.
//
// Example: a URL built, encoded, copied out and released.
//
//   VeskString url("https://host/find");
//   url.AppendString("?q=");
//   url.EncodeString(query, version, /*plusForSpace=*/true,
//                    /*convertToCodePage=*/true);
//   char* copy = url.CreateEncodedUrl();  // the caller's heap text, or null
//   if (copy != nullptr) {
//     Send(copy);
//     Pelgc::SystemDelete(copy);  // declared in host/memory_manager.h
//   }
//   // `url` releases its own buffer when it is destroyed.
//
// Ground rules:
// - Every buffer comes from the host memory manager, declared in
//   host/memory_manager.h. A `char*` that a function here builds is a heap
//   text owned by the caller, who releases it with Pelgc::SystemDelete,
//   declared there too.
// - Sizes are signed 32-bit for a string and unsigned 64-bit for counts
//   taken by the free functions. A request beyond what the heap guard
//   allows is handed to Pelgc::GCHeap::SignalObjectTooLarge (the too-large
//   report), and a string length beyond the signed 32-bit range to
//   Pelgc::GCHeap::Abort (the heap abort); neither returns.
// - The module throws nothing of its own. std::bad_alloc from the host heap
//   and anything a host service throws pass through to the caller; a
//   temporary string inside the module releases its buffer on the way.
// - A null pointer is accepted almost everywhere and gives null, 0, false
//   or no change. The exceptions say so: the searches and the
//   case-insensitive comparisons, AppendThreeChars and the '%3' directive,
//   and ToUpper and ToLower on a zeroed string.
// - A string is used by one thread at a time. The free functions keep no
//   state and may run on any thread; the case tables are constant.
//
// "On failure" lines name what an operation leaves when the host heap gives
// no block (and, where it says so, when it throws): the string unchanged,
// the string zeroed, characters dropped (what was to be added is partly
// missing, nothing else changes), or a null result.
#ifndef VESK_CORE_VESKSTRING_H
#define VESK_CORE_VESKSTRING_H

#include <cassert>
#include <climits>
#include <cstdarg>
#include <cstdint>

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

// ---- Content versions and variable flags ----
// The first content `version` whose texts are UTF-8. The encoders convert
// only such texts to the host code page: texts of earlier versions are in
// it already.
constexpr int kFirstUtf8Version = 6;
// The bit of a script variable's flags that leaves it out of
// EncodeVariables. What the other bits mean is the host's business.
constexpr std::uint16_t kDontEnumFlag = 0x0001;

// ---- Case tables ----
// A byte c folds as c ^ table[(unsigned char)c]: g_tolower_map holds 0x20
// at 'A' to 'Z' and 0 elsewhere, g_toupper_map 0x20 at 'a' to 'z'. Only
// ASCII letters change; bytes 0x80 to 0xFF never do.
extern const unsigned char g_tolower_map[256];
extern const unsigned char g_toupper_map[256];

// ---- VeskString ----
// Invariants. A string is always in one of three states:
//   zeroed        Text() null, Length() 0, Capacity() 0
//   shared empty  Text() the module's constant "", Length() 0, Capacity() 1;
//                 never written nor released
//   own buffer    Text() a host heap block of Capacity() bytes, with
//                 Length() < Capacity() and a NUL at Text()[Length()]
// The text may hold NULs before Length() (appended as bytes); operations
// that read the string as C text stop at its first NUL. A string owns its
// buffer alone: copies are deep, and destruction releases the buffer as
// Clear does. A zeroed string and an empty text differ under == and are
// equivalent under <.
class VeskString {
 public:
  // ---- Storage and assignment ----
  // The constructors and setters below copy their source, measured with
  // strlen, into a new buffer of exactly its length plus one (Set keeps a
  // buffer that is already large enough); an empty source gives the shared
  // empty state. A source of 2^31 - 1 bytes or more gets the too-large
  // report and nothing is copied.
  // On failure: zeroed (an old buffer is already released).

  VeskString() noexcept : m_text(nullptr), m_length(0), m_capacity(0) {}
  // The UTF-8 text of a script VM string; null or empty gives the shared
  // empty state.
  explicit VeskString(marlo::String* string);
  // Explicit so that no comparison or call allocates behind the caller's back.
  explicit VeskString(const char* text);
  // An empty string in a buffer of exactly `capacity` bytes; 0 gives a
  // zeroed string, a negative capacity gets the too-large report.
  explicit VeskString(int capacity);
  // A copy of `other`'s text up to its first NUL, in a buffer sized for it.
  VeskString(const VeskString& other);
  ~VeskString() { Clear(); }

  // Copy(other), unless `other` is this string.
  VeskString& operator=(const VeskString& other);
  // Set(text, -1).
  VeskString& operator=(const char* text);

  // The UTF-8 text of a script VM string.
  void Set(marlo::String* string);
  // A copy of C text, at most `length` bytes of it (no more are read, so the
  // text need not be terminated); -1 measures with strlen. Null gives the
  // shared empty state. A buffer already large enough is kept.
  void Set(const char* text, int length);
  // A copy of `other`'s text up to its first NUL; a zeroed `other` gives a
  // zeroed string.
  void Copy(const VeskString& other);
  // Releases the buffer; the string ends zeroed. Never throws.
  void Clear() noexcept;
  // Overwrites the whole buffer with zeros, then Clear. Never throws.
  void SecureClear() noexcept;

  [[nodiscard]] const char* Text() const { return m_text; }
  [[nodiscard]] int Length() const { return m_length; }
  [[nodiscard]] int Capacity() const { return m_capacity; }

  // ---- Appending and growth ----
  // The one write path into a string. Growth moves the text to a new block:
  // up to a capacity of 1023 to what is required plus 256, from 1024 to
  // what is required plus half the capacity, so a run of appends costs
  // amortised constant time per byte. A capacity beyond the signed 32-bit
  // range gets the too-large report. None of `text` or `chars` may lie
  // inside the string's own buffer.
  // On failure: unchanged; the bytes of that append are dropped and nothing
  // is reported. Appends that go byte by byte go on with the next byte.

  // Appends one byte (NUL included).
  void AppendChar(char c) {
    const int length = m_length;
    if (length + 1 >= m_capacity && !EnsureCapacity(length + 1)) return;
    PutCharAndNul(m_text + static_cast<unsigned int>(length), c);
    m_length = length + 1;
  }
  // Appends C text; null appends nothing. Leaves at least one byte free
  // after the terminator. A new length of 2^31 - 1 or more gets the heap
  // abort.
  void AppendString(const char* text);
  // Appends the bytes of `text` before its first NUL, at most `n` of them.
  // `text` is measured with strnlen up to `n` bytes, so it needs no NUL
  // within them. A negative `n` counts as 0: nothing is appended, though a
  // full or shared buffer still grows.
  void AppendString(const char* text, int n);
  // Appends exactly the three bytes at `chars`, whatever their values, each
  // as AppendChar does. `chars` may not be null.
  void AppendThreeChars(const char* chars) {
    assert(chars != nullptr);
    AppendChar(chars[0]);
    AppendChar(chars[1]);
    AppendChar(chars[2]);
  }
  // Appends the two upper-case hex digits of `byte`, high nibble first: the
  // digits of every percent escape of the module.
  void AppendHexByte(unsigned char byte) {
    AppendChar(HexChar(byte >> 4));
    AppendChar(HexChar(byte));
  }
  // The upper-case hex digit of the low four bits of `value`.
  [[nodiscard]] static constexpr char HexChar(int value) {
    return "0123456789ABCDEF"[value & 15];
  }
  // Shortens the text to `newLength` bytes; never lengthens, never
  // allocates, never fails.
  void Truncate(unsigned int newLength);
  // Removes trailing tabs, line feeds, carriage returns and spaces; never
  // allocates, never fails.
  void RemoveTrailingSpaces();

  // ---- Formatted appending ----
  // Every character goes through AppendChar or AppendString, so growth
  // behaves as for those appends.
  // On failure: characters dropped; the walk goes on. AppendNDigits
  // releases its temporary string when the heap throws.

  // Appends `value` in `radix` (2 to 36; digits 0-9 then lower-case a-z).
  // Another radix appends nothing. Only radix 10 writes a '-'; any other
  // radix writes a negative value as its 64-bit two's-complement pattern.
  void AppendInt(long value, int radix);
  // Appends `value` in decimal with '0's in front of it (and of its sign) up
  // to `digits` characters: (-5, 3) gives "0-5".
  void AppendNDigits(int value, int digits);
  // Appends the host's text for `value` (ConvertDoubleToString); a null or
  // empty text appends nothing.
  void AppendDouble(double value);
  // Appends `format` with its directives carried out, each a '%' and the one
  // character after it; there are no flags, widths or precisions:
  //   %%  '%'                      %c  int: its low byte
  //   %p  pointer: "0x" and hex    %b  int: 't' if non-zero, else 'f'
  //   %s  C text; null: nothing    %f  double: as AppendDouble
  //   %d  int: decimal             %3  C text: its first three bytes,
  //   %x  int: sign-extended, hex      which may not be null
  //   %2  int: as AppendNDigits(value, 2)
  // Any other character after '%' is skipped with it and takes no argument;
  // a '%' at the very end is dropped. A null format appends nothing.
  void AppendFormatV(const char* format, va_list args);
  // No printf format attribute: g++ and clang reject '%b', '%2' and '%3'.
  void AppendFormat(const char* format, ...);
  // Clear, then AppendFormat: a string that receives nothing stays zeroed.
  void Format(const char* format, ...);

  // ---- Comparison, case and slicing ----
  // Equality of the texts up to their first NULs, byte for byte. A zeroed
  // string equals only a zeroed string; against C text, only null.
  [[nodiscard]] bool operator==(const VeskString& other) const;
  [[nodiscard]] bool operator==(const char* other) const;
  // Byte order, bytes read unsigned; a zeroed string orders as the empty
  // text.
  [[nodiscard]] bool operator<(const VeskString& other) const;
  // Fold ASCII letters in place up to the first NUL; one table look-up per
  // byte. Never allocates. The string must have text: a zeroed string is
  // outside the contract (it is left as it is).
  void ToUpper();
  void ToLower();
  // A new string of characters `start` to `end`, both included; `end` -1
  // means the last. Arguments outside the string give a zeroed string.
  // On failure: zeroed; when the heap throws, the result is released.
  [[nodiscard]] VeskString SubString(int start, int end) const;
  // The byte at `index` as a signed 8-bit code, or NaN outside the string.
  [[nodiscard]] double CharCodeAt(int index) const;
  // A one-character string of the low byte of `code` truncated to int; a
  // zero byte gives the shared empty state.
  // On failure: zeroed.
  [[nodiscard]] static VeskString CharFromCode(double code);

  // ---- Percent-encoding ----
  // Each appends, through AppendChar, after what the string holds.
  // Escapes are '%' and two upper-case hex digits.
  // On failure: characters dropped; encoding goes on with the next byte.
  // When the heap throws, what was appended before stays.

  // Appends `text` form-encoded: ASCII letters and digits as they are, a
  // space as '+' when `plusForSpace`, every other byte as %XX. Text of
  // `version` 6 and above (UTF-8 content) goes to the host code page first
  // when `convertToCodePage`; a failed conversion encodes the bytes as they
  // are. A null text appends nothing and calls no host service.
  void EncodeString(const char* text, int version, bool plusForSpace,
                    bool convertToCodePage);
  // Appends `text` with only its bytes 0x80 to 0xFF as %XX; text of
  // `version` 6 and above goes to the host code page first.
  void EncodeStringHighAscii(const char* text, int version);
  // Appends the object's variables as form-encoded name=value pairs, '?'
  // before the first (nothing with `noQuestionMark`) unless the text holds
  // '=', '&' or '?' already, then '&' between. Variables whose name starts
  // with '$', whose flags have kDontEnumFlag, or whose name or
  // value the host cannot give are left out, without a separator.
  void EncodeVariables(CorePlayer* player,
                       Pelgc::GCAPI::GCRef<ScriptObject> object, int version,
                       bool noQuestionMark);

  // ---- Escaped copies ----
  // Each returns a new heap text of the string's text up to its first NUL,
  // for the caller to release with Pelgc::SystemDelete, or null for an
  // empty string (Length() 0). The string is not changed. The text is
  // walked by characters of the host code page: PlayerBytesInChar is asked
  // once for the lead byte of every character, in text order. A character
  // of two or more bytes is escaped byte by byte, its trail bytes whatever
  // their values, as far as the text goes; a single-byte character is kept
  // or escaped by the rule of each copy. No space becomes '+', and no code
  // page conversion is made. Time and scratch space are linear in the
  // text's length.
  // On failure: characters dropped while the copy is built; null when the
  // copy itself gets no block. Either way the work buffer is released.

  // Strict: keeps letters, digits, '-' and '.'. Otherwise keeps every
  // single-byte character.
  [[nodiscard]] char* CreateEscapedCStr(bool strict) const;
  // Keeps 0x01 to 0x7F; escapes 0x80 to 0xFF.
  [[nodiscard]] char* CreateUpper128ASCIIEscapedCStr() const;
  // Keeps letters, digits and !"#$%&'()*+,-./:;=?@[]_~, so an escape that
  // is already in the text is not escaped again.
  [[nodiscard]] char* CreateEncodedUrl() const;

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
// point into the text argument itself, never into a copy. They keep no
// state and never allocate, except the heap texts at the end.

// -- Comparison and search --
// Case-insensitive functions fold 'A' to 'Z' through g_tolower_map; every
// other byte, 0x80 to 0xFF included, stands for itself. Each is linear in
// the length of its texts. A mismatch is a result, not a failure: nothing
// here fails.

// The index searches return this when nothing is found: 0xFFFFFFFF held in
// 64 bits, not -1.
inline constexpr long kVeskStrNotFound = 4294967295L;

// True when both are non-null and equal ignoring case.
[[nodiscard]] bool StrEqual(const char* a, const char* b);
// Three-way comparison ignoring case: the difference of the first folded
// bytes that differ, as unsigned values. Neither text may be null.
[[nodiscard]] int VeskStrICmp(const char* a, const char* b);
// The same over at most `n` bytes; `n` 0 gives 0 and reads nothing.
// Neither text may be null when `n` is not 0.
[[nodiscard]] int VeskStrNICmp(const char* a, const char* b, unsigned long n);
// False when either is null; otherwise byte-exact or case-insensitive.
[[nodiscard]] bool VarStrEqual(const char* a, const char* b,
                               bool caseSensitive);
// Character searches test each byte as a signed 8-bit value against `c`, so
// a byte of 0x80 or more is found as -128 to -1 and an argument of 128 to
// 255 never matches. The terminator never matches: `c` 0 finds nothing.
// `s` may not be null. Linear in the length of `s`.
[[nodiscard]] const char* VeskStrChr(const char* s, int c);
[[nodiscard]] long VeskStrChrIndex(const char* s, int c);
[[nodiscard]] const char* VeskStrRChr(const char* s, int c);
// The first occurrence of `needle` in `haystack`, or null. A null or empty
// needle gives `haystack` itself, null included, without reading it;
// otherwise `haystack` may not be null. Linear in the lengths of both texts
// for every input, with constant scratch space.
[[nodiscard]] const char* VeskStrStr(const char* haystack, const char* needle);
[[nodiscard]] const char* VeskStrCaseStr(const char* haystack,
                                         const char* needle);
// The offset of VeskStrStr's match, or kVeskStrNotFound for null.
[[nodiscard]] long VeskStrStrIndex(const char* haystack, const char* needle);

// -- Prefix and whitespace stripping --
// A pointer just after `prefix` at the start of `text`, or null when it is
// not there or either is null. The case-insensitive forms match 'a' to 'z'
// with 'A' to 'Z' only. In 16-bit text each unit is compared with the
// prefix byte read unsigned, so a unit above 0xFF matches no prefix byte.
[[nodiscard]] const char* StripPrefix(const char* text, const char* prefix);
[[nodiscard]] const unsigned short* StripPrefix(const unsigned short* text,
                                                const char* prefix);
[[nodiscard]] const char* StripPrefixCaseSensitive(const char* text,
                                                   const char* prefix);
[[nodiscard]] const unsigned short* StripPrefixCaseSensitive(
    const unsigned short* text, const char* prefix);
// Steps over tab, line feed, vertical tab, form feed, carriage return and
// space, whatever locale the process has set. Null gives null.
[[nodiscard]] const char* StripWhitespace(const char* text);
// StripPrefix(StripWhitespace(text), scheme).
[[nodiscard]] const char* StripScheme(const char* text, const char* scheme);
// Steps over one or two leading '/'. Null gives null.
[[nodiscard]] const char* StripAtMostTwoSlashes(const char* text);

// -- Number parsing and hex digits --
// The value of a hex digit of either case, or -1.
[[nodiscard]] int ParseHexChar(char c);
[[nodiscard]] bool IsHexChar(char c);
// Decodes a pair of hex digits, high first. Returns how many leading
// characters of the pair are digits (0, 1 or 2) and writes the byte to
// *out only when it returns 2.
[[nodiscard]] int ParseHexCouple(char hi, char lo, char* out);
// Decimal readers: an optional leading '-', then digits up to the first
// non-digit. No '+', no whitespace. Null or no digits give 0; too many
// digits wrap around in the width of the result. The counted forms look
// at no more than `n` elements, the '-' included.
[[nodiscard]] int ToInt(const char* text);
[[nodiscard]] int ToInt(const char* text, unsigned long n);
[[nodiscard]] int ToInt(const unsigned short* text);
[[nodiscard]] long long ToInt64(const char* text);
[[nodiscard]] long long ToInt64(const char* text, unsigned long n);
// As ToInt64, without a sign: a leading '-' gives 0.
[[nodiscard]] unsigned long long ToUInt64(const char* text);

// -- Heap texts --
// Each result is a host heap block owned by the caller, who releases it
// with Pelgc::SystemDelete (host/memory_manager.h). Sizes are exact. A
// bare 0 or nullptr is ambiguous among the CreateStr forms: pass a typed
// pointer or an unsigned long count.
// On failure: null when the heap gives no block; a size of 2^32 - 1 or
// more gets the too-large report and nothing is allocated. When the heap
// throws, nothing has been handed out.

// A copy of `text`; null gives null.
[[nodiscard]] char* CreateStr(const char* text);
// An empty text in a block of n + 1 bytes. The largest n wraps that size
// to 0 and gives null without a request.
[[nodiscard]] char* CreateStr(unsigned long n);
// Exactly the first `n` bytes of `text`, NULs included, and a NUL. `text`
// must have `n` readable bytes; null gives null.
[[nodiscard]] char* CreateStr(const char* text, unsigned long n);
// The UTF-8 form of a script VM string; null gives an empty text.
[[nodiscard]] char* CreateStr(marlo::String* string);
// `a` followed by `b`; null when either is null.
[[nodiscard]] char* ConcatStr(const char* a, const char* b);
// `value` in decimal, in a block of exactly 21 bytes, the one request that
// passes no size guard.
[[nodiscard]] char* U64ToChar(unsigned long long value);

#endif  // VESK_CORE_VESKSTRING_H
