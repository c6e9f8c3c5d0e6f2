#pragma once
// Operations of the composition as OpenTimelineIO effects: constant speed changes as
// LinearTimeWarp or FreezeFrame, everything else as Effect, every parameter and key frame in
// metadata.
#include <cstdint>
#include <nlohmann/json.hpp>

#include "composition/Segment.h"

nlohmann::ordered_json otioEffect(const composition::Operation& operation, int64_t length);
// The parameters with their key frames, as metadata.
nlohmann::ordered_json otioParameters(const composition::Operation& operation);
