#pragma once
// An operation group's (or transition's) definition and parameters, constant or varying.
#include "Segment.h"
#include "aafkit/om/Object.h"

namespace composition {

Operation readOperation(const aafkit::Object& group);

// Editors' operations the model names by their identifiers.
extern const aafUID_t kAudioChannelCombiner;

}  // namespace composition
