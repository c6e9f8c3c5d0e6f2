#include "Events.h"

void Events::destroy(Track& track) {
    for (TrackEvent* event : track.events) Destroy()(event);
    track.events.clear();
}
