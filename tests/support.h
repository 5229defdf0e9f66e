// Shared helpers of the unit tests.
#ifndef VESK_TESTS_SUPPORT_H
#define VESK_TESTS_SUPPORT_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <tuple>

#include "core/veskstring.h"
#include "host/memory_manager.h"
#include "host/text_services.h"

namespace vesk_test {

// The string's bytes up to Length(), embedded NULs included.
inline std::string Bytes(const VeskString& s) {
  return s.Text() ? std::string(s.Text(), size_t(s.Length())) : "";
}

// `piece` repeated up to `length` bytes, the last copy cut short.
inline std::string Repeat(const std::string& piece, std::size_t length) {
  std::string text;
  while (text.size() < length) text += piece;
  return text.substr(0, length);
}

// Appends `bytes` one by one, NULs included.
inline void Put(VeskString& s, const std::string& bytes) {
  for (char c : bytes) s.AppendChar(c);
}

// The bytes of a heap text up to its NUL, which it releases; "(null)" for
// none.
inline std::string TakeHeapText(char* text) {
  if (text == nullptr) return "(null)";
  std::string bytes(text);
  Pelgc::SystemDelete(text);
  return bytes;
}

// Every string in the shared-empty state points at one static text, which
// outlives the empty string that shows it.
enum class State { kZeroed, kSharedEmpty, kOwn };
inline State StateOf(const VeskString& s) {
  if (s.Text() == nullptr) return State::kZeroed;
  return s.Text() == VeskString("").Text() ? State::kSharedEmpty : State::kOwn;
}

// The state, the text and the capacity, with the invariants of the state.
inline void ExpectString(const VeskString& s, State state,
                         const std::string& bytes, int capacity,
                         const std::string& what) {
  EXPECT_EQ(std::make_tuple(StateOf(s), Bytes(s), s.Length(), s.Capacity()),
            std::make_tuple(state, bytes, int(bytes.size()), capacity))
      << what;
  EXPECT_TRUE(s.Text() == nullptr || s.Text()[s.Length()] == '\0') << what;
}

// Sets the host code page for its scope.
struct ScopedCodePage {
  explicit ScopedCodePage(const char* name) : previous(HostCodePage()) {
    EXPECT_TRUE(SetHostCodePage(name)) << name;
  }
  ~ScopedCodePage() { SetHostCodePage(previous.c_str()); }
  ScopedCodePage(const ScopedCodePage&) = delete;
  const std::string previous;
};

// A text whose last unit is the last readable one before a page that
// faults on any access, so that a read past it crashes the test; or, with
// `atPageStart`, whose first unit follows such a page, so that a read
// before it crashes. Its own page is read-only, so a write into it crashes
// too.
template <typename Unit>
class GuardedText {
 public:
  using Units = std::basic_string<Unit>;

  // Copies `units`, and a terminator when `terminate`, to the page's edge.
  explicit GuardedText(const Units& units, bool terminate = true,
                       bool atPageStart = false) {
    const std::size_t count = units.size() + (terminate ? 1 : 0);
    void* map = mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || count * sizeof(Unit) > m_page) std::abort();
    m_base = static_cast<char*>(map);
    m_text =
        reinterpret_cast<Unit*>(m_base + m_page) - (atPageStart ? 0 : count);
    std::copy(units.begin(), units.end(), m_text);
    if (terminate) m_text[units.size()] = 0;
    char* const own = atPageStart ? m_base + m_page : m_base;
    char* const guard = atPageStart ? m_base : m_base + m_page;
    if (mprotect(own, m_page, PROT_READ) != 0 ||
        mprotect(guard, m_page, PROT_NONE) != 0) {
      std::abort();
    }
  }
  // What a reader limited to `n` units may touch: the first `n` units, or
  // all of them and the terminator when `n` reaches past them.
  static GuardedText Counted(const Units& units, unsigned long n) {
    return GuardedText(units.substr(0, n), n > units.size());
  }
  ~GuardedText() { munmap(m_base, 2 * m_page); }
  GuardedText(const GuardedText&) = delete;
  GuardedText& operator=(const GuardedText&) = delete;

  const Unit* get() const { return m_text; }

 private:
  const std::size_t m_page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  char* m_base;
  Unit* m_text;
};
using Guarded8 = GuardedText<char>;
using Guarded16 = GuardedText<unsigned short>;

}  // namespace vesk_test

#endif  // VESK_TESTS_SUPPORT_H
