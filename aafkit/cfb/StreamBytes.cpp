#include "aafkit/cfb/StreamBytes.h"

namespace aafkit::cfb {

StreamBytes::Place StreamBytes::add(const std::vector<uint8_t>& bytes) {
    if (bytes.empty()) return Place();
    if (bytes.size() >= kBlockSize) {  // a block of its own
        blocks_.push_back(bytes);
        return {uint32_t(blocks_.size() - 1), 0};
    }
    if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < bytes.size()) {
        blocks_.emplace_back();
        blocks_.back().reserve(kBlockSize);
    }
    std::vector<uint8_t>& block = blocks_.back();
    const Place place{uint32_t(blocks_.size() - 1), uint32_t(block.size())};
    block.insert(block.end(), bytes.begin(), bytes.end());
    return place;
}

}  // namespace aafkit::cfb
