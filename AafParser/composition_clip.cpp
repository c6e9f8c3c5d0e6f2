#include <memory>

#include "aafkit/File.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "composition.h"
#include "model/TrackClip.h"

namespace {
constexpr char kErrorSource[] = "AafParser/composition";

// All three fields are read before any is stored, so a failure leaves `out` as it was.
AAFRESULT GetSourceReference(const Object& clip, aafSourceRef_t& out) {
    aafSourceRef_t reference = {};
    AAFRESULT result = requiredProperty(aafkit::getMobId(clip, PID_SourceReference_SourceID, reference.sourceID),
                                        clip, PID_SourceReference_SourceID);
    if (result == AAFRESULT_SUCCESS)
        result = requiredProperty(aafkit::getUInt32(clip, PID_SourceReference_SourceMobSlotID, reference.sourceSlotID),
                                  clip, PID_SourceReference_SourceMobSlotID);
    if (result == AAFRESULT_SUCCESS)
        result = requiredProperty(aafkit::getInt64(clip, PID_SourceClip_StartTime, reference.startTime), clip,
                                  PID_SourceClip_StartTime);
    if (result == AAFRESULT_SUCCESS) out = reference;
    return result;
}

AAFRESULT ResolveRef(const Object& clip, const aafSourceRef_t& reference, Object*& mob) {
    mob = aafkit::fileOf(clip).lookupMob(reference.sourceID);
    return mob ? AAFRESULT_SUCCESS : AAFRESULT_MOB_NOT_FOUND;
}

// Wraps like the 64-bit machine arithmetic it replaces, without undefined behaviour.
int64_t wrappingAdd(int64_t a, int64_t b) { return int64_t(uint64_t(a) + uint64_t(b)); }
int64_t wrappingMultiply(int64_t a, int64_t b) { return int64_t(uint64_t(a) * uint64_t(b)); }
int64_t safeDivide(int64_t a, int64_t b) { return b == -1 ? wrappingMultiply(a, -1) : a / b; }

// A reference into a sub-clip (or any composition) is followed one level, to the source
// clip that is the referenced slot's segment.
AAFRESULT followComposition(Object*& mob, aafSourceRef_t& reference, TrackClip& clip) {
    Object* inner = nullptr;
    AAFRESULT result = FindSourceClip(*mob, reference.sourceSlotID, inner);
    if (result != AAFRESULT_SUCCESS) return result;
    if (AAF_FAILED(result = GetSourceReference(*inner, reference))) return result;
    if (AAF_FAILED(result = ResolveRef(*inner, reference, mob))) return result;
    clip.inPoint = wrappingAdd(clip.inPoint, reference.startTime);
    return AAFRESULT_SUCCESS;
}

AAFRESULT readClip(const Object& sourceClip, TrackClip& clip, Track& track, AafParseContext& context) {
    AAFRESULT result = aafkit::getInt64(sourceClip, PID_Component_Length, clip.length);
    if (AAF_FAILED(result)) return result;
    aafSourceRef_t reference = {};
    if (AAF_FAILED(result = GetSourceReference(sourceClip, reference))) return result;
    getRefType(reference, track.isVideo, context);
    clip.inPoint = reference.startTime;
    Object* mob = nullptr;
    if (AAF_FAILED(result = ResolveRef(sourceClip, reference, mob))) return result;
    clip.isSubClip = IsMobSubClip(*mob) ? 1 : 0;
    if (mob->isA(AUID_AAFCompositionMob) && (result = followComposition(mob, reference, clip)) != AAFRESULT_SUCCESS)
        return result;
    Object* slot = nullptr;
    if ((result = GetMobSlotWithID(*mob, reference.sourceSlotID, slot)) != AAFRESULT_SUCCESS) return result;
    if (AAF_FAILED(result = aafkit::getUInt32(*slot, PID_MobSlot_PhysicalTrackNumber, clip.physicalNumber)))
        return result;
    wchar_t text[kTextLength];
    if (AAF_FAILED(result = readText(*mob, PID_Mob_Name, text, kTextLength))) return result;
    clip.clipName = context.texts.text(text);
    clip.slotId = reference.sourceSlotID;
    mobId2String(text, reference.sourceID, kTextLength);
    clip.mobIdText = context.texts.text(text);
    return AAFRESULT_SUCCESS;
}

}  // namespace

void ProcessSourceClip(const Object& sourceClip, Track& track, AafParseContext& context, double scale) {
    auto clip = context.sequence.events.make<TrackClip>();
    clip->speed = scale;
    if (readClip(sourceClip, *clip, track, context) == AAFRESULT_SUCCESS) track.events.push_back(clip.release());
}

AAFRESULT GetMobSlotWithID(const Object& mob, uint32_t slotId, Object*& slot) {
    AAFRESULT result = aafkit::lookupSlot(mob, slotId, slot);
    AAF_REPORT(result);
    return result;
}

AAFRESULT FindSourceClip(const Object& mob, uint32_t slotId, Object*& sourceClip) {
    Object* slot = nullptr;
    AAFRESULT result = GetMobSlotWithID(mob, slotId, slot);
    if (result != AAFRESULT_SUCCESS) return result;
    Object* segment = nullptr;
    if (AAF_FAILED(result = aafkit::getObject(*slot, PID_MobSlot_Segment, segment))) return result;
    if (AAF_FAILED(result = segment->isA(AUID_AAFSourceClip) ? AAFRESULT_SUCCESS : kNoInterface)) return result;
    sourceClip = segment;
    return AAFRESULT_SUCCESS;
}

bool IsMobSubClip(const Object& mob) {
    aafUID_t usage = {};
    return mob.isA(AUID_AAFCompositionMob) && aafkit::getUsageCode(mob, usage) == AAFRESULT_SUCCESS &&
           usage == kAAFUsage_SubClip;
}

void getRefType(const aafSourceRef_t& reference, uint8_t& isVideo, const AafParseContext& context) {
    const auto found = context.clipsByMobId.find(reference.sourceID);
    if (found == context.clipsByMobId.end()) return;
    for (uint32_t position : found->second) {
        for (const SourceTrack& track : context.clips[position].tracks) {
            if (track.slotId == reference.sourceSlotID) {
                isVideo = track.isVideo;
                return;
            }
        }
    }
}

int64_t speedAdjustedInPoint(int64_t inPoint, const aafRational_t& ratio, int32_t phase, bool isSubClip) {
    if (isSubClip) return safeDivide(wrappingMultiply(inPoint, ratio.numerator), ratio.denominator);
    return wrappingAdd(wrappingMultiply(ratio.numerator, safeDivide(inPoint, ratio.denominator)), phase);
}
