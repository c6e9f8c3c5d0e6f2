#include "composition.h"

#include <cmath>
#include <memory>
#include <utility>

#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "model/Filler.h"
#include "model/Transition.h"

namespace {
constexpr char kErrorSource[] = "AafParser/composition";

// Absent required collections read as empty, as the toolkit's getters answer.
AAFRESULT requiredObjects(const Object& o, uint16_t pid, const std::vector<Object*>*& out) {
    static const std::vector<Object*> kNone;
    out = &kNone;
    return requiredProperty(aafkit::getObjects(o, pid, out), o, pid);
}

bool isTopLevel(const Object& mob) {
    aafUID_t usage = {};
    return aafkit::getUsageCode(mob, usage) != AAFRESULT_SUCCESS || usage == kAAFUsage_TopLevel;
}

Object* findTopLevelComposition(const AafParseContext& context) {
    std::vector<Object*> mobs;
    if (AAF_FAILED(aafkit::getMobs(*context.file, aafkit::kAAFCompMob, mobs))) return nullptr;
    for (Object* mob : mobs)
        if (isTopLevel(*mob)) return mob;
    return nullptr;
}

// Whole frames per second of a timecode slot: 30000/1001 gives 30, 24000/1001 gives 24.
uint16_t timecodeRate(const aafRational_t& editRate) {
    return uint16_t(int64_t(std::ceil(double(editRate.numerator) / double(editRate.denominator))));
}

void takeTimecode(Sequence& sequence, const Object& timecode, const Object& slot) {
    int64_t start = 0;
    uint8_t drop = 0;
    if (AAF_FAILED(requiredProperty(aafkit::getInt64(timecode, PID_Timecode_Start, start), timecode,
                                    PID_Timecode_Start)) ||
        AAF_FAILED(requiredProperty(aafkit::getUInt8(timecode, PID_Timecode_Drop, drop), timecode,
                                    PID_Timecode_Drop)))
        return;
    if (!slot.isA(AUID_AAFTimelineMobSlot)) return;
    aafRational_t rate = {0, 0};
    if (AAF_FAILED(requiredProperty(aafkit::getRational(slot, PID_TimelineMobSlot_EditRate, rate), slot,
                                    PID_TimelineMobSlot_EditRate)) ||
        rate.denominator == 0)
        return;
    uint16_t fps = timecodeRate(rate);
    if (fps == 0) return;
    sequence.dropFrame = drop ? 1 : 0;
    sequence.timecodeFps = fps;
    sequence.timecodeStart = uint32_t(start);
}

AAFRESULT readTrackHeader(const Object& slot, Track& track) {
    AAFRESULT result = requiredProperty(aafkit::getUInt32(slot, PID_MobSlot_SlotID, track.index), slot,
                                        PID_MobSlot_SlotID);
    if (AAF_FAILED(result) || !slot.isA(AUID_AAFTimelineMobSlot)) return result;
    aafRational_t rate = {0, 0};
    result = requiredProperty(aafkit::getRational(slot, PID_TimelineMobSlot_EditRate, rate), slot,
                              PID_TimelineMobSlot_EditRate);
    if (AAF_FAILED(result)) return result;
    track.editRate = rationalToDouble(rate);
    return AAFRESULT_SUCCESS;
}

AAFRESULT appendTransition(const Object& component, Track& track, Events& events, double scale) {
    auto transition = events.make<Transition>();
    transition->speed = scale;
    AAFRESULT result = requiredProperty(aafkit::getInt64(component, PID_Transition_CutPoint, transition->cutPoint),
                                        component, PID_Transition_CutPoint);
    if (AAF_FAILED(result)) return result;
    if (AAF_FAILED(result = aafkit::getInt64(component, PID_Component_Length, transition->length))) return result;
    track.events.push_back(transition.release());
    return AAFRESULT_SUCCESS;
}

void processSequence(const Object& sequenceObject, Track& track, Sequence& sequence, AafParseContext& context,
                     double scale) {
    const std::vector<Object*>* components = nullptr;
    if (AAF_FAILED(requiredObjects(sequenceObject, PID_Sequence_Components, components))) return;
    track.events.reserve(track.events.size() + components->size());
    for (Object* component : *components) {
        if (component->isA(AUID_AAFSegment))
            ProcessSegment(*component, track, sequence, context, scale);
        else if (component->isA(AUID_AAFTransition) && appendTransition(*component, track, sequence.events, scale) != AAFRESULT_SUCCESS)
            return;
    }
}

void processFiller(const Object& filler, Track& track, Events& events, double scale) {
    auto event = events.make<Filler>();
    event->speed = scale;
    if (AAF_FAILED(aafkit::getInt64(filler, PID_Component_Length, event->length))) return;
    track.events.push_back(event.release());
}

// Any event (a comment marker among them) becomes a marker of the sequence, in the
// edit units of its own slot.
void processEvent(const Object& event, Sequence& sequence) {
    Marker marker;
    if (AAF_FAILED(requiredProperty(aafkit::getInt64(event, PID_Event_Position, marker.position), event,
                                    PID_Event_Position)) ||
        AAF_FAILED(readText(event, PID_Event_Comment, marker.text, kTextLength)))
        return;
    sequence.markers.push_back(marker);
}

void processNestedScope(const Object& scope, Track& track, Sequence& sequence, AafParseContext& context,
                        double scale) {
    const std::vector<Object*>* segments = nullptr;
    if (AAF_FAILED(requiredObjects(scope, PID_NestedScope_Slots, segments))) return;
    for (Object* segment : *segments) ProcessSegment(*segment, track, sequence, context, scale);
}

}  // namespace

AAFRESULT ParseComposition(AafParseContext* context) {
    if (!context) return AAFRESULT_SUCCESS;
    Object* composition = findTopLevelComposition(*context);
    if (!composition) return AAFRESULT_SUCCESS;
    for (Object* slot : aafkit::getSlots(*composition)) ProcessSlot(context->sequence, *slot, *context);
    return AAFRESULT_SUCCESS;
}

AAFRESULT ProcessSlot(Sequence& sequence, const Object& slot, AafParseContext& context) {
    Object* segment = nullptr;
    if (AAF_FAILED(aafkit::getObject(slot, PID_MobSlot_Segment, segment))) return AAFRESULT_SUCCESS;
    if (sequence.timecodeFps == 0 && segment->isA(AUID_AAFTimecode)) {
        takeTimecode(sequence, *segment, slot);
        return AAFRESULT_SUCCESS;
    }
    Track track;
    if (readTrackHeader(slot, track) != AAFRESULT_SUCCESS) return AAFRESULT_SUCCESS;
    ProcessSegment(*segment, track, sequence, context, 1.0);
    if (slot.isA(AUID_AAFTimelineMobSlot))
        sequence.tracks.push_back(std::move(track));
    else
        sequence.events.destroy(track);
    return AAFRESULT_SUCCESS;
}

AAFRESULT ProcessSegment(const Object& segment, Track& track, Sequence& sequence, AafParseContext& context,
                         double scale) {
    if (segment.isA(AUID_AAFSequence))
        processSequence(segment, track, sequence, context, scale);
    else if (segment.isA(AUID_AAFSourceClip))
        ProcessSourceClip(segment, track, context, scale);
    else if (segment.isA(AUID_AAFFiller))
        processFiller(segment, track, sequence.events, scale);
    else if (segment.isA(AUID_AAFEvent))
        processEvent(segment, sequence);
    else if (segment.isA(AUID_AAFOperationGroup))
        ProcessOperationGroup(segment, track, sequence, context);
    else if (segment.isA(AUID_AAFNestedScope))
        processNestedScope(segment, track, sequence, context, scale);
    return AAFRESULT_SUCCESS;
}
