#pragma once
// Mob queries as the SDK answers them: kinds, enumeration by kind, slot lookup, usage
// codes, the essence descriptor of a source mob, and the newest identification.
#include <cstdint>
#include <vector>

#include "AafTypes.h"
#include "File.h"
#include "om/Object.h"

namespace aafkit {

enum aafMobKind_t : uint32_t {
    kAAFCompMob = 0,
    kAAFMasterMob = 1,
    kAAFFileMob = 2,
    kAAFTapeMob = 3,
    kAAFFilmMob = 4,
    kAAFPrimaryMob = 5,
    kAAFAllMob = 6,
    kAAFPhysicalMob = 7,
};

// Decided by the class the object behaves as (an extension class by its nearest built-in
// ancestor); a source mob takes its kind from its essence descriptor.
aafMobKind_t mobKind(const Object& mob);

// The content storage's mobs of that kind in set key order; kAAFAllMob gives every mob.
AAFRESULT getMobs(const File& file, aafMobKind_t kind, std::vector<Object*>& out);

// The mob's slots in stored order; none when the mob has no Slots.
const std::vector<Object*>& getSlots(const Object& mob);

// The slot with that SlotID; AAFRESULT_SLOT_NOT_FOUND if none.
AAFRESULT lookupSlot(const Object& mob, uint32_t slotId, Object*& out);

// AAFRESULT_PROP_NOT_PRESENT when the mob stores no usage code.
AAFRESULT getUsageCode(const Object& mob, aafUID_t& out);

// Success with `out` untouched when the source mob has no descriptor, as the SDK does.
AAFRESULT getEssenceDescriptor(const Object& sourceMob, Object*& out);

// The last element of the header's IdentificationList; AAFRESULT_INCONSISTENCY if empty.
AAFRESULT getLastIdentification(const Object& header, Object*& out);

}  // namespace aafkit
