// This host's script VM string and its 16-bit text.
//
// The module keeps a StUTF8String and a VeskString16 on its own stack and
// calls their inline members, so every class here is defined exactly as in
// the project's host/vm_string.h, against which vesk::core was compiled.
// The out-of-line functions are this host's own, in host.cpp.
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

// A UTF-8 copy of a String in a host heap block, released when the view
// ends.
class StUTF8String {
 public:
  explicit StUTF8String(String* string);
  ~StUTF8String();
  StUTF8String(const StUTF8String&) = delete;
  StUTF8String& operator=(const StUTF8String&) = delete;

  const char* c_str() const { return m_buffer != nullptr ? m_buffer : ""; }
  int length() const { return m_length; }

 private:
  char* m_buffer;
  int m_length;
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
