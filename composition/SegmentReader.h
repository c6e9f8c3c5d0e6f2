#pragma once
// A segment and everything below it, as the file holds it.
#include "ReadContext.h"
#include "Segment.h"

namespace composition {

// `rate` is the edit rate of the slot the segment plays in: source references are carried
// from it down their chains.
Segment readSegment(const aafkit::Object& segment, const aafRational_t& rate, ReadContext& context);

DataKind dataKindOf(const aafkit::Object& component);

}  // namespace composition
