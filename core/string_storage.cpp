// VeskString: construction, assignment, copying and release.
#include <cstring>

#include "host/vm_string.h"
#include "internal.h"
#include "veskstring.h"

namespace vesk {
const char kEmptyText[1] = {'\0'};
}

using vesk::kEmptyText;

namespace {

// The number of bytes `Set` copies: up to the first NUL, and no more than a
// positive `length`; 0 for a null text or a `length` of 0.
unsigned long SourceLength(const char* text, int length) {
  if (text == nullptr || length == 0) return 0;
  if (length > 0) return strnlen(text, static_cast<unsigned long>(length));
  return std::strlen(text);
}

}  // namespace

VeskString::VeskString(marlo::String* string) : VeskString() { Set(string); }

VeskString::VeskString(const char* text) : VeskString() { Set(text, -1); }

VeskString::VeskString(int capacity)
    : m_text(nullptr), m_length(0), m_capacity(capacity) {
  if (capacity == 0) return;
  m_text = vesk::RequestBuffer(capacity, Pelgc::kMayReturnNull);
  if (m_text == nullptr) {
    m_capacity = 0;
    return;
  }
  m_text[0] = '\0';
}

VeskString::VeskString(const VeskString& other) : VeskString() { Copy(other); }

VeskString& VeskString::operator=(const VeskString& other) {
  if (&other != this) Copy(other);
  return *this;
}

VeskString& VeskString::operator=(const char* text) {
  Set(text, -1);
  return *this;
}

void VeskString::Set(marlo::String* string) {
  if (string == nullptr || string->Length() == 0) {
    Set("", -1);
    return;
  }
  marlo::StUTF8String view(string);
  Set(view.c_str(), -1);
}

void VeskString::Set(const char* text, int length) {
  const unsigned long n = SourceLength(text, length);
  if (n == 0) {
    Clear();
    m_text = const_cast<char*>(kEmptyText);  // never written: see above
    m_capacity = 1;
    return;
  }
  if (n < static_cast<unsigned long>(m_capacity)) {
    // The buffer is kept; the source may lie inside it, hence memmove.
    std::memmove(m_text, text, n);
  } else {
    Clear();
    if (n >= INT_MAX) Pelgc::GCHeap::SignalObjectTooLarge();
    m_text =
        vesk::RequestBuffer(static_cast<int>(n) + 1, Pelgc::kMayReturnNull);
    if (m_text == nullptr) return;  // left zeroed
    m_capacity = static_cast<int>(n) + 1;
    std::memcpy(m_text, text, n);
  }
  m_length = static_cast<int>(n);
  m_text[n] = '\0';
}

void VeskString::Copy(const VeskString& other) {
  if (&other == this) return;
  if (other.m_text == nullptr) {
    Clear();
    return;
  }
  Set(other.m_text, -1);
}

void VeskString::Clear() noexcept {
  if (m_text != nullptr && m_text != kEmptyText) Pelgc::SystemDelete(m_text);
  m_text = nullptr;
  m_length = 0;
  m_capacity = 0;
}

void VeskString::SecureClear() noexcept {
  if (m_text == nullptr || m_capacity <= 0) return;
  // explicit_bzero is not optimised away although the block dies next.
  if (m_text != kEmptyText) explicit_bzero(m_text, m_capacity);
  Clear();
}
