#pragma once
// Which sources of two cuts are one: a number for each source of each cut, the same for the
// same source. Sources both cuts hold under one identifier, for the same media, are one by it;
// the others by their media: two files made apart (two conversions of timelines, say) give one
// tape or file different identifiers, and identifiers made from the clock can meet by chance.
#include <cstdint>
#include <vector>

#include "diff/Cut.h"

namespace cutdiff {

struct SourceIdentities {
    std::vector<uint32_t> before, after;  // by each cut's source index
};

SourceIdentities identifySources(const Cut& before, const Cut& after);

}  // namespace cutdiff
