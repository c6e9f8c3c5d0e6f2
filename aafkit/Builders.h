#pragma once
// Creating mobs, slots and components as the SDK's Initialize calls do, with the
// defaults it gives new objects. Failures throw ResultException (the checked layer).
#include <cstdint>
#include <string>

#include "AafTypes.h"
#include "File.h"

namespace aafkit {

// A MobID as the SDK makes them: UMID label, seconds since 1970, and a per-process
// tick counter that grows by at least one per MobID.
aafMobID_t newMobId();

// A mob of a concrete mob class with MobID, CreationTime, LastModified and an empty Slots vector.
Object& createMob(File& file, const aafUID_t& mobClass);
// Adds the mob to the content storage (keyed by its MobID, which must be final).
void addMob(File& file, Object& mob);

Object& createTimelineSlot(File& file, const aafRational_t& editRate);  // Origin 0
Object& createEventSlot(File& file, const aafRational_t& editRate);

// Components; `dataDef` must be a data definition of the file's Dictionary.
void setDataDefinition(Object& component, const aafUID_t& dataDef);
Object& createSourceClip(File& file, const aafUID_t& dataDef, int64_t length, const aafSourceRef_t& reference);
Object& createSequence(File& file, const aafUID_t& dataDef);  // empty, no Length until components come
Object& createFiller(File& file, const aafUID_t& dataDef, int64_t length);
Object& createTimecode(File& file, int64_t length, const aafTimecode_t& timecode);  // DataDef_LegacyTimecode
Object& createOperationGroup(File& file, const aafUID_t& dataDef, int64_t length, const Object& operationDef);
Object& createTransition(File& file, const aafUID_t& dataDef, int64_t length, int64_t cutPoint,
                         Object& operationGroup);
Object& createScopeReference(File& file, const aafUID_t& dataDef, uint32_t relativeScope, uint32_t relativeSlot);
Object& createDescriptiveMarker(File& file);  // nothing set, as the SDK leaves it

// Appends to a sequence after the SDK's checks, updating the sequence's Length: plain
// components add theirs, transitions subtract theirs, events stretch it to cover them.
void appendComponent(Object& sequence, Object& component);
// A user comment (name and string value) appended to a component's UserComments.
void appendComment(Object& component, const std::wstring& name, const std::wstring& value);

// Essence descriptors and locators.
Object& createCDCIDescriptor(File& file);  // ComponentWidth 8, HorizontalSubsampling 1, ...
Object& createNetworkLocator(File& file, const std::wstring& path);

// A new object of a concrete class; throws when the class is unknown or abstract.
Object& createObject(File& file, const aafUID_t& classId);

}  // namespace aafkit
