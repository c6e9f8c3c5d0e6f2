#pragma once
// The sources of a cut, each once: clips whose chains lead through the same mobs share one
// entry, so that an event carries a number, not three strings.
#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "composition/Segment.h"
#include "diff/Cut.h"

namespace cutdiff {

class SourceTable {
public:
    // The clip's source, added when new.
    uint32_t of(const composition::Segment& clip);
    std::vector<CutSource> take() { return std::move(sources_); }

private:
    // The mobs a chain names the source by (origin and master, or the clip's own reference where
    // the chain has neither), and the channel.
    using ChainKey = std::tuple<const void*, const void*, aafMobID_t, uint32_t>;
    struct ChainKeyLess {
        bool operator()(const ChainKey& a, const ChainKey& b) const;
    };
    std::map<ChainKey, uint32_t, ChainKeyLess> byChain_;
    std::vector<CutSource> sources_;
};

}  // namespace cutdiff
