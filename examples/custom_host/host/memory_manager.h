// This host's memory manager: a fixed arena that counts its blocks. The
// declarations the module calls, and the arena's own block count.
#ifndef CUSTOM_HOST_MEMORY_MANAGER_H
#define CUSTOM_HOST_MEMORY_MANAGER_H

namespace Pelgc {

// kNeverNull: the module uses the block untested, so the manager returns a
// block, throws std::bad_alloc, or does not return.
enum FixedMallocOpts : int {
  kNeverNull = 0,
  kMayReturnNull = 1,
};

void* SystemNew(unsigned long size, FixedMallocOpts opts);
void SystemDelete(void* block) noexcept;

class GCHeap {
 public:
  [[noreturn]] static void SignalObjectTooLarge();
  [[noreturn]] void Abort();

  static GCHeap* instance;
};

// This host's own: blocks handed out by SystemNew and not yet released.
unsigned long ArenaLiveBlocks();

}  // namespace Pelgc

#endif  // CUSTOM_HOST_MEMORY_MANAGER_H
