#pragma once
// Where each clip event of the host's view comes from: the tape or file behind its master
// clip, the source timecode it starts and ends at, the media file and whether it is inside
// the AAF, the channel. `aafbridge timeline --sources` adds it to every clip event.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <unordered_map>

#include "aafkit/File.h"
#include "aafkit/meta/MetaModel.h"
#include "composition/SourceResolver.h"

class EventSources {
public:
    explicit EventSources(const aafkit::File& file);

    // The source of a clip event (the view's own JSON of it) on a track at `editRate` frames a
    // second; null for other events and for clips whose master the file does not hold.
    nlohmann::ordered_json sourceOf(const nlohmann::ordered_json& event, double editRate);

private:
    composition::SourceResolver resolver_;
    // The reader names a clip by its master's material identifier.
    std::unordered_map<aafkit::meta::AuidKey, aafMobID_t, aafkit::meta::AuidKeyHash> mobsByMaterial_;
};
