#pragma once
// Memory for the many small blocks of one owner (a file's objects and their
// properties): carved in order from large blocks, reused by size when given back,
// and all returned at once with the arena. A file of a hundred thousand objects
// costs a few dozen large blocks instead of a heap allocation per object, the
// large blocks get huge pages (hugePageResource), and pages are populated a step
// ahead of what is handed out rather than faulted in one at a time.
#include <array>
#include <cstddef>
#include <vector>

#include "aafkit/mem/Resource.h"

namespace aafkit::mem {

class Arena final : public Resource {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;
    ~Arena() override;

private:
    static constexpr size_t kGranule = 16;           // sizes round up to this; so does alignment
    static constexpr size_t kLargest = 4096;         // larger blocks come from the heap
    static constexpr size_t kFirstBlock = 64 * 1024;  // small files stay small
    static constexpr size_t kLargestBlock = size_t(2) << 20;
    static constexpr size_t kPopulateStep = 64 * 1024;

    struct Block {
        void* start;
        size_t size;
    };
    struct FreeBlock {
        FreeBlock* next;
    };

    void* doAllocate(size_t bytes, size_t alignment) override;
    void doDeallocate(void* p, size_t bytes, size_t alignment) override;
    static bool pooled(size_t bytes, size_t alignment) { return bytes <= kLargest && alignment <= kGranule; }
    void* carve(size_t size);
    void populateAhead();

    std::array<FreeBlock*, kLargest / kGranule + 1> free_{};  // given-back blocks by size / kGranule
    std::vector<Block> blocks_;
    char* next_ = nullptr;
    size_t left_ = 0;
    size_t populatedLeft_ = 0;  // of left_, how much is already backed by pages
    size_t nextBlockSize_ = kFirstBlock;
};

}  // namespace aafkit::mem
