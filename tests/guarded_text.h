// Texts whose last unit is the last readable one before a page that faults
// on any access, so that a read past the text crashes the test. The text's
// own page is read-only, so a write into it crashes too.
#ifndef VESK_TESTS_GUARDED_TEXT_H
#define VESK_TESTS_GUARDED_TEXT_H

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

namespace vesk_test {

template <typename Unit>
class GuardedText {
 public:
  using Units = std::basic_string<Unit>;

  // Copies `units`, and a terminator when `terminate`, to the page end.
  explicit GuardedText(const Units& units, bool terminate = true)
      : m_page(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    const std::size_t count = units.size() + (terminate ? 1 : 0);
    void* map = mmap(nullptr, 2 * m_page, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || count * sizeof(Unit) > m_page) std::abort();
    m_base = static_cast<char*>(map);
    Unit* text = reinterpret_cast<Unit*>(m_base + m_page) - count;
    std::copy(units.begin(), units.end(), text);
    if (terminate) text[units.size()] = 0;
    if (mprotect(m_base, m_page, PROT_READ) != 0 ||
        mprotect(m_base + m_page, m_page, PROT_NONE) != 0) {
      std::abort();
    }
    m_text = text;
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
  std::size_t m_page;
  char* m_base;
  const Unit* m_text;
};

using Guarded8 = GuardedText<char>;
using Guarded16 = GuardedText<unsigned short>;

// Byte text as 16-bit units, each byte read unsigned.
inline std::basic_string<unsigned short> Widen(const std::string& bytes) {
  std::basic_string<unsigned short> units;
  for (char c : bytes) units += static_cast<unsigned char>(c);
  return units;
}

// Expected results of the searches and strips: kNone for not found (as an
// index) or null (as a pointer), else the offset into `base`.
constexpr long kNone = 4294967295;
template <typename Unit>
const Unit* At(const Unit* base, long index) {
  return index == kNone ? nullptr : base + index;
}

}  // namespace vesk_test

#endif  // VESK_TESTS_GUARDED_TEXT_H
