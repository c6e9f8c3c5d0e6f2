#pragma once
// Two versions of a track lined up by their material: pairs of events that show the same
// source, in order on both tracks, chosen to share the most of it. One insertion or deletion
// leaves every later pair intact, as matching by record position would not.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "diff/Cut.h"

namespace cutdiff {

struct EventPair {
    size_t before = 0, after = 0;  // indices into the two tracks' events
};

// How much of the same source two events show: 0 when their sources differ.
int64_t sourceOverlap(const CutEvent& a, const CutEvent& b);

// The order-keeping pairing with the most shared source, in before's order. Both tracks in the
// same edit units. Near-linear: each event is weighed against at most a few dozen others.
std::vector<EventPair> alignEvents(const std::vector<CutEvent>& before, const std::vector<CutEvent>& after);

}  // namespace cutdiff
