// A read-only text of 2^31 - 1 bytes ('a' then a NUL), too long for any
// signed 32-bit length. Built from two 2 MiB memory files mapped over and
// over, so it costs 4 MiB of memory and a fraction of a second.
#ifndef VESK_TESTS_HUGE_TEXT_H
#define VESK_TESTS_HUGE_TEXT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

namespace vesk_test {

class HugeText {
 public:
  static constexpr unsigned long kLength = 2147483647UL;

  HugeText() {
    const int fill = FilledFile(false);
    const int tail = FilledFile(true);
    void* base = mmap(nullptr, kLength + 1, PROT_NONE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    bool mapped = fill >= 0 && tail >= 0 && base != MAP_FAILED;
    for (unsigned long at = 0; mapped && at <= kLength; at += kChunk) {
      const int file = at + kChunk > kLength ? tail : fill;
      mapped = mmap(static_cast<char*>(base) + at, kChunk, PROT_READ,
                    MAP_SHARED | MAP_FIXED | MAP_POPULATE, file, 0) != MAP_FAILED;
    }
    if (fill >= 0) close(fill);
    if (tail >= 0) close(tail);
    if (mapped) {
      m_text = static_cast<const char*>(base);
    } else if (base != MAP_FAILED) {
      munmap(base, kLength + 1);
    }
  }
  ~HugeText() {
    if (m_text != nullptr) munmap(const_cast<char*>(m_text), kLength + 1);
  }
  HugeText(const HugeText&) = delete;
  HugeText& operator=(const HugeText&) = delete;

  // Null when the machine would not map it.
  const char* get() const { return m_text; }

 private:
  static constexpr unsigned long kChunk = 2UL << 20;

  // A memory file of one chunk of 'a', ending in a NUL when `last`.
  static int FilledFile(bool last) {
    const int file = memfd_create(last ? "huge-tail" : "huge-fill", 0);
    void* p = MAP_FAILED;
    if (file >= 0 && ftruncate(file, kChunk) == 0) {
      p = mmap(nullptr, kChunk, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    }
    if (p == MAP_FAILED) {
      if (file >= 0) close(file);
      return -1;
    }
    std::memset(p, 'a', kChunk);
    if (last) static_cast<char*>(p)[kChunk - 1] = '\0';
    munmap(p, kChunk);
    return file;
  }

  const char* m_text = nullptr;
};

}  // namespace vesk_test

#endif  // VESK_TESTS_HUGE_TEXT_H
