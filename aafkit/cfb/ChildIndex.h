#pragma once
// Finds a storage's child by name in a probe or two: one hash table over
// (parent, name) for the whole directory, 8 bytes a slot. Loading an object
// looks up its "properties" stream, index streams and children by name, a few
// hundred thousand times in a large file.
#include <cstdint>
#include <string_view>
#include <vector>

#include "aafkit/mem/HugePageResource.h"

namespace aafkit::cfb {

class ChildIndex {
public:
    static constexpr uint32_t kNone = UINT32_MAX;

    // Room for `count` children; earlier contents are dropped.
    void reset(size_t count);
    void add(uint32_t parent, std::string_view name, uint32_t id);
    // The child of `parent` named exactly `name`, or kNone; `nameOf(id)` gives a
    // child's name.
    template <typename NameOf>
    uint32_t find(uint32_t parent, std::string_view name, const NameOf& nameOf) const {
        if (slots_.empty()) return kNone;
        for (size_t at = slotFor(parent, name);; at = (at + 1) & mask_) {
            const Slot& slot = slots_[at];
            if (slot.id == kNone) return kNone;
            if (slot.parent == parent && nameOf(slot.id) == name) return slot.id;
        }
    }
    void release();

private:
    struct Slot {
        uint32_t parent = kNone;
        uint32_t id = kNone;
    };
    size_t slotFor(uint32_t parent, std::string_view name) const;

    std::pmr::vector<Slot> slots_{mem::hugePageResource()};  // open addressing, at most two thirds full
    size_t mask_ = 0;
};

}  // namespace aafkit::cfb
