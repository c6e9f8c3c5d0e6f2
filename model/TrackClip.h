#pragma once
// A stretch of a source clip placed on a track.
#include <cwchar>

#include "TrackEvent.h"
#include "Text.h"
#include "aafbridge/aaf_types.h"

class TrackClip : public TrackEvent {
public:
    uint32_t getType() override { return kEventClip; }

    EventText clipName;
    EventText mobIdText;
    aafMobID_t mobId = {};
    uint32_t slotId = 0;
    uint32_t physicalNumber = 0;
    uint32_t clipIndex = 0;
    int64_t inPoint = 0;
    uint8_t isSubClip = 0;
};
