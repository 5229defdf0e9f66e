// Module-internal pieces shared by the core sources: the shared empty text
// and the one size guard in front of every heap request.
#ifndef VESK_CORE_INTERNAL_H
#define VESK_CORE_INTERNAL_H

#include <climits>

#include "host/memory_manager.h"

namespace vesk {

// The one shared empty text, in read-only storage. Strings point at it in
// the shared-empty state; it is recognised by address, never written and
// never released.
extern const char kEmptyText[1];

// The smallest heap request that the size guard refuses: 2^32 - 1. It is
// a different fact from the not-found index kVeskStrNotFound, which has the
// same value.
constexpr unsigned long kTooLargeBlock = 4294967295UL;

// A count of kTooLargeBlock or more is reported as too large (the report
// does not return); a count of 0 requests nothing and gives null.
inline char* RequestBlock(unsigned long count, Pelgc::FixedMallocOpts opts) {
  if (count >= kTooLargeBlock) Pelgc::GCHeap::SignalObjectTooLarge();
  if (count == 0) return nullptr;
  return static_cast<char*>(Pelgc::SystemNew(count, opts));
}

// A buffer size held in a signed 32-bit field: a negative one passes the
// guard as a huge unsigned count and is reported there.
inline char* RequestBuffer(int size, Pelgc::FixedMallocOpts opts) {
  return RequestBlock(static_cast<unsigned long>(static_cast<long>(size)),
                      opts);
}

// A heap block released at scope end, also when an exception passes.
class ScopedBlock {
 public:
  explicit ScopedBlock(char* block) : m_block(block) {}
  ~ScopedBlock() {
    if (m_block != nullptr) Pelgc::SystemDelete(m_block);
  }
  ScopedBlock(const ScopedBlock&) = delete;
  ScopedBlock& operator=(const ScopedBlock&) = delete;
  char* get() const { return m_block; }

 private:
  char* m_block;
};

}  // namespace vesk

#endif  // VESK_CORE_INTERNAL_H
