#include "clips.h"

#include <unordered_map>

#include "aaf_basic.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "essences.h"

namespace {
constexpr char kErrorSource[] = "AafParser/clips";

using aafkit::Object;

// The segment itself when it is of the class, else the first component of a sequence
// when that is; none otherwise.
Object* segmentAs(Object& segment, const aafUID_t& classId) {
    if (segment.isA(classId)) return &segment;
    const std::vector<Object*>* components = nullptr;
    if (!segment.isA(AUID_AAFSequence) ||
        aafkit::getObjects(segment, PID_Sequence_Components, components) != AAFRESULT_SUCCESS ||
        components->empty() || !components->front()->isA(classId))
        return nullptr;
    return components->front();
}

// The source clip of a timeline slot: its segment, or the first component of its sequence.
Object* FindSourceClip(const Object& slot) {
    if (!slot.isA(AUID_AAFTimelineMobSlot)) return nullptr;
    Object* segment = nullptr;
    if (AAF_FAILED(aafkit::getObject(slot, PID_MobSlot_Segment, segment))) return nullptr;
    return segmentAs(*segment, AUID_AAFSourceClip);
}

AAFRESULT resolveSourceMob(const Object& clip, Object*& mob) {
    aafMobID_t sourceId = {};
    AAFRESULT result = aafkit::getMobId(clip, PID_SourceReference_SourceID, sourceId);
    if (result != AAFRESULT_SUCCESS) return result;
    mob = aafkit::fileOf(clip).lookupMob(sourceId);
    return mob ? AAFRESULT_SUCCESS : AAFRESULT_MOB_NOT_FOUND;
}

// What the search found below each source mob already searched. A mob reached again gives
// the same answer without a second search, and one reached through a cycle (only in a
// malformed file) gives none, so the search ends on any file.
using LocatorSearch = std::unordered_map<const Object*, Object*>;

// The first locator of the mob's descriptor or, failing that, of the source mobs its
// slots lead to; a locator found through a later slot replaces an earlier one.
void FindLocator(const Object& sourceMob, Object*& locator, LocatorSearch& searched) {
    auto known = searched.find(&sourceMob);
    if (known != searched.end()) {
        if (known->second) locator = known->second;
        return;
    }
    searched[&sourceMob] = nullptr;
    Object* descriptor = nullptr;
    if (AAF_FAILED(aafkit::getEssenceDescriptor(sourceMob, descriptor))) return;
    Object* found = nullptr;
    const std::vector<Object*>* locators = nullptr;
    if (descriptor && aafkit::getObjects(*descriptor, PID_EssenceDescriptor_Locator, locators) == AAFRESULT_SUCCESS &&
        !locators->empty()) {
        found = locators->front();
    } else {
        for (Object* slot : aafkit::getSlots(sourceMob)) {
            Object* clip = FindSourceClip(*slot);
            Object* mob = nullptr;
            if (!clip || AAF_FAILED(resolveSourceMob(*clip, mob))) continue;
            if (mob->isA(AUID_AAFSourceMob)) FindLocator(*mob, found, searched);
        }
    }
    searched[&sourceMob] = found;
    if (found) locator = found;
}

AAFRESULT readLocatorPath(const Object& locator, std::wstring& path) {
    if (!locator.isA(AUID_AAFNetworkLocator)) return AAFRESULT_ABSTRACT_CLASS;
    return readText(locator, PID_NetworkLocator_URLString, path, kTextLength);
}

AAFRESULT ProcessSource(SourceClip& clip, const Object& reference, const Object& slot) {
    SourceTrack track;
    AAFRESULT result = aafkit::getMobId(reference, PID_SourceReference_SourceID, track.sourceId);
    if (AAF_FAILED(result)) return result;
    result = requiredProperty(aafkit::getUInt32(slot, PID_MobSlot_SlotID, track.slotId), slot, PID_MobSlot_SlotID);
    if (AAF_FAILED(result)) return result;
    track.isVideo = getDataDefType(slot);
    clip.tracks.push_back(track);
    return AAFRESULT_SUCCESS;
}

AAFRESULT readTimelineSlot(SourceClip& clip, const Object& slot) {
    AAFRESULT result = requiredProperty(aafkit::getRational(slot, PID_TimelineMobSlot_EditRate, clip.editRate), slot,
                                        PID_TimelineMobSlot_EditRate);
    if (AAF_FAILED(result)) return result;
    Object* segment = nullptr;
    if (AAF_FAILED(result = aafkit::getObject(slot, PID_MobSlot_Segment, segment))) return result;
    if (AAF_FAILED(result = aafkit::getInt64(*segment, PID_Component_Length, clip.length))) return result;
    Object* reference = segmentAs(*segment, AUID_AAFSourceReference);
    return reference ? ProcessSource(clip, *reference, slot) : AAFRESULT_SUCCESS;
}

bool isLowerLevel(const Object& mob) {
    aafUID_t usage = {};
    return aafkit::getUsageCode(mob, usage) == AAFRESULT_SUCCESS && usage == kAAFUsage_LowerLevel;
}

AAFRESULT readMasterMob(const Object& mob, SourceClip& clip) {
    AAFRESULT result = readText(mob, PID_Mob_Name, clip.name, kTextLength);
    if (AAF_FAILED(result)) return result;
    result = requiredProperty(aafkit::getMobId(mob, PID_Mob_MobID, clip.mobId), mob, PID_Mob_MobID);
    if (AAF_FAILED(result)) return result;
    wchar_t id[kTextLength];
    mobId2String(id, clip.mobId, kTextLength);
    clip.id = id;
    for (Object* slot : aafkit::getSlots(mob)) {
        if (!slot->isA(AUID_AAFTimelineMobSlot)) continue;
        if ((result = readTimelineSlot(clip, *slot)) != AAFRESULT_SUCCESS) return result;
    }
    return AAFRESULT_SUCCESS;
}

AAFRESULT catalogueMasterMobs(AafParseContext& context) {
    std::vector<Object*> mobs;
    AAFRESULT result = aafkit::getMobs(*context.file, aafkit::kAAFMasterMob, mobs);
    if (AAF_FAILED(result)) return result;
    context.clips.reserve(mobs.size());
    for (Object* mob : mobs) {
        if (isLowerLevel(*mob)) continue;
        SourceClip clip;
        if (readMasterMob(*mob, clip) == AAFRESULT_SUCCESS) context.clips.push_back(std::move(clip));
    }
    return AAFRESULT_SUCCESS;
}

SourceClip* clipUsingSource(std::vector<SourceClip>& clips, const aafMobID_t& sourceId) {
    for (SourceClip& clip : clips)
        for (const SourceTrack& track : clip.tracks)
            if (track.sourceId == sourceId) return &clip;
    return nullptr;
}

void describeClip(SourceClip& clip, const Object& fileMob) {
    Object* descriptor = nullptr;
    if (!AAF_FAILED(aafkit::getEssenceDescriptor(fileMob, descriptor)) && descriptor)
        processEssenceDescriptor(clip, *descriptor);
    Object* locator = nullptr;
    LocatorSearch searched;
    FindLocator(fileMob, locator, searched);
    if (locator) AAF_REPORT(readLocatorPath(*locator, clip.path));
}

AAFRESULT attachFileMobs(AafParseContext& context) {
    std::vector<Object*> mobs;
    AAFRESULT result = aafkit::getMobs(*context.file, aafkit::kAAFFileMob, mobs);
    if (AAF_FAILED(result)) return result;
    for (Object* mob : mobs) {
        aafMobID_t mobId = {};
        if (AAF_FAILED(requiredProperty(aafkit::getMobId(*mob, PID_Mob_MobID, mobId), *mob, PID_Mob_MobID))) continue;
        if (SourceClip* clip = clipUsingSource(context.clips, mobId)) describeClip(*clip, *mob);
    }
    return AAFRESULT_SUCCESS;
}

bool badClip(const AafParseContext* context, uint32_t clip) { return !context || clip >= context->clips.size(); }

using ClipText = std::wstring SourceClip::*;

AAFRESULT loadClipText(uint32_t clip, wchar_t* buffer, int32_t length, const AafParseContext* context,
                       ClipText text) {
    if (badClip(context, clip)) return kInvalidArgument;
    return copyTextToHost((context->clips[clip].*text).c_str(), buffer, length);
}

}  // namespace

double rationalToDouble(const aafRational_t& rate) {
    return rate.denominator == 0 ? 0.0 : double(rate.numerator) / double(rate.denominator);
}

uint8_t getDataDefType(const Object& slot) {
    Object* segment = nullptr;
    Object* definition = nullptr;
    aafUID_t id = {};
    if (AAF_FAILED(aafkit::getObject(slot, PID_MobSlot_Segment, segment)) ||
        AAF_FAILED(aafkit::getReferenced(*segment, PID_Component_DataDefinition, definition)) ||
        AAF_FAILED(aafkit::getAuid(*definition, PID_DefinitionObject_Identification, id)))
        return 0;
    return id == kAAFDataDef_Picture || id == kAAFDataDef_LegacyPicture ? 1 : 0;
}

// The composition walk's lookup of clips by master mob ID.
static void indexClips(AafParseContext& context) {
    context.clipsByMobId.clear();
    for (uint32_t i = 0; i < context.clips.size(); ++i) context.clipsByMobId[context.clips[i].mobId].push_back(i);
}

AAFRESULT ParseClips(AafParseContext* context) {
    if (context && catalogueMasterMobs(*context) == AAFRESULT_SUCCESS) attachFileMobs(*context);
    if (context) indexClips(*context);
    return AAFRESULT_SUCCESS;
}

uint32_t GetNumClips(AafParseContext* context) { return context ? uint32_t(context->clips.size()) : 0; }

AAFRESULT LoadClipID(uint32_t clip, wchar_t* buffer, int32_t length, AafParseContext* context) {
    return loadClipText(clip, buffer, length, context, &SourceClip::id);
}

AAFRESULT LoadClipName(uint32_t clip, wchar_t* buffer, int32_t length, AafParseContext* context) {
    return loadClipText(clip, buffer, length, context, &SourceClip::name);
}

AAFRESULT LoadClipPath(uint32_t clip, wchar_t* buffer, int32_t length, AafParseContext* context) {
    return loadClipText(clip, buffer, length, context, &SourceClip::path);
}

uint32_t LoadClipType(uint32_t clip, AafParseContext* context) {
    if (badClip(context, clip)) return 0;
    const SourceClip& c = context->clips[clip];
    return c.hasVideo + 2u * c.hasAudio;
}

uint32_t GetClipIsVideo(uint32_t clip, uint32_t track, AafParseContext* context) {
    if (badClip(context, clip) || track >= context->clips[clip].tracks.size()) return 0xFFFFFFFFu;
    const SourceTrack& t = context->clips[clip].tracks[track];
    return t.isVideo + 2u * t.slotId;
}
