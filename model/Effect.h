#pragma once
// An operation over the events before it. Inputs are views: the track owns them.
#include <vector>

#include "TrackEvent.h"

enum EffectType : uint32_t {
    kEffectGain = 0,
    kEffectPan = 1,
    kEffectSuperimpose = 2,
    kEffectSpeed = 3,
    kEffectSpeedAlternate = 4,
    kEffectOther = 5,
};

class Effect : public TrackEvent {
public:
    uint32_t getType() override { return kEventEffect; }

    uint32_t numInputs = 0;
    std::vector<TrackEvent*> inputs;
    uint32_t effectType = kEffectOther;
    std::vector<double> params;
    std::vector<double> keyFrames;
};
