#include "aafkit/mem/HugePageResource.h"

#include <sys/mman.h>

#include <cstdint>
#include <new>

namespace aafkit::mem {
namespace {

constexpr size_t kHugePage = size_t(2) << 20;

size_t mappedSize(size_t bytes) { return (bytes + kHugePage - 1) / kHugePage * kHugePage; }

// Maps `size` bytes (a multiple of kHugePage) at a huge-page boundary: the kernel
// backs only aligned ranges with huge pages, so the mapping is made one page
// larger and trimmed.
void* mapAligned(size_t size) {
    void* raw = ::mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) throw std::bad_alloc();
    const auto start = reinterpret_cast<uintptr_t>(raw);
    const uintptr_t aligned = (start + kHugePage - 1) / kHugePage * kHugePage;
    if (aligned > start) ::munmap(raw, aligned - start);
    if (const uintptr_t tail = start + kHugePage - aligned; tail > 0)
        ::munmap(reinterpret_cast<void*>(aligned + size), tail);
#ifdef MADV_HUGEPAGE
    ::madvise(reinterpret_cast<void*>(aligned), size, MADV_HUGEPAGE);  // advice only: failure is harmless
#endif
    return reinterpret_cast<void*>(aligned);
}

class HugePageResource final : public Resource {
    void* doAllocate(size_t bytes, size_t alignment) override {
        if (bytes < kHugePage) return heapResource()->allocate(bytes, alignment);
        return mapAligned(mappedSize(bytes));
    }
    void doDeallocate(void* p, size_t bytes, size_t alignment) override {
        if (bytes < kHugePage)
            heapResource()->deallocate(p, bytes, alignment);
        else
            ::munmap(p, mappedSize(bytes));
    }
};

}  // namespace

Resource* hugePageResource() {
    static HugePageResource resource;
    return &resource;
}

}  // namespace aafkit::mem
