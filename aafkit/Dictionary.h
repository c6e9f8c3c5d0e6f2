#pragma once
// The Dictionary's definition sets as the SDK's dictionary answers them: lookups by
// AUID, registration where the first definition of an identifier wins.
#include <cstdint>
#include <string>

#include "AafTypes.h"
#include "File.h"

namespace aafkit {

// The definition with that Identification in one of the Dictionary's sets
// (PID_Dictionary_DataDefinitions, ...); AAFRESULT_NO_MORE_OBJECTS when absent.
AAFRESULT lookupDefinition(const File& file, uint16_t setPid, const aafUID_t& id, Object*& out);

// Adds `definition` to its set unless one with the same Identification is there
// already; that one is kept and the new one dropped, silently. Answers the one kept.
Object& registerDefinition(File& file, uint16_t setPid, Object& definition);

// A new, unregistered definition object with Identification, Name and Description.
Object& newDefinition(File& file, const aafUID_t& classId, const aafUID_t& id, const std::wstring& name,
                      const std::wstring& description);

// Adds a weak reference to `target` (a registered definition) to a weak-reference
// vector, or to a set unless the set already names it.
AAFRESULT addWeakReference(Object& o, uint16_t pid, StoredForm form, const Object& target);

// IAAFClassDef::RegisterOptionalPropertyDef after a lookup: the property of the class
// (or an ancestor) with that AUID, declared as optional with the next dynamic pid
// (0xffff downwards) when the file has none yet. Null when the class or type is unknown.
const meta::PropertyDef* registerOptionalProperty(File& file, const aafUID_t& classId, const aafUID_t& propertyId,
                                                  const std::string& name, const aafUID_t& typeId);

// Weak references to a class or type definition of the file's model (MetaDictionary).
void setClassReference(Object& o, uint16_t pid, const aafUID_t& classId);
void setTypeReference(Object& o, uint16_t pid, const aafUID_t& typeId);

}  // namespace aafkit
