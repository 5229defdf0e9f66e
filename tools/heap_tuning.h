// A malloc setting for programs that grow large strings: the tool and the
// benchmark call it first thing in main. The library itself changes no
// process-wide setting; a program that links it decides its heap.
#ifndef VESK_TOOLS_HEAP_TUNING_H
#define VESK_TOOLS_HEAP_TUNING_H

#include <malloc.h>

namespace vesktext {

// A growing string releases each block for one half as large again, so
// large blocks come and go all the time. Served from fresh mappings, every
// page of every one of them would fault in anew; kept in the heap, the
// pages are reused. Call it before the first request.
inline void KeepLargeBlocksInHeap() {
  mallopt(M_MMAP_THRESHOLD, 64 << 20);
  mallopt(M_TRIM_THRESHOLD, 128 << 20);
}

}  // namespace vesktext

#endif  // VESK_TOOLS_HEAP_TUNING_H
