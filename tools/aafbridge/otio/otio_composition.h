#pragma once
// The composition as the file holds it (composition/) as an OpenTimelineIO Timeline: clips in
// their sources' timecode with their media, nests as nested items, speed changes as time
// warps, markers with their colours on the tracks they belong to.
#include <nlohmann/json.hpp>
#include <string>

#include "composition/Composition.h"
#include "view/JsonSink.h"

struct OtioExportOptions {
    bool flatten = false;  // nested compositions spliced into their tracks: one level per track
};

// The Timeline handed to `sink` a track at a time, so that memory follows one track, not the
// whole document. `fallbackName` names the Timeline when the composition has no name.
void sendOtioFromComposition(const composition::Composition& composition, const std::string& fallbackName,
                             const OtioExportOptions& options, JsonSink& sink);
