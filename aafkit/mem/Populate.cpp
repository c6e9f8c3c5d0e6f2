#include "aafkit/mem/Populate.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace aafkit::mem {

void populate(void* start, size_t size) {
#ifdef MADV_POPULATE_WRITE
    if (size == 0) return;
    // Whole pages around the range: each holds part of it, so each is mapped and writable.
    static const uintptr_t pageSize = uintptr_t(::sysconf(_SC_PAGESIZE));
    const uintptr_t first = reinterpret_cast<uintptr_t>(start) / pageSize * pageSize;
    const uintptr_t end = (reinterpret_cast<uintptr_t>(start) + size + pageSize - 1) / pageSize * pageSize;
    ::madvise(reinterpret_cast<void*>(first), end - first, MADV_POPULATE_WRITE);
#else
    (void)start, (void)size;
#endif
}

}  // namespace aafkit::mem
