// Writing sub-clips: a composition mob per sub-clip whose slots reference the
// parent's master mob, one per parent track.
#include "aaf_clip.h"
#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "context.h"

using aafkit::Object;

AAFRESULT writeSubClip(Clip& subClip, AafWriterContext* context) {
    if (!context) return AAFRESULT_NULL_PARAM;
    aafkit::File& file = aafkit::fileOf(*context->header);
    Object& mob = aafkit::createMob(file, AUID_AAFCompositionMob);
    aafkit::setString(mob, PID_Mob_Name, subClip.name);
    aafkit::setAuid(mob, PID_Mob_UsageCode, kAAFUsage_SubClip);
    aafkit::addMob(file, mob);
    aafkit::check(aafkit::getMobId(mob, PID_Mob_MobID, subClip.masterMobId));

    Clip parent;
    if (!FindClip(subClip.path, context->clips, parent)) return AAFRESULT_NULL_PARAM;  // left without slots
    uint32_t sourceSlot = 1;
    for (const ClipTrack& track : parent.tracks) {
        const aafSourceRef_t reference = {parent.masterMobId, sourceSlot, subClip.startTimecode};
        const aafUID_t& dataDef = track.kind != kClipTrackPicture ? kAAFDataDef_Sound : kAAFDataDef_Picture;
        Object& clip = aafkit::createSourceClip(file, dataDef, subClip.length, reference);
        sourceSlot = addTimelineSlot(mob, track.editRate, clip, track.trackNumber, context) + 1;
    }
    return AAFRESULT_SUCCESS;
}

AAFRESULT WriteSubClips(AafWriterContext* context) {
    if (!context) return AAFRESULT_NULL_PARAM;
    AAFRESULT result = AAFRESULT_SUCCESS;
    for (Clip& clip : context->clips) {
        if (!clip.isSubClip) continue;
        result = writeSubClip(clip, context);
        if (result < 0) return result;
    }
    return result;
}
