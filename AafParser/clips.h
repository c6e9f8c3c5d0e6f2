#pragma once
// The clip catalogue: one SourceClip per master mob, with the source tracks of its
// timeline slots, the media path and the essence properties from its file mobs.
#include <cstdint>
#include <string>
#include <vector>

#include "aafbridge/aaf_types.h"
#include "aafkit/om/Object.h"
#include "model/Text.h"

struct SourceTrack {
    aafMobID_t sourceId = {};
    uint8_t isVideo = 0;
    uint32_t slotId = 0;
};

struct SourceClip {
    std::vector<SourceTrack> tracks;
    // Each shorter than kTextLength, as the host's fixed buffers require.
    std::wstring path;
    std::wstring name;
    std::wstring id;
    aafMobID_t mobId = {};
    int64_t length = 0;
    uint8_t hasVideo = 0;
    uint8_t hasAudio = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    aafRational_t editRate = {0, 1};
    double frameRate = 0.0;
    double sampleRate = 0.0;
};

// 1 when the slot carries picture (current or legacy data definition), else 0.
uint8_t getDataDefType(const aafkit::Object& slot);

// A rational as a double; 0.0 for a zero denominator.
double rationalToDouble(const aafRational_t& rate);
