#include "vm_string.h"

#include <climits>
#include <cstring>

#include "core/veskstring.h"
#include "memory_manager.h"
#include "utf.h"

namespace marlo {

String::String(const char* utf8)
    : m_units(utf8 == nullptr
                  ? std::basic_string<unsigned short>()
                  : vesk_host::Utf8ToUtf16(utf8, std::strlen(utf8))) {}

String::String(const unsigned short* units, int count)
    : m_units(units, count > 0 ? static_cast<std::size_t>(count) : 0) {}

StUTF8String::StUTF8String(String* string) : m_buffer(nullptr), m_length(0) {
  if (string == nullptr || string->Length() == 0) return;
  const auto count = static_cast<std::size_t>(string->Length());
  const std::size_t bytes =
      vesk_host::Utf16ToUtf8(string->Units(), count, nullptr);
  if (bytes >= INT_MAX) Pelgc::GCHeap::SignalObjectTooLarge();
  m_buffer = static_cast<char*>(Pelgc::SystemNew(bytes + 1, Pelgc::kNeverNull));
  vesk_host::Utf16ToUtf8(string->Units(), count, m_buffer);
  m_buffer[bytes] = '\0';
  m_length = static_cast<int>(bytes);
}

StUTF8String::~StUTF8String() {
  if (m_buffer != nullptr) Pelgc::SystemDelete(m_buffer);
}

}  // namespace marlo

VeskString16::VeskString16(CorePlayer* /*player*/, const char* text,
                           int version) {
  if (text == nullptr) return;
  const std::size_t length = std::strlen(text);
  m_rep.m_units = version >= kFirstUtf8Version
                      ? vesk_host::Utf8ToUtf16(text, length)
                      : vesk_host::CodePageToUtf16(text, length);
}
