// Shared helpers of the unit tests.
#ifndef VESK_TESTS_TEST_SUPPORT_H
#define VESK_TESTS_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/text_services.h"

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

// The string is in one of its three states, with its invariants.
inline void ExpectValidState(const VeskString& s) {
  if (s.Text() == nullptr) {
    EXPECT_TRUE(IsZeroed(s));
  } else if (s.Text() == SharedEmpty()) {
    EXPECT_TRUE(IsSharedEmpty(s));
  } else {
    EXPECT_LT(s.Length(), s.Capacity());
    EXPECT_GE(s.Length(), 0);
    EXPECT_EQ(s.Text()[s.Length()], '\0');
  }
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

// Runs `operation` once to count its heap requests, then again with each
// request failing in turn: once returning null and once throwing, failing
// only that request and failing every one from it on. `operation` makes its
// own strings, checks them at its end (reached when nothing was thrown) and
// releases whatever it is handed: every run must leave the heap's live
// blocks as it found them.
inline void SweepHeapFaults(const std::function<void()>& operation) {
  RequestCounter counter;
  operation();
  const unsigned long requests = counter.Requests();
  for (unsigned long k = 0; k < requests; ++k) {
    for (Pelgc::HeapFault fault :
         {Pelgc::HeapFault::kReturnNull, Pelgc::HeapFault::kThrowBadAlloc}) {
      for (bool persistent : {false, true}) {
        SCOPED_TRACE(testing::Message()
                     << "request " << k + 1 << " of " << requests
                     << (fault == Pelgc::HeapFault::kReturnNull ? ", null"
                                                                : ", throw")
                     << (persistent ? " from then on" : " once"));
        const unsigned long live = Pelgc::GetHeapStats().live;
        {
          ScopedHeapFault scoped(k, fault, persistent);
          try {
            operation();
          } catch (const std::bad_alloc&) {
          }
        }
        EXPECT_EQ(Pelgc::GetHeapStats().live, live);
      }
    }
  }
}

// Sets the host code page for its scope.
class ScopedCodePage {
 public:
  explicit ScopedCodePage(const char* name) : m_previous(HostCodePage()) {
    EXPECT_TRUE(SetHostCodePage(name)) << name;
  }
  ~ScopedCodePage() { SetHostCodePage(m_previous.c_str()); }
  ScopedCodePage(const ScopedCodePage&) = delete;
  ScopedCodePage& operator=(const ScopedCodePage&) = delete;

 private:
  std::string m_previous;
};

}  // namespace vesk_test

#endif  // VESK_TESTS_TEST_SUPPORT_H
