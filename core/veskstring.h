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
    if (m_length + 1 >= m_capacity && !EnsureCapacity(m_length + 1)) return;
    m_text[m_length] = c;
    m_text[++m_length] = '\0';
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

 private:
  // Makes room for `required` + 1 bytes; false when the heap gives none.
  bool EnsureCapacity(int required);
  void AppendBytes(const char* text, unsigned long n);

  char* m_text;
  int m_length;
  int m_capacity;
};

#endif  // VESK_CORE_VESKSTRING_H
