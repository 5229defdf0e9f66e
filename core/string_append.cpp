// VeskString: the growth rule, appending and shortening.
#include <cstdint>
#include <cstring>

#include "internal.h"
#include "veskstring.h"

using vesk::kEmptyText;

bool VeskString::EnsureCapacity(int required) {
  if (required < m_capacity) return true;
  // Small buffers grow by 256 bytes beyond the need, large ones by half.
  const long grown = m_capacity > 1023 ? m_capacity / 2 + long{required}
                                       : long{required} + 256;
  if (grown > INT_MAX) Pelgc::GCHeap::SignalObjectTooLarge();
  char* block =
      vesk::RequestBuffer(static_cast<int>(grown), Pelgc::kMayReturnNull);
  if (block == nullptr) return false;
  m_capacity = static_cast<int>(grown);
  if (m_text != nullptr) {
    std::memcpy(block, m_text, static_cast<unsigned long>(m_length) + 1);
    if (m_text != kEmptyText) Pelgc::SystemDelete(m_text);
  }
  m_text = block;
  return true;
}

namespace {

// Copies `n` bytes. Up to 64 go as two overlapping pieces of one width,
// which touch only those bytes and save a library call on the short pieces
// appended most.
inline void CopyBytes(char* to, const char* from, unsigned long n) {
  const auto pair = [&](auto word) {
    decltype(word) head, tail;
    std::memcpy(&head, from, sizeof word);
    std::memcpy(&tail, from + n - sizeof word, sizeof word);
    std::memcpy(to, &head, sizeof word);
    std::memcpy(to + n - sizeof word, &tail, sizeof word);
  };
  struct Bytes16 {
    std::uint64_t low, high;
  };
  struct Bytes32 {
    Bytes16 low, high;
  };
  if (n > 64 || n < 4) {
    std::memcpy(to, from, n);
  } else if (n >= 32) {
    pair(Bytes32{});
  } else if (n >= 16) {
    pair(Bytes16{});
  } else if (n >= 8) {
    pair(std::uint64_t{});
  } else {
    pair(std::uint32_t{});
  }
}

}  // namespace

void VeskString::AppendString(const char* text) {
  if (text == nullptr) return;
  AppendBytes(text, std::strlen(text));
}

void VeskString::AppendString(const char* text, int n) {
  if (text == nullptr) return;
  // A negative count is taken as 0: the text is left as it is (and, as for
  // any count, a full or shared buffer still grows).
  AppendBytes(text, strnlen(text, n > 0 ? static_cast<unsigned long>(n) : 0));
}

void VeskString::AppendBytes(const char* text, unsigned long n) {
  if (static_cast<unsigned long>(m_length) + n >= INT_MAX) {
    Pelgc::GCHeap::instance->Abort();
  }
  const int length = m_length + static_cast<int>(n);
  if (length + 1 >= m_capacity && !EnsureCapacity(length + 1)) return;
  char* const end = m_text + static_cast<unsigned int>(m_length);
  // `text` never lies in this string's buffer, so the terminator cannot
  // land inside it and is written first.
  end[n] = '\0';
  m_length = length;
  CopyBytes(end, text, n);
}

void VeskString::Truncate(unsigned int newLength) {
  if (static_cast<unsigned int>(m_length) <= newLength) return;
  m_text[newLength] = '\0';
  m_length = static_cast<int>(newLength);
}

void VeskString::RemoveTrailingSpaces() {
  while (m_length > 0) {
    const char last = m_text[m_length - 1];
    if (last != ' ' && last != '\t' && last != '\n' && last != '\r') return;
    m_text[--m_length] = '\0';
  }
}
