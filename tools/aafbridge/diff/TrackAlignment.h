#pragma once
// Two versions of a track lined up by their material: pairs of events that show the same
// source, in order on both tracks, chosen to share the most of it. One insertion or deletion
// leaves every later pair intact, as matching by record position would not.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "diff/SourceSpan.h"

namespace cutdiff {

struct EventPair {
    size_t before = 0, after = 0;  // indices into the two tracks' events
};

// The order-keeping pairing with the most shared source, in before's order. Near-linear: each
// event is weighed against at most a few dozen others.
std::vector<EventPair> alignEvents(const std::vector<SourceSpan>& before, const std::vector<SourceSpan>& after);

}  // namespace cutdiff
