#include "aafkit/mem/Arena.h"

#include <algorithm>
#include <new>

#include "aafkit/mem/HugePageResource.h"
#include "aafkit/mem/Populate.h"

#if defined(__SANITIZE_ADDRESS__)
#define AAFKIT_ARENA_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define AAFKIT_ARENA_POISONS 1
#endif
#endif
#ifdef AAFKIT_ARENA_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace aafkit::mem {
namespace {

size_t roundUp(size_t bytes, size_t granule) { return (bytes + granule - 1) / granule * granule; }

// Under AddressSanitizer, what the arena has not handed out is unreadable, so that a
// use after destruction or past the end of a block is reported as the heap's would be.
void markReadable(const void* start, size_t size, bool readable) {
#ifdef AAFKIT_ARENA_POISONS
    if (readable)
        ASAN_UNPOISON_MEMORY_REGION(start, size);
    else
        ASAN_POISON_MEMORY_REGION(start, size);
#else
    (void)start, (void)size, (void)readable;
#endif
}

}  // namespace

Arena::~Arena() {
    for (const Block& block : blocks_) {
        markReadable(block.start, block.size, true);
        hugePageResource()->deallocate(block.start, block.size);
    }
}

void* Arena::doAllocate(size_t bytes, size_t alignment) {
    if (!pooled(bytes, alignment)) return heapResource()->allocate(bytes, alignment);
    const size_t size = roundUp(bytes == 0 ? 1 : bytes, kGranule);
    void* given = nullptr;
    if (FreeBlock*& head = free_[size / kGranule]) {
        FreeBlock* reused = head;
        head = reused->next;
        given = reused;
    } else {
        given = carve(size);
    }
    markReadable(given, bytes, true);
    return given;
}

void Arena::doDeallocate(void* p, size_t bytes, size_t alignment) {
    if (!pooled(bytes, alignment)) return heapResource()->deallocate(p, bytes, alignment);
    const size_t size = roundUp(bytes == 0 ? 1 : bytes, kGranule);
    markReadable(p, size, false);
    markReadable(p, sizeof(FreeBlock), true);
    FreeBlock*& head = free_[size / kGranule];
    head = new (p) FreeBlock{head};
}

// The rest of the current block is dropped when it cannot hold `size`: at most
// kLargest bytes a block.
void* Arena::carve(size_t size) {
    if (left_ < size) {
        const size_t blockSize = nextBlockSize_;
        next_ = static_cast<char*>(hugePageResource()->allocate(blockSize, kGranule));
        markReadable(next_, blockSize, false);
        blocks_.push_back({next_, blockSize});
        left_ = blockSize;
        populatedLeft_ = 0;
        nextBlockSize_ = std::min(blockSize * 4, kLargestBlock);  // soon at huge-page size
    }
    if (populatedLeft_ < size) populateAhead();
    populatedLeft_ -= size;
    void* carved = next_;
    next_ += size;
    left_ -= size;
    return carved;
}

// Pages are populated a step ahead of what is carved, never more: the last block of
// a small file is mostly unused.
void Arena::populateAhead() {
    const size_t step = std::min(kPopulateStep, left_) - populatedLeft_;
    populate(next_ + populatedLeft_, step);
    populatedLeft_ += step;
}

}  // namespace aafkit::mem
