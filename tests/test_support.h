// Shared helpers of the unit tests.
#ifndef VESK_TESTS_TEST_SUPPORT_H
#define VESK_TESTS_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <string>

#include "core/veskstring.h"
#include "host/memory_manager.h"

namespace vesk_test {

// The string's bytes up to Length(), embedded NULs included.
inline std::string Bytes(const VeskString& s) {
  return s.Text() == nullptr ? std::string()
                             : std::string(s.Text(), static_cast<size_t>(s.Length()));
}

// The address every string in the shared-empty state points at.
inline const char* SharedEmpty() {
  static const VeskString empty("");
  return empty.Text();
}

inline bool IsZeroed(const VeskString& s) {
  return s.Text() == nullptr && s.Length() == 0 && s.Capacity() == 0;
}

inline bool IsSharedEmpty(const VeskString& s) {
  return s.Text() == SharedEmpty() && s.Length() == 0 && s.Capacity() == 1;
}

// Heap requests made since construction.
class RequestCounter {
 public:
  RequestCounter() : m_start(Pelgc::GetHeapStats()) {}
  unsigned long Requests() const {
    return Pelgc::GetHeapStats().requests - m_start.requests;
  }
  unsigned long Releases() const {
    return Pelgc::GetHeapStats().releases - m_start.releases;
  }

 private:
  Pelgc::HeapStats m_start;
};

// Arms a heap fault for its scope.
class ScopedHeapFault {
 public:
  ScopedHeapFault(unsigned long skip, Pelgc::HeapFault fault,
                  bool persistent = false) {
    Pelgc::InjectHeapFault(skip, fault, persistent);
  }
  ~ScopedHeapFault() { Pelgc::ClearHeapFault(); }
  ScopedHeapFault(const ScopedHeapFault&) = delete;
  ScopedHeapFault& operator=(const ScopedHeapFault&) = delete;
};

}  // namespace vesk_test

#endif  // VESK_TESTS_TEST_SUPPORT_H
