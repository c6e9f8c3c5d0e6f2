#pragma once
// The bytes of the streams that the writer is given whole, gathered in 64 KiB
// blocks: a file of a hundred thousand small streams costs their bytes, not an
// allocation and a growth margin each.
#include <cstddef>
#include <cstdint>
#include <vector>

namespace aafkit::cfb {

class StreamBytes {
public:
    struct Place {
        uint32_t block = 0;
        uint32_t offset = 0;
    };

    Place add(const std::vector<uint8_t>& bytes);
    // The first byte of what `add` placed there; only for a non-empty stream.
    const uint8_t* at(Place place) const { return blocks_[place.block].data() + place.offset; }

private:
    // Below malloc's mmap threshold, so blocks reuse memory freed on the heap.
    static constexpr size_t kBlockSize = 64 * 1024;
    std::vector<std::vector<uint8_t>> blocks_;
};

}  // namespace aafkit::cfb
