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

// A string holding exactly `bytes`, NULs included.
inline VeskString FromBytes(const std::string& bytes) {
  VeskString s;
  for (char c : bytes) s.AppendChar(c);
  return s;
}

// The bytes of a heap text up to its NUL, which it releases; "(null)" for
// none.
inline std::string TakeHeapText(char* text) {
  if (text == nullptr) return "(null)";
  std::string bytes(text);
  Pelgc::SystemDelete(text);
  return bytes;
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

// Totals over every sweep that a test process runs, for a summary.
struct SweepTotals {
  unsigned long faults = 0;  // runs with a failing request
  unsigned long leaks = 0;   // runs that left a block live
};
inline SweepTotals& Totals() {
  static SweepTotals totals;
  return totals;
}

// The call under test of one sweep run. Calling it runs `call` with the
// run's fault armed (none in the counting run, which also counts the
// requests) and tells whether std::bad_alloc passed out of it.
class FaultedRun {
 public:
  FaultedRun() = default;
  FaultedRun(unsigned long k, Pelgc::HeapFault fault, bool persistent)
      : m_armed(true), m_k(k), m_fault(fault), m_persistent(persistent) {}

  bool operator()(const std::function<void()>& call) const {
    RequestCounter counter;
    if (!m_armed) {
      call();
    } else {
      try {
        ScopedHeapFault scoped(m_k, m_fault, m_persistent);
        call();
      } catch (const std::bad_alloc&) {
        m_threw = true;
      }
    }
    m_requests += counter.Requests();
    return m_threw;
  }

  bool Armed() const { return m_armed; }
  unsigned long Failing() const { return m_k; }  // 0 for the first request
  bool Threw() const { return m_threw; }
  unsigned long Requests() const { return m_requests; }

 private:
  bool m_armed = false;
  unsigned long m_k = 0;
  Pelgc::HeapFault m_fault = Pelgc::HeapFault::kReturnNull;
  bool m_persistent = false;
  mutable bool m_threw = false;
  mutable unsigned long m_requests = 0;
};

// Runs `operation` once to count the requests of its call under test, then
// again with each of them failing in turn: once returning null and once
// throwing, failing only that request and failing every one from it on.
// `operation` makes its own strings, passes the call under test to the
// FaultedRun, checks what is left and releases whatever it was handed:
// every run must leave the heap's live blocks as it found them.
inline void SweepHeapFaults(
    const std::function<void(const FaultedRun&)>& operation) {
  FaultedRun counting;
  operation(counting);
  const unsigned long requests = counting.Requests();
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
        operation(FaultedRun(k, fault, persistent));
        ++Totals().faults;
        if (Pelgc::GetHeapStats().live != live) {
          ++Totals().leaks;
          ADD_FAILURE() << "left "
                        << static_cast<long>(Pelgc::GetHeapStats().live - live)
                        << " block(s) live";
        }
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
