// The arena behind a file's objects and the huge-page memory behind its large
// tables: blocks must never overlap, must be reused only once given back, and
// must come back aligned as asked; populating pages must never change them.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "aafkit/mem/Arena.h"
#include "aafkit/mem/HugePageResource.h"
#include "aafkit/mem/Populate.h"
#include "aafkit/mem/TableResource.h"

namespace {

bool alignedTo(const void* p, size_t alignment) { return reinterpret_cast<uintptr_t>(p) % alignment == 0; }

struct Allocation {
    uint8_t* bytes;
    size_t size;
};

// Fills every allocation with its own byte, then checks that none was overwritten by another.
void expectDisjoint(const std::vector<Allocation>& allocations) {
    for (size_t i = 0; i < allocations.size(); ++i) std::memset(allocations[i].bytes, int(i % 251), allocations[i].size);
    for (size_t i = 0; i < allocations.size(); ++i)
        for (size_t b = 0; b < allocations[i].size; ++b)
            ASSERT_EQ(allocations[i].bytes[b], uint8_t(i % 251)) << "allocation " << i << " byte " << b;
}

TEST(Arena, BlocksAcrossManyLargeBlocksAreDisjointAndAligned) {
    aafkit::mem::Arena arena;
    std::vector<Allocation> allocations;
    // Over 6 MiB in sizes from 1 byte to beyond the pooled sizes, so that several
    // blocks (the last ones huge-page backed) and the heap path are all used.
    for (size_t i = 0; i < 3000; ++i) {
        const size_t size = 1 + (i * 977) % 5000;
        void* p = arena.allocate(size, alignof(std::max_align_t));
        EXPECT_TRUE(alignedTo(p, alignof(std::max_align_t))) << size;
        allocations.push_back({static_cast<uint8_t*>(p), size});
    }
    expectDisjoint(allocations);
    for (const Allocation& a : allocations) arena.deallocate(a.bytes, a.size, alignof(std::max_align_t));
}

TEST(Arena, GivenBackBlocksServeTheSameSizeOnly) {
    aafkit::mem::Arena arena;
    void* small = arena.allocate(56, 8);
    void* other = arena.allocate(200, 8);
    arena.deallocate(small, 56, 8);
    void* larger = arena.allocate(112, 8);
    EXPECT_NE(larger, small);  // a 56-byte block cannot hold 112
    EXPECT_EQ(arena.allocate(50, 8), small);  // same size class: reused
    EXPECT_NE(arena.allocate(56, 8), small);  // handed out again already
    arena.deallocate(other, 200, 8);
}

TEST(Arena, OverAlignedBlocksAreHonoured) {
    aafkit::mem::Arena arena;
    void* p = arena.allocate(64, 256);
    EXPECT_TRUE(alignedTo(p, 256));
    arena.deallocate(p, 64, 256);
}

TEST(Arena, ContainersGrowAndShrinkThroughIt) {
    aafkit::mem::Arena arena;
    aafkit::mem::Vector<aafkit::mem::Vector<int>> lists(&arena);
    for (int i = 0; i < 2000; ++i) {
        lists.emplace_back(&arena);
        for (int k = 0; k <= i % 40; ++k) lists.back().push_back(i * 100 + k);
        if (i % 3 == 0) lists.erase(lists.begin() + i / 2);  // gives blocks back to be reused
    }
    size_t total = 0;
    for (const auto& list : lists) {
        ASSERT_FALSE(list.empty());
        const int first = list.front();
        for (size_t k = 0; k < list.size(); ++k) ASSERT_EQ(list[k], first + int(k));
        total += list.size();
    }
    EXPECT_GT(total, 0u);
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif

// The arena hands out parts of large blocks, which the sanitizer cannot see into
// unless the arena marks them.
TEST(Arena, ReadsPastABlockOrAfterItIsGivenBackAreCaughtUnderAddressSanitizer) {
    if (!kAddressSanitizer) GTEST_SKIP() << "needs an AddressSanitizer build";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    aafkit::mem::Arena arena;
    auto* block = static_cast<volatile uint8_t*>(arena.allocate(24, 8));
    block[23] = 1;
    EXPECT_DEATH(block[26] = 1, "use-after-poison");
    arena.deallocate(const_cast<uint8_t*>(block), 24, 8);
    EXPECT_DEATH(block[16] = 1, "use-after-poison");
}

TEST(HugePageResource, LargeAllocationsAreAlignedWritableAndDistinct) {
    aafkit::mem::Resource* memory = aafkit::mem::hugePageResource();
    const size_t sizes[] = {100, (size_t(2) << 20) - 1, size_t(2) << 20, (size_t(5) << 20) + 3};
    std::vector<Allocation> allocations;
    for (size_t size : sizes) allocations.push_back({static_cast<uint8_t*>(memory->allocate(size, 16)), size});
    EXPECT_TRUE(alignedTo(allocations[2].bytes, size_t(2) << 20));
    EXPECT_TRUE(alignedTo(allocations[3].bytes, size_t(2) << 20));
    expectDisjoint(allocations);
    for (const Allocation& a : allocations) memory->deallocate(a.bytes, a.size, 16);
}

// Populating rounds the range out to whole pages: what those pages already hold,
// inside the range and around it, must survive.
TEST(Populate, KeepsWhatThePagesAroundTheRangeHold) {
    std::vector<uint8_t> bytes(5 * 4096 + 123);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 7 + 1);
    const std::vector<uint8_t> before = bytes;
    aafkit::mem::populate(bytes.data() + 100, 3 * 4096 + 5);
    aafkit::mem::populate(bytes.data(), 0);
    EXPECT_EQ(bytes, before);
}

TEST(TableResource, TablesSmallAndLargeAreWritableAndDistinct) {
    aafkit::mem::Resource* memory = aafkit::mem::tableResource();
    const size_t sizes[] = {10, 16 * 1024, 300 * 1024 + 7, (size_t(2) << 20) + 1};
    std::vector<Allocation> allocations;
    for (size_t size : sizes) allocations.push_back({static_cast<uint8_t*>(memory->allocate(size, 16)), size});
    expectDisjoint(allocations);
    for (const Allocation& a : allocations) memory->deallocate(a.bytes, a.size, 16);
}

}  // namespace
