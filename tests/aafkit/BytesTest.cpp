// Property values keep up to 32 bytes in place and larger ones on the heap: copies,
// moves and comparisons must behave the same on both sides of that line.
#include <gtest/gtest.h>

#include <numeric>
#include <utility>

#include "aafkit/om/Bytes.h"

namespace {

std::vector<uint8_t> sequence(size_t size) {
    std::vector<uint8_t> bytes(size);
    std::iota(bytes.begin(), bytes.end(), uint8_t(1));
    return bytes;
}

TEST(Bytes, CopiesMovesAndComparesInPlaceAndOnTheHeap) {
    for (size_t size : {0u, 1u, 31u, 32u, 33u, 300u}) {
        const std::vector<uint8_t> expected = sequence(size);
        const aafkit::Bytes original(expected);
        aafkit::Bytes copy = original;
        EXPECT_EQ(std::vector<uint8_t>(copy), expected) << size;
        aafkit::Bytes moved = std::move(copy);
        EXPECT_EQ(std::vector<uint8_t>(moved), expected) << size;
        EXPECT_TRUE(copy.empty()) << size;
        aafkit::Bytes assigned(sequence(40));  // heap to any size, and back
        assigned = moved;
        EXPECT_TRUE(assigned == original) << size;
        assigned = aafkit::Bytes(sequence(3));
        EXPECT_EQ(assigned.size(), 3u);
        EXPECT_FALSE(assigned == original && size != 3) << size;
    }
    EXPECT_TRUE(aafkit::Bytes(sequence(2)) < aafkit::Bytes(sequence(3)));  // a prefix sorts first
    aafkit::Bytes zeroed(sequence(40));
    zeroed.resize(16);
    EXPECT_EQ(std::vector<uint8_t>(zeroed), std::vector<uint8_t>(16, 0));
}

}  // namespace
