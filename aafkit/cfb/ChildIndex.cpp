#include "aafkit/cfb/ChildIndex.h"

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
    std::vector<Slot>().swap(slots_);
    mask_ = 0;
}

// FNV-1a over the parent's id and the name, folded to the table's size.
size_t ChildIndex::slotFor(uint32_t parent, std::string_view name) const {
    uint64_t hash = 0xcbf29ce484222325ull;
    const auto mix = [&hash](uint8_t byte) { hash = (hash ^ byte) * 0x100000001b3ull; };
    for (int shift = 0; shift < 32; shift += 8) mix(uint8_t(parent >> shift));
    for (char c : name) mix(uint8_t(c));
    return size_t(hash ^ (hash >> 32)) & mask_;
}

}  // namespace aafkit::cfb
