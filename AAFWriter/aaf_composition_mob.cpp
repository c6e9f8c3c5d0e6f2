// Writing the composition mob: clips and sub-clips first, then a timecode slot, one
// slot per track and a slot of markers. Writing consumes the tracks' events.
#include "aaf_clip.h"
#include "aaf_composition.h"
#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "context.h"
#include "model/Effect.h"
#include "model/Filler.h"
#include "model/TrackClip.h"
#include "model/Transition.h"

using aafkit::Object;

namespace {

aafkit::File& fileOf(AafWriterContext* context) { return aafkit::fileOf(*context->header); }

const aafUID_t& trackDataDef(const Track& track) {
    return track.isVideo ? kAAFDataDef_Picture : kAAFDataDef_Sound;
}

// The dissolve of a transition: its operation group inside a transition, with
// fillers of the transition's length where the cut sits at either end.
void appendTransition(int trackIndex, const Transition& transition, Object& sequence, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const Track& track = context->sequence.tracks[trackIndex];
    Filler around;
    around.length = transition.length;
    const aafUID_t& effect = track.isVideo ? kAAFOperationDef_VideoDissolve : kAAFOperationDef_MonoAudioDissolve;
    Object& operation = loadEffectDefinition(effect, 2, track.isVideo, context);
    Object& group = aafkit::createOperationGroup(file, trackDataDef(track), transition.length, operation);
    Object& component =
        aafkit::createTransition(file, trackDataDef(track), transition.length, transition.cutPoint, group);
    if (transition.cutPoint == 0) appendFiller(trackIndex, around, sequence, context);
    aafkit::appendComponent(sequence, component);
    if (transition.length == transition.cutPoint) appendFiller(trackIndex, around, sequence, context);
}

void appendClip(const Track& track, const TrackClip& clip, Object& sequence, AafWriterContext* context) {
    // The clip's mob ID is final only now, after the clips were written.
    const aafSourceRef_t reference = {context->clips.at(clip.clipIndex - 1).masterMobId, clip.slotId, clip.inPoint};
    aafkit::appendComponent(sequence,
                            aafkit::createSourceClip(fileOf(context), trackDataDef(track), clip.length, reference));
}

void markEffectInputs(const Track& track) {
    for (TrackEvent* event : track.events)
        if (event->getType() == kEventEffect)
            for (TrackEvent* input : static_cast<Effect*>(event)->inputs) input->index = -1;
}

void appendEvents(int trackIndex, Object& sequence, AafWriterContext* context) {
    Track& track = context->sequence.tracks[trackIndex];
    markEffectInputs(track);
    for (size_t k = 0; k < track.events.size(); ++k) {
        TrackEvent* event = track.events[k];
        if (event->index < 0) continue;  // an effect input: its effect writes it
        switch (event->getType()) {
        case kEventClip: appendClip(track, *static_cast<TrackClip*>(event), sequence, context); break;
        case kEventFiller: appendFiller(trackIndex, *static_cast<Filler*>(event), sequence, context); break;
        case kEventTransition:
            appendTransition(trackIndex, *static_cast<Transition*>(event), sequence, context);
            break;
        case kEventEffect: appendPTEffect(trackIndex, int(k), static_cast<Effect*>(event), sequence, context); break;
        }
    }
}

Object& namedSlot(Object& slot, uint32_t slotId, const wchar_t* name, uint32_t physicalNumber) {
    aafkit::setUInt32(slot, PID_MobSlot_SlotID, slotId);
    aafkit::setString(slot, PID_MobSlot_SlotName, name);
    aafkit::setUInt32(slot, PID_MobSlot_PhysicalTrackNumber, physicalNumber);
    return slot;
}

void appendTimecodeSlot(Object& mob, AafWriterContext* context) {
    const Sequence& sequence = context->sequence;
    const aafTimecode_t value = {int64_t(sequence.timecodeStart), int16_t(sequence.dropFrame),
                                 uint16_t(sequence.timecodeFps)};
    Object& timecode = aafkit::createTimecode(fileOf(context), sequence.timecodeLength, value);
    auto fps = int32_t(sequence.timecodeFps);
    aafRational_t rate = sequence.frameRate == double(sequence.timecodeFps)
                             ? aafRational_t{fps, 1}
                             : aafRational_t{truncateToInt32(double(fps) * 1000), 1001};
    Object& slot = namedSlot(aafkit::createTimelineSlot(fileOf(context), rate), 1, L"Timecode", 1);
    aafkit::check(aafkit::setObject(slot, PID_MobSlot_Segment, timecode));
    aafkit::check(aafkit::appendObject(mob, PID_Mob_Slots, slot));
}

void appendTrackSlot(Object& mob, int trackIndex, AafWriterContext* context) {
    const Track& track = context->sequence.tracks[trackIndex];
    Object& slot = aafkit::createTimelineSlot(fileOf(context), getEditRate(context->sequence.frameRate));
    Object& sequence = aafkit::createSequence(fileOf(context), trackDataDef(track));
    aafkit::check(aafkit::setObject(slot, PID_MobSlot_Segment, sequence));
    namedSlot(slot, uint32_t(trackIndex) + 2, track.isVideo ? L"Video track" : L"Audio track", track.index + 1);
    aafkit::check(aafkit::appendObject(mob, PID_Mob_Slots, slot));
    appendEvents(trackIndex, sequence, context);
}

// The marker slot's ID is the number of tracks: part of the layout receiving editors read.
void appendMarkerSlot(Object& mob, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const Sequence& composition = context->sequence;
    Object& slot = namedSlot(aafkit::createEventSlot(file, getEditRate(composition.frameRate)),
                             uint32_t(composition.tracks.size()), L"Markers", 1);
    Object& sequence = aafkit::createSequence(file, kAAFDataDef_DescriptiveMetadata);
    for (const Marker& marker : composition.markers) {
        Object& component = aafkit::createDescriptiveMarker(file);
        aafkit::setInt64(component, PID_Event_Position, marker.position);
        aafkit::setString(component, PID_Event_Comment, marker.text);
        aafkit::setDataDefinition(component, kAAFDataDef_DescriptiveMetadata);
        aafkit::appendComment(component, L"Comment", marker.text);
        aafkit::appendComponent(sequence, component);
        aafkit::setBytes(component, PID_DescriptiveMarker_DescribedSlots, {1, 0, 0, 0});  // the timecode slot
    }
    aafkit::check(aafkit::setObject(slot, PID_MobSlot_Segment, sequence));
    aafkit::check(aafkit::appendObject(mob, PID_Mob_Slots, slot));
}

}  // namespace

void appendFiller(int trackIndex, const Filler& filler, Object& sequence, AafWriterContext* context) {
    const Track& track = context->sequence.tracks[trackIndex];
    aafkit::appendComponent(sequence, aafkit::createFiller(fileOf(context), trackDataDef(track), filler.length));
}

AAFRESULT EndComposition(void* untypedContext) {
    auto* context = static_cast<AafWriterContext*>(untypedContext);
    if (!context) return AAFRESULT_NULL_PARAM;
    AAFRESULT result = WriteClips(context);
    if (result < 0) return result;
    result = WriteSubClips(context);
    if (result < 0) return result;
    Sequence& composition = context->sequence;
    if (!composition.compositionStarted || composition.tracks.empty()) return result;

    aafkit::File& file = fileOf(context);
    Object& mob = aafkit::createMob(file, AUID_AAFCompositionMob);
    aafkit::setString(mob, PID_Mob_Name, composition.name);
    appendTimecodeSlot(mob, context);
    aafkit::addMob(file, mob);
    for (size_t i = 0; i < composition.tracks.size(); ++i) {
        appendTrackSlot(mob, int(i), context);
        composition.events.destroy(composition.tracks[i]);
    }
    if (!composition.markers.empty()) appendMarkerSlot(mob, context);
    return result;
}
