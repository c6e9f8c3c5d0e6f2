#pragma once
// Links the children of one storage into the balanced red-black tree that the
// directory stores: recursive readers overflow on degenerate sibling chains.
#include <cstdint>
#include <vector>

#include "aafkit/cfb/CompoundFileFormat.h"

namespace aafkit::cfb {

struct SiblingLinks {
    uint32_t left = kNoStream;
    uint32_t right = kNoStream;
    uint8_t color = kBlack;
};

// `sorted` holds entry ids in sibling order; `links` is indexed by entry id and
// must be large enough. Answers the id of the tree's root, or kNoStream if empty.
uint32_t linkSiblings(const std::vector<uint32_t>& sorted, std::vector<SiblingLinks>& links);

}  // namespace aafkit::cfb
