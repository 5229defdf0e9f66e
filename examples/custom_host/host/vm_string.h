// This host's script VM string and its 16-bit text. vesk::core is compiled
// against this header, so its classes are this host's own: the UTF-8 view
// keeps short texts inside itself, unlike the default host's.
#ifndef CUSTOM_HOST_VM_STRING_H
#define CUSTOM_HOST_VM_STRING_H

#include <string>

namespace marlo {

class String {
 public:
  explicit String(const char* utf8);
  String(const unsigned short* units, int count);

  int Length() const { return static_cast<int>(m_units.size()); }
  const unsigned short* Units() const { return m_units.data(); }

 private:
  std::basic_string<unsigned short> m_units;
};

// A UTF-8 copy of a String: inside the view when it is short, else in a
// host heap block released when the view ends.
class StUTF8String {
 public:
  explicit StUTF8String(String* string);
  ~StUTF8String();
  StUTF8String(const StUTF8String&) = delete;
  StUTF8String& operator=(const StUTF8String&) = delete;

  const char* c_str() const { return m_heap != nullptr ? m_heap : m_inline; }
  int length() const { return m_length; }

 private:
  static constexpr int kInlineBytes = 64;  // the NUL included
  char m_inline[kInlineBytes] = {};
  char* m_heap = nullptr;  // a longer text
  int m_length = 0;
};

}  // namespace marlo

class CorePlayer;

class StringRep16 {
 public:
  const unsigned short* String() const { return m_units.data(); }
  int Length() const { return static_cast<int>(m_units.size()); }

 private:
  friend class VeskString16;
  std::basic_string<unsigned short> m_units;
};

// 8-bit text as 16-bit units: UTF-8 for content of version 6 and above,
// the code page below.
class VeskString16 {
 public:
  VeskString16(CorePlayer* player, const char* text, int version);
  const StringRep16* Rep() const { return &m_rep; }

 private:
  StringRep16 m_rep;
};

#endif  // CUSTOM_HOST_VM_STRING_H
