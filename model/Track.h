#pragma once
// One track: events in timeline order. Copies share the event pointers; the events
// belong to the sequence's Events, which destroys them.
#include <cstdint>
#include <vector>

#include "TrackEvent.h"

struct Track {
    std::vector<TrackEvent*> events;
    uint32_t index = 0;
    double editRate = 0.0;
    uint8_t isVideo = 0;
};

