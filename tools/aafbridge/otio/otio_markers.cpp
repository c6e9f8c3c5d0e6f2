#include "otio/otio_markers.h"

#include <algorithm>

#include "composition/EditTime.h"
#include "otio/otio_items.h"
#include "otio/otio_sources.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

// The track a marker belongs to: the first slot it describes; Avid leaves that out for
// markers on the timecode track.
const Track* attachedTrack(const Composition& composition, const Marker& marker) {
    if (!marker.describedSlots.empty()) return composition.findTrack(marker.describedSlots.front());
    for (const Track& track : composition.tracks)
        if (track.data == DataKind::Timecode && track.slotClass == SlotClass::Timeline) return &track;
    return nullptr;
}

}  // namespace

Json otioMarker(const Marker& marker, const Track* attached, int64_t start, const aafRational_t& rate) {
    Json data = {{"slotId", marker.slotId}, {"describedSlots", marker.describedSlots}};
    if (attached) {
        data["attachedSlotId"] = attached->slotId;
        data["attachedPhysicalTrack"] = attached->physicalTrack;
        data["attachedKind"] = dataKindName(attached->data);
    }
    if (marker.rgb) data["rgb"] = {marker.rgb->red, marker.rgb->green, marker.rgb->blue};
    if (!marker.colour.empty()) data["colour"] = marker.colour;
    addMetadata(marker.metadata, data);
    Json object = otioObject("Marker.2", marker.name, std::move(data));
    object["marked_range"] = otioRange(double(start), double(convertEditUnits(marker.length, marker.editRate, rate)),
                                       rateValue(rate));
    const std::string colour = colourName(marker);
    object["color"] = colour.empty() ? "RED" : colour;
    object["comment"] = marker.comment;
    return object;
}

PlacedMarkers placeMarkers(const Composition& composition, const std::vector<const Track*>& exported) {
    PlacedMarkers placed;
    placed.tracks.assign(exported.size(), Json::array());
    for (const Marker& marker : composition.markers) {
        const Track* attached = attachedTrack(composition, marker);
        auto found = std::find(exported.begin(), exported.end(), attached);
        if (found == exported.end()) {
            placed.stack.push_back(otioMarker(marker, attached, marker.position, marker.editRate));
            continue;
        }
        const int64_t position = convertEditUnits(marker.position, marker.editRate, attached->editRate);
        placed.tracks[size_t(found - exported.begin())].push_back(
            otioMarker(marker, attached, position, attached->editRate));
    }
    return placed;
}
