#pragma once
// Every question the reader's exported functions answer about an opened file: the
// clips, the markers, and every event of every track with its effect details.
#include <cstdint>

#include "aafbridge/aaf_reader.h"

inline void queryEverything(AafParseContext* c) {
    wchar_t text[64];
    for (uint32_t clip = 0; clip < GetNumClips(c); ++clip) {
        LoadClipName(clip, text, 63, c);
        GetClipIsVideo(clip, 0, c);
    }
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m) GetMarkerText(m, text, 63, c);
    for (uint32_t t = 0; t < GetNumTracks(c); ++t)
        for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) {
            GetEventLen(t, e, c);
            GetEventInPoint(t, e, c);
            GetEventName(t, e, text, 63, c);
            for (uint32_t i = 0; i < 4; ++i) GetEffectElementId(t, e, i, text, 63, c);
            const uint32_t keys = GetEffectKeyFrameCount(t, e, c);
            for (uint32_t k = 0; k < keys && k < 64; ++k) GetEffectKeyFrame(t, e, k, c);
        }
}

// Opens, parses and asks everything; answers whether the file opened.
inline bool readEverything(const wchar_t* path) {
    AafParseContext* context = nullptr;
    if (OpenAafFile(path, &context) != 0) return false;
    ParseClips(context);
    ParseComposition(context);
    queryEverything(context);
    CloseFile(context);
    return true;
}
