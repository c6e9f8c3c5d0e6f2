#include "SourceChainReader.h"

#include <algorithm>

#include "EditTime.h"
#include "MarkerReader.h"
#include "MetadataReader.h"
#include "ObjectText.h"
#include "aafkit/Mobs.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

namespace {

bool isNullMobId(const aafMobID_t& id) { return id == aafMobID_t{}; }

MobKind kindOf(const Object& mob, const Object* descriptor) {
    switch (aafkit::mobKind(mob)) {
    case aafkit::kAAFCompMob: return MobKind::Composition;
    case aafkit::kAAFMasterMob: return MobKind::Master;
    case aafkit::kAAFFileMob: return MobKind::File;
    case aafkit::kAAFTapeMob: return MobKind::Tape;
    case aafkit::kAAFFilmMob: return MobKind::Film;
    default: break;
    }
    return descriptor && descriptor->isA(AUID_AAFImportDescriptor) ? MobKind::Import : MobKind::Source;
}

// The descriptor that states rates and channels: a MultipleDescriptor's first.
const Object* essenceDescriptor(const Object& descriptor) {
    if (!descriptor.isA(AUID_AAFMultipleDescriptor)) return &descriptor;
    const std::vector<Object*>& parts = objectsOf(descriptor, PID_MultipleDescriptor_FileDescriptors);
    return parts.empty() ? &descriptor : parts.front();
}

void describeSource(const Object& descriptor, SourceMob& source, ReadContext& context) {
    source.descriptor = classNameOf(descriptor);
    for (const Object* locator : objectsOf(descriptor, PID_EssenceDescriptor_Locator))
        if (locator->isA(AUID_AAFNetworkLocator)) source.locators.push_back(textOf(*locator, PID_NetworkLocator_URLString));
    const Object& essence = *essenceDescriptor(descriptor);
    source.sampleRate = rationalOf(essence, PID_FileDescriptor_SampleRate);
    source.essenceLength = int64Of(essence, PID_FileDescriptor_Length);
    source.channels = uint32Of(essence, PID_SoundDescriptor_Channels);
    source.embedded = context.essence.find(source.mobId) != nullptr;
}

// The source clip at `position` in a slot's segment, with `position` made relative to it;
// null where the segment holds no further reference there.
const Object* sourceClipAt(const Object& segment, int64_t& position, int depth = 0) {
    if (depth > kMaxDepth) return nullptr;
    if (segment.isA(AUID_AAFSourceClip)) return &segment;
    // Where a mob's slot holds a choice or an effect (a sub-clip's gain, say), the material
    // is the first choice's or the first input's.
    if (segment.isA(AUID_AAFEssenceGroup) || segment.isA(AUID_AAFOperationGroup)) {
        const std::vector<Object*>& inputs = objectsOf(
            segment, segment.isA(AUID_AAFEssenceGroup) ? PID_EssenceGroup_Choices : PID_OperationGroup_InputSegments);
        return inputs.empty() ? nullptr : sourceClipAt(*inputs.front(), position, depth + 1);
    }
    if (segment.isA(AUID_AAFSelector)) {
        Object* selected = aafkit::strongChild(&segment, PID_Selector_Selected);
        return selected ? sourceClipAt(*selected, position, depth + 1) : nullptr;
    }
    if (!segment.isA(AUID_AAFSequence)) return nullptr;
    for (const Object* component : objectsOf(segment, PID_Sequence_Components)) {
        const int64_t length = int64Of(*component, PID_Component_Length);
        if (position < length || component == objectsOf(segment, PID_Sequence_Components).back())
            return sourceClipAt(*component, position, depth + 1);
        position -= length;
    }
    return nullptr;
}

std::string importPathOf(const Object& mob) {
    for (const TaggedValue& comment : readTaggedValues(mob, PID_Mob_UserComments))
        if (comment.name == "UNC Path") return comment.value;
    return {};
}

bool alreadyInChain(const SourceChain& chain, const aafMobID_t& id) {
    return std::any_of(chain.links.begin(), chain.links.end(),
                       [&](const SourceLink& link) { return link.mob->mobId == id; });
}

std::shared_ptr<const SourceMob> readSourceMob(const Object& mob, const aafMobID_t& id, ReadContext& context) {
    Object* descriptor = nullptr;
    aafkit::getEssenceDescriptor(mob, descriptor);
    auto source = std::make_shared<SourceMob>();
    source->kind = kindOf(mob, descriptor);
    source->name = textOf(mob, PID_Mob_Name);
    source->mobId = id;
    source->timecode = findTimecode(mob);
    source->importPath = importPathOf(mob);
    if (source->kind == MobKind::Master)
        for (const Object* slot : aafkit::getSlots(mob)) readMarkers(*slot, slotEditRate(*slot), source->markers);
    if (descriptor) describeSource(*descriptor, *source, context);
    return source;
}

// Every clip of a master reaches the same mobs: each is read once.
const std::shared_ptr<const SourceMob>& sourceMob(const Object& mob, const aafMobID_t& id, ReadContext& context) {
    std::shared_ptr<const SourceMob>& known = context.sourceMobs[&mob];
    if (!known) known = readSourceMob(mob, id, context);
    return known;
}

struct Reference {
    aafMobID_t mobId;
    uint32_t slotId;
    int64_t start;
    aafRational_t rate;
};

// Adds the link for `reference`; answers the next reference, or none where the chain ends.
std::optional<Reference> addLink(const Reference& reference, SourceChain& chain, ReadContext& context) {
    const Object* mob = context.file.lookupMob(reference.mobId);
    if (!mob) {
        chain.broken = "mob " + aafkit::mobIdToText(reference.mobId) + " is not in the file";
        return std::nullopt;
    }
    SourceLink link;
    link.mob = sourceMob(*mob, reference.mobId, context);
    link.slotId = reference.slotId;
    Object* slot = nullptr;
    if (aafkit::lookupSlot(*mob, reference.slotId, slot) != AAFRESULT_SUCCESS) {
        chain.links.push_back(std::move(link));
        chain.broken = "mob " + aafkit::mobIdToText(reference.mobId) + " has no slot " + std::to_string(reference.slotId);
        return std::nullopt;
    }
    link.physicalTrack = uint32Of(*slot, PID_MobSlot_PhysicalTrackNumber);
    link.editRate = rationalOf(*slot, PID_TimelineMobSlot_EditRate);
    link.start = convertEditUnits(reference.start, reference.rate, link.editRate);
    chain.links.push_back(link);

    Object* segment = nullptr;
    if (aafkit::getObject(*slot, PID_MobSlot_Segment, segment) != AAFRESULT_SUCCESS || !segment) return std::nullopt;
    int64_t position = link.start;
    const Object* next = sourceClipAt(*segment, position);
    if (!next) return std::nullopt;
    Reference onward = {{}, uint32Of(*next, PID_SourceReference_SourceMobSlotID), 0, link.editRate};
    if (aafkit::getMobId(*next, PID_SourceReference_SourceID, onward.mobId) != AAFRESULT_SUCCESS ||
        isNullMobId(onward.mobId))
        return std::nullopt;
    onward.start = int64Of(*next, PID_SourceClip_StartTime) + position;
    return onward;
}

}  // namespace

SourceChain resolveChain(const aafMobID_t& mobId, uint32_t slotId, int64_t start, const aafRational_t& rate,
                         ReadContext& context) {
    SourceChain chain;
    std::optional<Reference> reference = Reference{mobId, slotId, start, rate};
    while (reference && !isNullMobId(reference->mobId)) {
        if (alreadyInChain(chain, reference->mobId)) {
            chain.broken = "the chain comes back to mob " + aafkit::mobIdToText(reference->mobId);
            break;
        }
        if (chain.links.size() == kMaxChainLength) {
            chain.broken = "the chain is longer than " + std::to_string(kMaxChainLength) + " mobs";
            break;
        }
        reference = addLink(*reference, chain, context);
    }
    return chain;
}

Timecode readTimecode(const Object& timecodeSegment) {
    Timecode timecode;
    timecode.start = int64Of(timecodeSegment, PID_Timecode_Start);
    uint16_t fps = 0;
    uint8_t drop = 0;
    aafkit::getUInt16(timecodeSegment, PID_Timecode_FPS, fps);
    aafkit::getUInt8(timecodeSegment, PID_Timecode_Drop, drop);
    timecode.fps = fps;
    timecode.drop = drop != 0;
    return timecode;
}

std::optional<Timecode> findTimecode(const Object& mob) {
    for (const Object* slot : aafkit::getSlots(mob)) {
        Object* segment = nullptr;
        if (aafkit::getObject(*slot, PID_MobSlot_Segment, segment) != AAFRESULT_SUCCESS || !segment) continue;
        if (segment->isA(AUID_AAFSequence)) {
            const std::vector<Object*>& components = objectsOf(*segment, PID_Sequence_Components);
            segment = components.empty() ? nullptr : components.front();
        }
        if (!segment || !segment->isA(AUID_AAFTimecode)) continue;
        Timecode timecode = readTimecode(*segment);
        timecode.editRate = rationalOf(*slot, PID_TimelineMobSlot_EditRate);
        return timecode;
    }
    return std::nullopt;
}

bool isClipWindow(const Object& mob) {
    aafUID_t usage = {};
    return mob.isA(AUID_AAFCompositionMob) && aafkit::getUsageCode(mob, usage) == AAFRESULT_SUCCESS &&
           (usage == kAAFUsage_SubClip || usage == kAAFUsage_AdjustedClip);
}

const char* mobKindName(MobKind kind) {
    switch (kind) {
    case MobKind::Composition: return "composition";
    case MobKind::Master: return "master";
    case MobKind::File: return "file";
    case MobKind::Tape: return "tape";
    case MobKind::Film: return "film";
    case MobKind::Import: return "import";
    case MobKind::Source: return "source";
    }
    return "source";
}

const SourceLink* SourceChain::find(MobKind kind) const {
    for (const SourceLink& link : links)
        if (link.mob->kind == kind) return &link;
    return nullptr;
}

const SourceLink* SourceChain::origin() const {
    for (auto link = links.rbegin(); link != links.rend(); ++link)
        if (link->mob->kind == MobKind::Tape || link->mob->kind == MobKind::Film || link->mob->kind == MobKind::Import ||
            link->mob->kind == MobKind::Source)
            return &*link;
    return find(MobKind::File);
}

const SourceLink* SourceChain::timecoded() const {
    for (auto link = links.rbegin(); link != links.rend(); ++link)
        if (link->mob->timecode && link->placed()) return &*link;
    return nullptr;
}

const SourceLink* SourceChain::deepestPlaced() const {
    for (auto link = links.rbegin(); link != links.rend(); ++link)
        if (link->placed()) return &*link;
    return nullptr;
}

}  // namespace composition
