#include "diff/SourceSpan.h"

#include <algorithm>
#include <functional>
#include <string>

#include "composition/EditTime.h"

namespace cutdiff {
namespace {

uint64_t treatmentOf(const CutEvent& event) {
    const std::hash<std::string> hash;
    return hash(event.levels) ^ (hash(event.effects) * 3) ^ (hash(event.transition) * 5) ^
           (std::hash<double>()(event.speed) * 7);
}

}  // namespace

int64_t sourceOverlap(const SourceSpan& a, const SourceSpan& b) {
    if (a.source != b.source) return 0;
    return std::max<int64_t>(0, std::min(a.sourceOut, b.sourceOut) - std::max(a.sourceIn, b.sourceIn));
}

std::vector<SourceSpan> trackSpans(const CutTrack& track, const std::vector<uint32_t>& identities,
                                   const aafRational_t& units) {
    std::vector<SourceSpan> spans;
    spans.reserve(track.events.size());
    const auto convert = [&](int64_t value) {
        return heldInRange(composition::convertEditUnits(value, track.editRate, units));
    };
    for (const CutEvent& event : track.events)
        spans.push_back({identities[event.source], convert(event.recordIn), convert(event.recordOut),
                         convert(event.sourceIn), convert(event.sourceOut), treatmentOf(event)});
    return spans;
}

}  // namespace cutdiff
