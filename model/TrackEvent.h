#pragma once
// Base of every item on a track. Events are heap objects deleted through this type.
#include <cstdint>

class TrackEvent {
public:
    virtual uint32_t getType() = 0;
    virtual ~TrackEvent() = default;

    int64_t length = 0;
    int32_t index = 0;
    double speed = 1.0;
};

enum EventType : uint32_t {
    kEventClip = 0,
    kEventFiller = 1,
    kEventTransition = 2,
    kEventEffect = 3,
};
