#pragma once
// An event as the comparison sees it: which source, the stretch of it, where it plays, and
// whether two events are treated alike; the new cut's in the old cut's edit units.
#include <cstdint>
#include <vector>

#include "aafkit/AafTypes.h"
#include "diff/Cut.h"

namespace cutdiff {

struct SourceSpan {
    uint32_t source = 0;  // the source's identity, the same in both cuts
    int64_t recordIn = 0, recordOut = 0, sourceIn = 0, sourceOut = 0;
    uint64_t treatment = 0;  // equal when speed, levels, effects and transition are

    int64_t recordLength() const { return recordOut - recordIn; }
    int64_t sourceLength() const { return sourceOut - sourceIn; }
};

// How much of the same source two spans show: 0 when their sources differ.
int64_t sourceOverlap(const SourceSpan& a, const SourceSpan& b);

// A track's events as spans, in edit units at `units`; `identities` by the cut's source index.
std::vector<SourceSpan> trackSpans(const CutTrack& track, const std::vector<uint32_t>& identities,
                                   const aafRational_t& units);

}  // namespace cutdiff
