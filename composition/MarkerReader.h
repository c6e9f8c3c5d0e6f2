#pragma once
// Markers: the events of event slots, and events that sit in a timeline slot's sequence.
#include <vector>

#include "Marker.h"
#include "aafkit/om/Object.h"

namespace composition {

// Every event in the slot's segment, positioned in the slot's edit units at `rate`.
void readMarkers(const aafkit::Object& slot, const aafRational_t& rate, std::vector<Marker>& out);

}  // namespace composition
