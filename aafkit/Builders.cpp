#include "Builders.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>

#include "Checked.h"
#include "Dictionary.h"
#include "NewFileBuilder.h"
#include "ResultCodes.h"
#include "Saturating.h"
#include "om/Values.h"
#include "meta/Ids.h"

namespace aafkit {

namespace {

const uint8_t kMobIdLabel[12] = {0x06, 0x0a, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x0f, 0x00};
const uint8_t kMobIdMaterialTail[8] = {0x06, 0x0e, 0x2b, 0x34, 0x7f, 0x7f, 0x2a, 0x80};

// Clock ticks, but never the same value twice in a process.
uint32_t nextMinorCounter() {
    static std::atomic<uint32_t> last{0};
    auto ticks = uint32_t(std::chrono::duration_cast<std::chrono::milliseconds>(
                              std::chrono::steady_clock::now().time_since_epoch())
                              .count());
    uint32_t previous = last.load();
    uint32_t next;
    do {
        next = std::max(ticks, previous + 1);
    } while (!last.compare_exchange_weak(previous, next));
    return next;
}

int64_t lengthOf(const Object& component) {
    int64_t length = 0;
    check(getInt64(component, PID_Component_Length, length));  // PROP_NOT_PRESENT when absent
    return length;
}

int64_t positionOf(const Object& event) {
    int64_t position = 0;
    getInt64(event, PID_Event_Position, position);
    return position;
}

// Data definitions of one kind (a kind and its legacy form) convert to each other.
int dataKind(const aafUID_t& id) {
    if (id == kAAFDataDef_Picture || id == kAAFDataDef_LegacyPicture || id == kAAFDataDef_PictureWithMatte) return 1;
    if (id == kAAFDataDef_Sound || id == kAAFDataDef_LegacySound) return 2;
    if (id == kAAFDataDef_Timecode || id == kAAFDataDef_LegacyTimecode) return 3;
    return 0;
}

bool dataDefinitionOf(const Object& component, aafUID_t& out) {
    return getReferencedId(component, PID_Component_DataDefinition, out) == AAFRESULT_SUCCESS;
}

void checkDataDefinition(const Object& sequence, const Object& component) {
    aafUID_t sequenceDef, componentDef;
    if (!dataDefinitionOf(sequence, sequenceDef) || !dataDefinitionOf(component, componentDef))
        throw ResultException(AAFRESULT_INVALID_DATADEF);
    if (componentDef == sequenceDef) return;
    int kind = dataKind(componentDef);
    if (kind == 0 || kind != dataKind(sequenceDef)) throw ResultException(AAFRESULT_INVALID_DATADEF);
}

void appendSegment(Object& sequence, const std::vector<Object*>& components, Object& component) {
    if (!components.empty() && components.back()->isA(AUID_AAFEvent))
        throw ResultException(AAFRESULT_EVENT_SEMANTICS);
    int64_t length = lengthOf(component);
    bool isTransition = component.isA(AUID_AAFTransition);
    const Object* previous = components.empty() ? nullptr : components.back();
    if (isTransition) {
        if (!previous) throw ResultException(AAFRESULT_LEADING_TRAN);
        if (previous->isA(AUID_AAFTransition)) throw ResultException(AAFRESULT_ADJACENT_TRAN);
        if (length > lengthOf(*previous)) throw ResultException(AAFRESULT_INSUFF_TRAN_MATERIAL);
    } else if (previous && previous->isA(AUID_AAFTransition) && length < lengthOf(*previous)) {
        throw ResultException(AAFRESULT_INSUFF_TRAN_MATERIAL);
    }
    int64_t sequenceLength = 0;
    getInt64(sequence, PID_Component_Length, sequenceLength);
    setInt64(sequence, PID_Component_Length,
             isTransition ? saturatingSubtract(sequenceLength, length) : saturatingAdd(sequenceLength, length));
}

void appendEvent(Object& sequence, const std::vector<Object*>& components, Object& event) {
    // Every earlier component passed this check, so the last one speaks for all.
    if (!components.empty() &&
        (!components.back()->isA(AUID_AAFEvent) || components.back()->classId() != event.classId()))
        throw ResultException(AAFRESULT_EVENT_SEMANTICS);
    int64_t position = positionOf(event);
    if (!components.empty() && position < positionOf(*components.back()))
        throw ResultException(AAFRESULT_EVENT_SEMANTICS);
    int64_t eventLength = 0, sequenceLength = 0;
    bool eventHasLength = getInt64(event, PID_Component_Length, eventLength) == AAFRESULT_SUCCESS;
    bool sequenceHasLength = getInt64(sequence, PID_Component_Length, sequenceLength) == AAFRESULT_SUCCESS;
    if (!eventHasLength && !sequenceHasLength) return;
    if (components.empty()) {
        setInt64(sequence, PID_Component_Length, eventLength);
        return;
    }
    int64_t reach = saturatingAdd(saturatingSubtract(position, positionOf(*components.front())), eventLength);
    setInt64(sequence, PID_Component_Length, std::max(sequenceLength, reach));
}

}  // namespace

aafMobID_t newMobId() {
    uint32_t minor = nextMinorCounter();
    aafMobID_t id = {};
    std::copy(std::begin(kMobIdLabel), std::end(kMobIdLabel), id.SMPTELabel);
    id.length = 0x13;
    id.material.Data1 = uint32_t(std::time(nullptr));
    id.material.Data2 = uint16_t(minor & 0xffff);
    id.material.Data3 = uint16_t(minor >> 16);
    std::copy(std::begin(kMobIdMaterialTail), std::end(kMobIdMaterialTail), id.material.Data4);
    return id;
}

Object& createObject(File& file, const aafUID_t& classId) {
    Object* object = file.create(classId);
    if (!object) throw ResultException(AAFRESULT_INVALID_PARAM);
    return *object;
}

Object& createMob(File& file, const aafUID_t& mobClass) {
    Object& mob = createObject(file, mobClass);
    setMobId(mob, PID_Mob_MobID, newMobId());
    aafTimeStamp_t now = nowTimeStamp();
    setTimeStamp(mob, PID_Mob_LastModified, now);
    setTimeStamp(mob, PID_Mob_CreationTime, now);
    mob.ensure(PID_Mob_Slots, StoredForm::StrongRefVector);
    return mob;
}

void addMob(File& file, Object& mob) {
    Object* content = file.contentStorage();
    if (!content) throw ResultException(AAFRESULT_NULL_PARAM);
    check(addToSet(*content, PID_ContentStorage_Mobs, mob));
}

Object& createTimelineSlot(File& file, const aafRational_t& editRate) {
    Object& slot = createObject(file, AUID_AAFTimelineMobSlot);
    setRational(slot, PID_TimelineMobSlot_EditRate, editRate);
    setInt64(slot, PID_TimelineMobSlot_Origin, 0);
    return slot;
}

Object& createEventSlot(File& file, const aafRational_t& editRate) {
    Object& slot = createObject(file, AUID_AAFEventMobSlot);
    setRational(slot, PID_EventMobSlot_EditRate, editRate);
    return slot;
}

void setDataDefinition(Object& component, const aafUID_t& dataDef) {
    Object* definition = nullptr;
    check(lookupDefinition(fileOf(component), PID_Dictionary_DataDefinitions, dataDef, definition));
    check(setReference(component, PID_Component_DataDefinition, *definition));
}

Object& createSourceClip(File& file, const aafUID_t& dataDef, int64_t length, const aafSourceRef_t& reference) {
    Object& clip = createObject(file, AUID_AAFSourceClip);
    setDataDefinition(clip, dataDef);
    setInt64(clip, PID_Component_Length, length);
    setMobId(clip, PID_SourceReference_SourceID, reference.sourceID);
    setUInt32(clip, PID_SourceReference_SourceMobSlotID, reference.sourceSlotID);
    setInt64(clip, PID_SourceClip_StartTime, reference.startTime);
    return clip;
}

Object& createSequence(File& file, const aafUID_t& dataDef) {
    Object& sequence = createObject(file, AUID_AAFSequence);
    setDataDefinition(sequence, dataDef);
    sequence.ensure(PID_Sequence_Components, StoredForm::StrongRefVector);
    return sequence;
}

Object& createFiller(File& file, const aafUID_t& dataDef, int64_t length) {
    Object& filler = createObject(file, AUID_AAFFiller);
    setDataDefinition(filler, dataDef);
    setInt64(filler, PID_Component_Length, length);
    return filler;
}

Object& createTimecode(File& file, int64_t length, const aafTimecode_t& timecode) {
    if (timecode.drop != 0 && timecode.drop != 1) throw ResultException(AAFRESULT_INVALID_TIMECODE);
    Object& component = createObject(file, AUID_AAFTimecode);
    setDataDefinition(component, kAAFDataDef_LegacyTimecode);
    setInt64(component, PID_Component_Length, length);
    setInt64(component, PID_Timecode_Start, timecode.startFrame);
    setUInt16(component, PID_Timecode_FPS, timecode.fps);
    setUInt8(component, PID_Timecode_Drop, uint8_t(timecode.drop));
    return component;
}

Object& createOperationGroup(File& file, const aafUID_t& dataDef, int64_t length, const Object& operationDef) {
    Object& group = createObject(file, AUID_AAFOperationGroup);
    setDataDefinition(group, dataDef);
    setInt64(group, PID_Component_Length, length);
    check(setReference(group, PID_OperationGroup_Operation, operationDef));
    return group;
}

Object& createTransition(File& file, const aafUID_t& dataDef, int64_t length, int64_t cutPoint,
                         Object& operationGroup) {
    Object& transition = createObject(file, AUID_AAFTransition);
    setDataDefinition(transition, dataDef);
    setInt64(transition, PID_Component_Length, length);
    setInt64(transition, PID_Transition_CutPoint, cutPoint);
    check(setObject(transition, PID_Transition_OperationGroup, operationGroup));
    return transition;
}

Object& createScopeReference(File& file, const aafUID_t& dataDef, uint32_t relativeScope, uint32_t relativeSlot) {
    Object& reference = createObject(file, AUID_AAFScopeReference);
    setDataDefinition(reference, dataDef);
    setUInt32(reference, PID_ScopeReference_RelativeScope, relativeScope);
    setUInt32(reference, PID_ScopeReference_RelativeSlot, relativeSlot);
    return reference;
}

Object& createDescriptiveMarker(File& file) { return createObject(file, AUID_AAFDescriptiveMarker); }

void appendComponent(Object& sequence, Object& component) {
    if (component.container()) throw ResultException(AAFRESULT_OBJECT_ALREADY_ATTACHED);
    checkDataDefinition(sequence, component);
    static const std::vector<Object*> kNone;
    const std::vector<Object*>* components = &kNone;
    getObjects(sequence, PID_Sequence_Components, components);
    if (component.isA(AUID_AAFEvent))
        appendEvent(sequence, *components, component);
    else
        appendSegment(sequence, *components, component);
    check(appendObject(sequence, PID_Sequence_Components, component));
}

void appendComment(Object& component, const std::wstring& name, const std::wstring& value) {
    Object& comment = createObject(fileOf(component), AUID_AAFTaggedValue);
    setString(comment, PID_TaggedValue_Name, name);
    std::vector<uint8_t> text = wideToUtf16(value);
    setIndirect(comment, PID_TaggedValue_Value, kAAFTypeID_String, text.data(), text.size());
    check(appendObject(component, PID_Component_UserComments, comment));
}

Object& createCDCIDescriptor(File& file) {
    Object& descriptor = createObject(file, AUID_AAFCDCIDescriptor);
    setUInt32(descriptor, PID_CDCIDescriptor_ComponentWidth, 8);
    setUInt32(descriptor, PID_CDCIDescriptor_HorizontalSubsampling, 1);
    setUInt32(descriptor, PID_DigitalImageDescriptor_StoredHeight, 0);
    setUInt32(descriptor, PID_DigitalImageDescriptor_StoredWidth, 0);
    setUInt8(descriptor, PID_DigitalImageDescriptor_FrameLayout, 0);  // full frame
    setBytes(descriptor, PID_DigitalImageDescriptor_VideoLineMap, {0, 0, 0, 0, 1, 0, 0, 0});
    setRational(descriptor, PID_DigitalImageDescriptor_ImageAspectRatio, {0, 1});
    return descriptor;
}

Object& createNetworkLocator(File& file, const std::wstring& path) {
    Object& locator = createObject(file, AUID_AAFNetworkLocator);
    setString(locator, PID_NetworkLocator_URLString, path);
    return locator;
}

}  // namespace aafkit
