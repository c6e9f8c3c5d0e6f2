#include "aafkit/cfb/DirectoryTree.h"

namespace aafkit::cfb {
namespace {

// Number of complete levels in a tree of n nodes: floor(log2(n + 1)).
unsigned completeLevels(size_t n) {
    unsigned levels = 0;
    while ((size_t(2) << levels) - 1 <= n) ++levels;
    return levels;
}

// Splitting at the midpoint puts every node at a depth below completeLevels(n) + 1
// and every empty link at a depth of at least completeLevels(n). Colouring the
// nodes of the last, incomplete level red gives every path the same black count.
uint32_t linkRange(const std::vector<uint32_t>& sorted, size_t begin, size_t end, unsigned depth,
                   unsigned redDepth, std::vector<SiblingLinks>& links) {
    if (begin == end) return kNoStream;
    const size_t mid = begin + (end - begin) / 2;
    SiblingLinks& node = links[sorted[mid]];
    node.color = depth == redDepth ? kRed : kBlack;
    node.left = linkRange(sorted, begin, mid, depth + 1, redDepth, links);
    node.right = linkRange(sorted, mid + 1, end, depth + 1, redDepth, links);
    return sorted[mid];
}

}  // namespace

uint32_t linkSiblings(const std::vector<uint32_t>& sorted, std::vector<SiblingLinks>& links) {
    return linkRange(sorted, 0, sorted.size(), 0, completeLevels(sorted.size()), links);
}

}  // namespace aafkit::cfb
