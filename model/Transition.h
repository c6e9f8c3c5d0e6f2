#pragma once
// A transition between the events around it; the cut point is relative to its start.
#include "TrackEvent.h"

class Transition : public TrackEvent {
public:
    uint32_t getType() override { return kEventTransition; }

    int64_t cutPoint = 0;
};
