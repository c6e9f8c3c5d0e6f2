#pragma once
// A gap on a track.
#include "TrackEvent.h"

class Filler : public TrackEvent {
public:
    uint32_t getType() override { return kEventFiller; }
};
