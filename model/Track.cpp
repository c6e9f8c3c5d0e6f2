#include "Track.h"

void deleteEvents(Track& track) {
    for (TrackEvent* event : track.events) delete event;
    track.events.clear();
}
