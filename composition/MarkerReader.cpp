#include "MarkerReader.h"

#include <climits>

#include "MetadataReader.h"
#include "ObjectText.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

namespace {

std::vector<uint32_t> describedSlots(const Object& marker) {
    std::vector<uint8_t> bytes;
    std::vector<uint32_t> slots;
    if (aafkit::getBytes(marker, PID_DescriptiveMarker_DescribedSlots, bytes) != AAFRESULT_SUCCESS) return slots;
    for (size_t i = 0; i + 4 <= bytes.size(); i += 4)
        slots.push_back(uint32_t(bytes[i]) | uint32_t(bytes[i + 1]) << 8 | uint32_t(bytes[i + 2]) << 16 |
                        uint32_t(bytes[i + 3]) << 24);
    return slots;
}

std::optional<Rgb> rgbOf(const Object& marker) {
    std::vector<uint8_t> bytes;
    const uint16_t pid = extensionPid(marker, kAAFPropID_CommentMarker_CommentMarkerColor);
    if (!pid || aafkit::getBytes(marker, pid, bytes) != AAFRESULT_SUCCESS || bytes.size() != 6) return std::nullopt;
    auto channel = [&](size_t i) { return uint16_t(bytes[i] | bytes[i + 1] << 8); };
    return Rgb{channel(0), channel(2), channel(4)};
}

// Avid keeps a marker's length in its attributes when the event has none: one frame.
int64_t lengthOf(const Object& marker, const Metadata& metadata) {
    int64_t length = 0;
    if (aafkit::getInt64(marker, PID_Component_Length, length) == AAFRESULT_SUCCESS) return length;
    if (const TaggedValue* stated = metadata.find("_ATN_CRM_LENGTH")) {
        char* end = nullptr;
        const long long parsed = std::strtoll(stated->value.c_str(), &end, 10);
        if (end && *end == '\0' && parsed >= 0 && parsed < LLONG_MAX) return parsed;
    }
    return 1;
}

Marker readMarker(const Object& event, const Object& slot, const aafRational_t& rate) {
    Marker marker;
    marker.metadata = readMetadata(event, PID_Component_UserComments, PID_Component_Attributes,
                                   &kAAFPropID_CommentMarker_CommentMarkerAttributeList);
    marker.position = int64Of(event, PID_Event_Position);
    marker.length = lengthOf(event, marker.metadata);
    marker.editRate = rate;
    marker.comment = textOf(event, PID_Event_Comment);
    if (const uint16_t user = extensionPid(event, kAAFPropID_CommentMarker_CommentMarkerUser))
        marker.name = textOf(event, user);
    if (marker.name.empty()) marker.name = marker.comment;
    marker.rgb = rgbOf(event);
    if (const TaggedValue* colour = marker.metadata.find("_ATN_CRM_COLOR")) marker.colour = colour->value;
    marker.slotId = uint32Of(slot, PID_MobSlot_SlotID);
    marker.describedSlots = describedSlots(event);
    return marker;
}

void collect(const Object& segment, const Object& slot, const aafRational_t& rate, std::vector<Marker>& out) {
    if (segment.isA(AUID_AAFEvent)) {
        out.push_back(readMarker(segment, slot, rate));
        return;
    }
    if (!segment.isA(AUID_AAFSequence)) return;
    for (const Object* component : objectsOf(segment, PID_Sequence_Components))
        if (component->isA(AUID_AAFEvent)) out.push_back(readMarker(*component, slot, rate));
}

}  // namespace

void readMarkers(const Object& slot, const aafRational_t& rate, std::vector<Marker>& out) {
    if (Object* segment = aafkit::strongChild(&slot, PID_MobSlot_Segment)) collect(*segment, slot, rate, out);
}

}  // namespace composition
