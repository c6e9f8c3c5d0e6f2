#include "aafkit/cfb/ChildIndex.h"

#include <cstring>

namespace aafkit::cfb {

void ChildIndex::reset(size_t count) {
    size_t size = 16;
    while (size < count + count / 2) size *= 2;
    slots_.assign(size, Slot());
    mask_ = size - 1;
}

void ChildIndex::add(uint32_t parent, std::string_view name, uint32_t id) {
    size_t at = slotFor(parent, name);
    while (slots_[at].id != kNone) at = (at + 1) & mask_;
    slots_[at] = {parent, id};
}

void ChildIndex::release() {
    decltype(slots_)(slots_.get_allocator()).swap(slots_);
    mask_ = 0;
}

// The parent's id and the name mixed eight bytes at a time (the order of the
// bytes in a word does not matter: the table lives in one process).
size_t ChildIndex::slotFor(uint32_t parent, std::string_view name) const {
    constexpr uint64_t kMultiplier = 0x9e3779b97f4a7c15ull;
    uint64_t hash = (parent + name.size()) * kMultiplier;
    const auto mix = [&hash](uint64_t word) {
        hash = (hash ^ word) * kMultiplier;
        hash ^= hash >> 29;
    };
    size_t at = 0;
    for (; at + 8 <= name.size(); at += 8) {
        uint64_t word = 0;
        std::memcpy(&word, name.data() + at, 8);
        mix(word);
    }
    uint64_t tail = 0;
    std::memcpy(&tail, name.data() + at, name.size() - at);
    mix(tail);
    return size_t(hash ^ (hash >> 32)) & mask_;
}

}  // namespace aafkit::cfb
