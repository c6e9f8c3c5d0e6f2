#include "Composition.h"

#include <cstdlib>

#include "MarkerReader.h"
#include "MetadataReader.h"
#include "ObjectText.h"
#include "ReadContext.h"
#include "SegmentReader.h"
#include "SourceChainReader.h"
#include "aafkit/Mobs.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

namespace {

const Object* topLevelComposition(const aafkit::File& file) {
    std::vector<Object*> mobs;
    if (aafkit::getMobs(file, aafkit::kAAFCompMob, mobs) != AAFRESULT_SUCCESS) return nullptr;
    for (const Object* mob : mobs) {
        aafUID_t usage = {};
        if (aafkit::getUsageCode(*mob, usage) != AAFRESULT_SUCCESS || usage == kAAFUsage_TopLevel) return mob;
    }
    return nullptr;
}

SlotClass slotClassOf(const Object& slot) {
    if (slot.isA(AUID_AAFEventMobSlot)) return SlotClass::Event;
    if (slot.isA(AUID_AAFTimelineMobSlot)) return SlotClass::Timeline;
    return SlotClass::Static;
}

Track readTrack(const Object& slot, ReadContext& context) {
    Track track;
    track.name = textOf(slot, PID_MobSlot_SlotName);
    track.slotId = uint32Of(slot, PID_MobSlot_SlotID);
    track.physicalTrack = uint32Of(slot, PID_MobSlot_PhysicalTrackNumber);
    track.slotClass = slotClassOf(slot);
    track.editRate = slotEditRate(slot);
    track.origin = int64Of(slot, PID_TimelineMobSlot_Origin);
    track.metadata = readMetadata(slot, 0, 0, &kAAFPropID_TimelineMobSlot_TimelineMobAttributeList);
    if (const TaggedValue* format = track.metadata.find("_TRACK_FORMAT"))
        track.trackFormat = uint32_t(std::strtoul(format->value.c_str(), nullptr, 10));
    if (Object* segment = aafkit::strongChild(&slot, PID_MobSlot_Segment)) {
        track.segment = readSegment(*segment, track.editRate, context);
        track.data = track.segment.data;
    }
    return track;
}

}  // namespace

bool readComposition(const aafkit::File& file, Composition& out, std::string& why) {
    const Object* mob = topLevelComposition(file);
    if (!mob) {
        why = "the file holds no top-level composition";
        return false;
    }
    ReadContext context(file);
    context.compositionsOpen.push_back(mob);
    Composition composition;
    composition.name = textOf(*mob, PID_Mob_Name);
    aafkit::getMobId(*mob, PID_Mob_MobID, composition.mobId);
    composition.metadata = readMetadata(*mob, PID_Mob_UserComments, PID_Mob_Attributes, &kAAFPropID_Mob_MobAttributeList);
    composition.timecode = findTimecode(*mob);
    for (const Object* slot : aafkit::getSlots(*mob)) {
        composition.tracks.push_back(readTrack(*slot, context));
        readMarkers(*slot, composition.tracks.back().editRate, composition.markers);
    }
    out = std::move(composition);
    return true;
}

const Track* Composition::findTrack(uint32_t slotId) const {
    for (const Track& track : tracks)
        if (track.slotId == slotId) return &track;
    return nullptr;
}

}  // namespace composition
