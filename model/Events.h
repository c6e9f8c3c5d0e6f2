#pragma once
// Where a timeline's events live. A timeline holds them by the hundred thousand: one
// arena of large blocks (huge pages where the system has them) costs a few page
// faults where the heap took an allocation, and a fault per few dozen events, each.
// Destroying an event runs its destructor; its memory returns with the timeline.
#include <memory>
#include <new>

#include "Track.h"
#include "aafkit/mem/Arena.h"

class Events {
public:
    struct Destroy {
        void operator()(TrackEvent* event) const { event->~TrackEvent(); }
    };
    template <class Event>
    using Owned = std::unique_ptr<Event, Destroy>;

    // A new event, destroyed when dropped unless released to a track.
    template <class Event>
    Owned<Event> make() {
        return Owned<Event>(new (memory_.allocate(sizeof(Event), alignof(Event))) Event());
    }
    // Destroys every event of the track exactly once and empties its list.
    void destroy(Track& track);

private:
    aafkit::mem::Arena memory_;
};
