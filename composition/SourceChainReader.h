#pragma once
// Follows a source reference down the mobs it leads through.
#include <optional>

#include "ReadContext.h"
#include "SourceChain.h"

namespace composition {

// From the mob and slot a source clip names, `start` edit units in, at the referring slot's
// `rate`, down to the original source (a null source ID) or as far as the chain holds.
SourceChain resolveChain(const aafMobID_t& mobId, uint32_t slotId, int64_t start, const aafRational_t& rate,
                         ReadContext& context);

// A Timecode segment's start, rate and drop flag (the slot's edit rate is the caller's).
Timecode readTimecode(const aafkit::Object& timecodeSegment);
// The mob's first timecode track; none when it has none.
std::optional<Timecode> findTimecode(const aafkit::Object& mob);

// Whether a composition mob is only a window onto other material (a sub-clip or an adjusted
// clip) and belongs in a clip's chain rather than being a nest of its own.
bool isClipWindow(const aafkit::Object& mob);

}  // namespace composition
