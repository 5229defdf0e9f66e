// The script VM's string, as the text module sees it: 16-bit units built
// from UTF-8 text, and a scoped UTF-8 view of them whose buffer comes from
// the host heap.
#ifndef VESK_HOST_VM_STRING_H
#define VESK_HOST_VM_STRING_H

#include <string>

namespace marlo {

class String {
 public:
  // Decodes UTF-8; invalid sequences become U+FFFD. Null gives "".
  explicit String(const char* utf8);
  // Takes `count` 16-bit units as they are, unpaired surrogates included.
  String(const unsigned short* units, int count);

  // Length in 16-bit units.
  int Length() const { return static_cast<int>(m_units.size()); }
  const unsigned short* Units() const { return m_units.data(); }

 private:
  std::basic_string<unsigned short> m_units;
};

// Scoped UTF-8 view of a String. Surrogate pairs become one four-byte
// character; an unpaired surrogate becomes U+FFFD. A null or empty string
// gives a non-null empty text of length 0. The buffer is a host heap block
// released when the view ends.
class StUTF8String {
 public:
  explicit StUTF8String(String* string);
  ~StUTF8String();
  StUTF8String(const StUTF8String&) = delete;
  StUTF8String& operator=(const StUTF8String&) = delete;

  const char* c_str() const { return m_buffer != nullptr ? m_buffer : ""; }
  int length() const { return m_length; }

 private:
  char* m_buffer;  // the heap block, or null for the empty view
  int m_length;
};

}  // namespace marlo

class CorePlayer;

// The units of a 16-bit string.
class StringRep16 {
 public:
  const unsigned short* String() const { return m_units.data(); }
  int Length() const { return static_cast<int>(m_units.size()); }

 private:
  friend class VeskString16;
  std::basic_string<unsigned short> m_units;
};

// 8-bit text as 16-bit units: UTF-8 for content of version 6 and above, the
// host code page below; ill-formed sequences become U+FFFD and a null text
// gives length 0. A real host collects it; here it lives in its scope.
class VeskString16 {
 public:
  VeskString16(CorePlayer* player, const char* text, int version);
  const StringRep16* Rep() const { return &m_rep; }

 private:
  StringRep16 m_rep;
};

#endif  // VESK_HOST_VM_STRING_H
