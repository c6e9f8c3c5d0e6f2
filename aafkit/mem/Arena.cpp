#include "aafkit/mem/Arena.h"

#include <algorithm>
#include <new>

#include "aafkit/mem/HugePageResource.h"

namespace aafkit::mem {
namespace {

size_t roundUp(size_t bytes, size_t granule) { return (bytes + granule - 1) / granule * granule; }

}  // namespace

Arena::~Arena() {
    for (const Block& block : blocks_) hugePageResource()->deallocate(block.start, block.size);
}

void* Arena::do_allocate(size_t bytes, size_t alignment) {
    if (!pooled(bytes, alignment)) return std::pmr::new_delete_resource()->allocate(bytes, alignment);
    const size_t size = roundUp(bytes == 0 ? 1 : bytes, kGranule);
    if (FreeBlock*& head = free_[size / kGranule]) {
        FreeBlock* reused = head;
        head = reused->next;
        return reused;
    }
    return carve(size);
}

void Arena::do_deallocate(void* p, size_t bytes, size_t alignment) {
    if (!pooled(bytes, alignment)) return std::pmr::new_delete_resource()->deallocate(p, bytes, alignment);
    FreeBlock*& head = free_[roundUp(bytes == 0 ? 1 : bytes, kGranule) / kGranule];
    head = new (p) FreeBlock{head};
}

// The rest of the current block is dropped when it cannot hold `size`: at most
// kLargest bytes a block.
void* Arena::carve(size_t size) {
    if (left_ < size) {
        const size_t blockSize = nextBlockSize_;
        next_ = static_cast<char*>(hugePageResource()->allocate(blockSize, kGranule));
        blocks_.push_back({next_, blockSize});
        left_ = blockSize;
        nextBlockSize_ = std::min(blockSize * 4, kLargestBlock);  // soon at huge-page size
    }
    void* carved = next_;
    next_ += size;
    left_ -= size;
    return carved;
}

}  // namespace aafkit::mem
