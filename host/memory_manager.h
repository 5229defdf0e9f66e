// The host memory manager that every buffer of the text module comes from.
//
// The default host implements it over the C heap and adds what tests,
// fuzzers and tools need to observe it: request accounting and fault
// injection. What every host provides is listed in README.md, "Replacing
// the default host"; the accounting and fault-injection functions are the
// default host's own.
#ifndef VESK_HOST_MEMORY_MANAGER_H
#define VESK_HOST_MEMORY_MANAGER_H

#include <exception>

namespace Pelgc {

// Option values of a request. kNeverNull requests are used untested by the
// caller: the manager returns a block, throws std::bad_alloc, or does not
// return. kMayReturnNull requests may come back null.
enum FixedMallocOpts : int {
  kNeverNull = 0,
  kMayReturnNull = 1,
};

// Returns a block of `size` bytes, or null (only with kMayReturnNull).
// May throw std::bad_alloc and nothing else.
void* SystemNew(unsigned long size, FixedMallocOpts opts);

// Releases a block from SystemNew. Never throws.
void SystemDelete(void* block) noexcept;

// Thrown by GCHeap::SignalObjectTooLarge.
class ObjectTooLargeError : public std::exception {
 public:
  const char* what() const noexcept override;
};

// Thrown by GCHeap::Abort.
class HeapAbortError : public std::exception {
 public:
  const char* what() const noexcept override;
};

class GCHeap {
 public:
  // Reports a request beyond the allowed size; throws ObjectTooLargeError.
  [[noreturn]] static void SignalObjectTooLarge();
  // Gives up on the heap; throws HeapAbortError.
  [[noreturn]] void Abort();

  static GCHeap* instance;
};

// ---- Default host: accounting ----------------------------------------------

struct HeapStats {
  unsigned long requests = 0;  // calls of SystemNew, failed ones included
  unsigned long releases = 0;  // calls of SystemDelete
  unsigned long live = 0;      // blocks handed out and not yet released
  unsigned long lastSize = 0;  // size of the latest request
  FixedMallocOpts lastOpts = kNeverNull;  // options of the latest request
};

HeapStats GetHeapStats();

// True when SystemDelete verifies every pointer against the blocks handed
// out (builds with VESK_HEAP_CHECKS, the default where the tests are
// built); a bad pointer then aborts the process.
bool HeapChecksEnabled();

// Called by SystemDelete with each block just before it goes back to the C
// heap, so a test can see what a release leaves in it. Null removes it. The
// observer must not throw.
using ReleaseObserver = void (*)(const void* block);
void SetReleaseObserver(ReleaseObserver observer);

// Called by SystemNew with the size and options of each request, failed
// ones included, before it is served: a request log for tests and fuzzers
// that compare the requests with a model. Null removes it. The observer
// must not throw and must not call SystemNew.
using RequestObserver = void (*)(unsigned long size, FixedMallocOpts opts);
void SetRequestObserver(RequestObserver observer);

// ---- Default host: heap tuning ---------------------------------------------
// For programs that grow large strings (the tool, the benchmark), called
// first thing in their main; the module never calls it, so a program that
// does not asks for no process-wide setting. A growing string gives back
// each block for one half as large again: kept in the heap rather than
// mapped anew, their pages are reused instead of faulted in again.
void KeepLargeBlocksInHeap();

// ---- Default host: fault injection -----------------------------------------

enum class HeapFault {
  kReturnNull,     // the request yields null (kNeverNull requests throw)
  kThrowBadAlloc,  // the request throws std::bad_alloc
};

// The next `skip` requests succeed and the one after fails with `fault`;
// with `persistent`, every later request fails too until ClearHeapFault.
void InjectHeapFault(unsigned long skip, HeapFault fault, bool persistent);
void ClearHeapFault();

}  // namespace Pelgc

#endif  // VESK_HOST_MEMORY_MANAGER_H
