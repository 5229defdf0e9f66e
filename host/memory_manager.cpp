// Default host memory manager: the C heap, with accounting and fault
// injection. Counters are atomics so that the free functions of the module
// may run on any thread; the fault plan and the block registry sit behind a
// mutex. Without VESK_HEAP_CHECKS a request takes the mutex only while a
// fault is armed; with it, every request and release takes it to update the
// registry. Nothing here changes a process-wide setting of the C heap.
#include "memory_manager.h"

#include <malloc.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_set>

namespace Pelgc {
namespace {

#if defined(VESK_HEAP_CHECKS)
constexpr bool kCheckPointers = true;
#else
constexpr bool kCheckPointers = false;
#endif

std::atomic<unsigned long> g_requests{0};
std::atomic<unsigned long> g_releases{0};
std::atomic<unsigned long> g_live{0};
std::atomic<unsigned long> g_lastSize{0};
std::atomic<int> g_lastOpts{kNeverNull};

struct FaultPlan {
  unsigned long skip = 0;
  HeapFault fault = HeapFault::kReturnNull;
  bool persistent = false;
};

std::atomic<ReleaseObserver> g_releaseObserver{nullptr};
std::atomic<RequestObserver> g_requestObserver{nullptr};
std::atomic<bool> g_faultArmed{false};
std::mutex g_mutex;  // guards g_plan and g_blocks
FaultPlan g_plan;

std::unordered_set<void*>& Blocks() {
  static auto* blocks = new std::unordered_set<void*>();  // never destroyed:
  return *blocks;  // blocks may be released during static destruction
}

// Decides whether this request is the one that fails; returns the fault.
bool TakeFault(HeapFault* fault) {
  if (!g_faultArmed.load(std::memory_order_acquire)) return false;
  std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_faultArmed.load(std::memory_order_relaxed)) return false;
  if (g_plan.skip > 0) {
    --g_plan.skip;
    return false;
  }
  *fault = g_plan.fault;
  if (!g_plan.persistent) g_faultArmed.store(false, std::memory_order_release);
  return true;
}

void Register(void* block) {
  if (!kCheckPointers) return;
  std::lock_guard<std::mutex> lock(g_mutex);
  Blocks().insert(block);
}

void Unregister(void* block) noexcept {
  if (!kCheckPointers) return;
  bool known;
  {
    std::lock_guard<std::mutex> lock(g_mutex);
    known = Blocks().erase(block) == 1;
  }
  if (!known) {
    std::fprintf(stderr,
                 "Pelgc::SystemDelete: %p was never handed out by SystemNew "
                 "or is already released\n",
                 block);
    std::abort();
  }
}

}  // namespace

void* SystemNew(unsigned long size, FixedMallocOpts opts) {
  g_requests.fetch_add(1, std::memory_order_relaxed);
  g_lastSize.store(size, std::memory_order_relaxed);
  g_lastOpts.store(opts, std::memory_order_relaxed);
  if (RequestObserver observe = g_requestObserver.load()) observe(size, opts);

  void* block = nullptr;
  HeapFault fault;
  if (TakeFault(&fault)) {
    if (fault == HeapFault::kThrowBadAlloc) throw std::bad_alloc();
  } else {
    block = std::malloc(size == 0 ? 1 : size);  // a zero-size request still
  }                                             // yields a distinct block
  if (block == nullptr) {
    if (opts == kNeverNull) throw std::bad_alloc();
    return nullptr;
  }
  // Registered before it is counted, so a failing registry (bad_alloc from
  // the set) leaks nothing: the block is released on the way out.
  try {
    Register(block);
  } catch (...) {
    std::free(block);
    throw;
  }
  g_live.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void SystemDelete(void* block) noexcept {
  if (block == nullptr) return;
  Unregister(block);
  g_releases.fetch_add(1, std::memory_order_relaxed);
  g_live.fetch_sub(1, std::memory_order_relaxed);
  if (ReleaseObserver observe = g_releaseObserver.load()) observe(block);
  std::free(block);
}

const char* ObjectTooLargeError::what() const noexcept {
  return "Pelgc: object too large";
}

const char* HeapAbortError::what() const noexcept {
  return "Pelgc: heap abort";
}

void GCHeap::SignalObjectTooLarge() { throw ObjectTooLargeError(); }

void GCHeap::Abort() { throw HeapAbortError(); }

namespace {
GCHeap g_heap;
}
GCHeap* GCHeap::instance = &g_heap;

HeapStats GetHeapStats() {
  HeapStats stats;
  stats.requests = g_requests.load(std::memory_order_relaxed);
  stats.releases = g_releases.load(std::memory_order_relaxed);
  stats.live = g_live.load(std::memory_order_relaxed);
  stats.lastSize = g_lastSize.load(std::memory_order_relaxed);
  stats.lastOpts =
      static_cast<FixedMallocOpts>(g_lastOpts.load(std::memory_order_relaxed));
  return stats;
}

bool HeapChecksEnabled() { return kCheckPointers; }

void SetReleaseObserver(ReleaseObserver observer) {
  g_releaseObserver.store(observer);
}

void SetRequestObserver(RequestObserver observer) {
  g_requestObserver.store(observer);
}

void InjectHeapFault(unsigned long skip, HeapFault fault, bool persistent) {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_plan = FaultPlan{skip, fault, persistent};
  g_faultArmed.store(true, std::memory_order_release);
}

void ClearHeapFault() {
  std::lock_guard<std::mutex> lock(g_mutex);
  g_faultArmed.store(false, std::memory_order_release);
}

void KeepLargeBlocksInHeap() {
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 128 << 20);
}

}  // namespace Pelgc
