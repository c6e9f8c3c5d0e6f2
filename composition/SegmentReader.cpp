#include "SegmentReader.h"

#include <algorithm>

#include "MetadataReader.h"
#include "ObjectText.h"
#include "OperationReader.h"
#include "SourceChainReader.h"
#include "aafkit/Mobs.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

namespace {

void readChildren(const std::vector<Object*>& objects, const aafRational_t& rate, ReadContext& context,
                  Segment& into) {
    for (const Object* child : objects) into.children.push_back(readSegment(*child, rate, context));
}

// A source clip that names another composition: its referenced slot read as a nest, unless
// that composition is already open above it.
void readNestedComposition(const Object& mob, Segment& segment, ReadContext& context) {
    segment.kind = SegmentKind::NestedComposition;
    segment.nestedName = textOf(mob, PID_Mob_Name);
    const auto& open = context.compositionsOpen;
    if (std::find(open.begin(), open.end(), &mob) != open.end()) {
        segment.problem = "composition " + aafkit::mobIdToText(segment.source.mobId) + " includes itself";
        return;
    }
    if (context.nestedSegments > kMaxNestedSegments) {
        segment.problem = "the nests expand to more than " + std::to_string(kMaxNestedSegments) + " segments";
        return;
    }
    Object* slot = nullptr;
    Object* inner = nullptr;
    if (aafkit::lookupSlot(mob, segment.source.slotId, slot) != AAFRESULT_SUCCESS ||
        aafkit::getObject(*slot, PID_MobSlot_Segment, inner) != AAFRESULT_SUCCESS || !inner) {
        segment.problem = "composition " + aafkit::mobIdToText(segment.source.mobId) + " has no slot " +
                          std::to_string(segment.source.slotId);
        return;
    }
    segment.nestedRate = rationalOf(*slot, PID_TimelineMobSlot_EditRate);
    context.compositionsOpen.push_back(&mob);
    segment.children.push_back(readSegment(*inner, segment.nestedRate, context));
    context.compositionsOpen.pop_back();
}

void readSourceClip(const Object& clip, const aafRational_t& rate, Segment& segment, ReadContext& context) {
    segment.kind = SegmentKind::SourceClip;
    ClipSource& source = segment.source;
    source.slotId = uint32Of(clip, PID_SourceReference_SourceMobSlotID);
    source.startTime = int64Of(clip, PID_SourceClip_StartTime);
    if (aafkit::getMobId(clip, PID_SourceReference_SourceID, source.mobId) != AAFRESULT_SUCCESS ||
        source.mobId == aafMobID_t{})
        return;
    const Object* mob = context.file.lookupMob(source.mobId);
    if (mob && mob->isA(AUID_AAFCompositionMob) && !isClipWindow(*mob)) return readNestedComposition(*mob, segment, context);
    source.chain = resolveChain(source.mobId, source.slotId, source.startTime, rate, context);
}

void readSelector(const Object& selector, const aafRational_t& rate, Segment& segment, ReadContext& context) {
    segment.kind = SegmentKind::Selector;
    if (Object* selected = aafkit::strongChild(&selector, PID_Selector_Selected))
        segment.children.push_back(readSegment(*selected, rate, context));
    readChildren(objectsOf(selector, PID_Selector_Alternates), rate, context, segment);
}

void readTransition(const Object& transition, Segment& segment) {
    segment.kind = SegmentKind::Transition;
    segment.cutPoint = int64Of(transition, PID_Transition_CutPoint);
    if (Object* group = aafkit::strongChild(&transition, PID_Transition_OperationGroup))
        segment.operation = readOperation(*group);
}

void readKind(const Object& object, const aafRational_t& rate, Segment& segment, ReadContext& context) {
    if (object.isA(AUID_AAFSequence)) {
        segment.kind = SegmentKind::Sequence;
        readChildren(objectsOf(object, PID_Sequence_Components), rate, context, segment);
    } else if (object.isA(AUID_AAFSourceClip)) {
        readSourceClip(object, rate, segment, context);
    } else if (object.isA(AUID_AAFFiller)) {
        segment.kind = SegmentKind::Filler;
    } else if (object.isA(AUID_AAFTransition)) {
        readTransition(object, segment);
    } else if (object.isA(AUID_AAFOperationGroup)) {
        segment.operation = readOperation(object);
        const bool channels = segment.operation.id == kAudioChannelCombiner;
        segment.kind = channels ? SegmentKind::MultichannelAudio : SegmentKind::OperationGroup;
        readChildren(objectsOf(object, PID_OperationGroup_InputSegments), rate, context, segment);
    } else if (object.isA(AUID_AAFNestedScope)) {
        segment.kind = SegmentKind::NestedScope;
        readChildren(objectsOf(object, PID_NestedScope_Slots), rate, context, segment);
    } else if (object.isA(AUID_AAFScopeReference)) {
        segment.kind = SegmentKind::ScopeReference;
        segment.relativeScope = uint32Of(object, PID_ScopeReference_RelativeScope);
        segment.relativeSlot = uint32Of(object, PID_ScopeReference_RelativeSlot);
    } else if (object.isA(AUID_AAFSelector)) {
        readSelector(object, rate, segment, context);
    } else if (object.isA(AUID_AAFEssenceGroup)) {
        segment.kind = SegmentKind::EssenceGroup;
        readChildren(objectsOf(object, PID_EssenceGroup_Choices), rate, context, segment);
    } else if (object.isA(AUID_AAFTimecode)) {
        segment.kind = SegmentKind::Timecode;
        segment.timecode = readTimecode(object);
    } else if (object.isA(AUID_AAFEvent)) {
        segment.kind = SegmentKind::Marker;
    } else if (object.isA(AUID_AAFPulldown)) {
        segment.kind = SegmentKind::Pulldown;
        if (Object* input = aafkit::strongChild(&object, PID_Pulldown_InputSegment))
            segment.children.push_back(readSegment(*input, rate, context));
    } else if (object.isA(AUID_AAFEdgeCode)) {
        segment.kind = SegmentKind::Edgecode;
    }
}

}  // namespace

DataKind dataKindOf(const Object& component) {
    aafUID_t id = {};
    if (aafkit::getReferencedId(component, PID_Component_DataDefinition, id) != AAFRESULT_SUCCESS) return DataKind::Other;
    if (id == kAAFDataDef_Picture || id == kAAFDataDef_LegacyPicture || id == kAAFDataDef_PictureWithMatte)
        return DataKind::Picture;
    if (id == kAAFDataDef_Sound || id == kAAFDataDef_LegacySound) return DataKind::Sound;
    if (id == kAAFDataDef_Timecode || id == kAAFDataDef_LegacyTimecode) return DataKind::Timecode;
    if (id == kAAFDataDef_Edgecode) return DataKind::Edgecode;
    if (id == kAAFDataDef_DescriptiveMetadata) return DataKind::Descriptive;
    return DataKind::Other;
}

Segment readSegment(const Object& object, const aafRational_t& rate, ReadContext& context) {
    Segment segment;
    segment.className = classNameOf(object);
    segment.data = dataKindOf(object);
    segment.length = int64Of(object, PID_Component_Length);
    if (context.depth >= kMaxDepth) {
        segment.problem = "nested deeper than " + std::to_string(kMaxDepth) + " levels";
        return segment;
    }
    if (context.compositionsOpen.size() > 1) ++context.nestedSegments;
    segment.metadata = readMetadata(object, PID_Component_UserComments, PID_Component_Attributes,
                                    &kAAFPropID_Component_ComponentAttributeList);
    ++context.depth;
    readKind(object, rate, segment, context);
    --context.depth;
    return segment;
}

const char* segmentKindName(SegmentKind kind) {
    switch (kind) {
    case SegmentKind::Sequence: return "Sequence";
    case SegmentKind::SourceClip: return "SourceClip";
    case SegmentKind::NestedComposition: return "NestedComposition";
    case SegmentKind::Filler: return "Filler";
    case SegmentKind::Transition: return "Transition";
    case SegmentKind::OperationGroup: return "OperationGroup";
    case SegmentKind::MultichannelAudio: return "MultichannelAudio";
    case SegmentKind::NestedScope: return "NestedScope";
    case SegmentKind::ScopeReference: return "ScopeReference";
    case SegmentKind::Selector: return "Selector";
    case SegmentKind::EssenceGroup: return "EssenceGroup";
    case SegmentKind::Timecode: return "Timecode";
    case SegmentKind::Edgecode: return "Edgecode";
    case SegmentKind::Pulldown: return "Pulldown";
    case SegmentKind::Marker: return "Marker";
    case SegmentKind::Other: return "Other";
    }
    return "Other";
}

const char* dataKindName(DataKind kind) {
    switch (kind) {
    case DataKind::Picture: return "picture";
    case DataKind::Sound: return "sound";
    case DataKind::Timecode: return "timecode";
    case DataKind::Edgecode: return "edgecode";
    case DataKind::Descriptive: return "descriptive";
    case DataKind::Other: return "other";
    }
    return "other";
}

}  // namespace composition
