#pragma once
// The in-memory composition shared by reader and writer. Every field starts zeroed.
#include <cstdint>
#include <cwchar>
#include <vector>

#include "Events.h"
#include "Marker.h"
#include "Text.h"
#include "Track.h"

struct Sequence {
    uint32_t timecodeStart = 0;
    uint32_t timecodeFps = 0;
    uint8_t dropFrame = 0;
    double frameRate = 0.0;
    std::vector<Track> tracks;
    Events events;  // the tracks' events
    std::vector<Marker> markers;
    int64_t timecodeLength = 0;
    wchar_t name[kTextLength] = {};
    uint8_t compositionStarted = 0;
};
