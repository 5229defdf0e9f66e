// Writing straight into a string's buffer while the bytes fit, for the
// module's bulk appenders.
#ifndef VESK_CORE_DIRECT_WRITER_H
#define VESK_CORE_DIRECT_WRITER_H

#include <cassert>
#include <cstring>

#include "veskstring.h"

namespace vesk {

// Bytes written here land exactly as that many AppendChar calls with room
// would leave them. A caller writes only within Room() and hands any byte
// that needs growth to AppendChar, so growth happens at the very same byte
// and with the same request as byte by byte.
class DirectWriter {
 public:
  explicit DirectWriter(VeskString& string) : m_string(string) {}

  // Bytes that fit before the buffer is full; negative or 0 for a zeroed
  // string and for the shared empty text, which is never written.
  long Room() const {
    return long{m_string.m_capacity} - 1 - m_string.m_length;
  }
  char* Begin() const { return m_string.m_text + m_string.m_length; }
  // Ends a run of direct writes at `end`, inside the buffer: no further
  // than Room() bytes past Begin(), so that the terminator still fits.
  void Commit(char* end) const {
    assert(end >= Begin() && end - m_string.m_text < m_string.m_capacity);
    m_string.m_length = static_cast<int>(end - m_string.m_text);
    *end = '\0';
  }

 private:
  VeskString& m_string;
};

// Appends `count` bytes as `count` AppendChar calls would: at once while
// they all fit, byte by byte where growth is needed.
inline void AppendRun(VeskString& string, const char* bytes, long count) {
  const DirectWriter writer(string);
  if (count > writer.Room()) {
    for (long i = 0; i < count; ++i) string.AppendChar(bytes[i]);
    return;
  }
  std::memcpy(writer.Begin(), bytes, static_cast<unsigned long>(count));
  writer.Commit(writer.Begin() + count);
}

}  // namespace vesk

#endif  // VESK_CORE_DIRECT_WRITER_H
