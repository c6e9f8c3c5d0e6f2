#pragma once
// One track: events in timeline order. Copies share the event pointers; events are
// deleted explicitly by whoever owns the sequence (see deleteEvents).
#include <cstdint>
#include <vector>

#include "TrackEvent.h"

struct Track {
    std::vector<TrackEvent*> events;
    uint32_t index = 0;
    double editRate = 0.0;
    uint8_t isVideo = 0;
};

// Deletes every event of the track exactly once and empties its list.
void deleteEvents(Track& track);
