#include "Mobs.h"

#include "ResultCodes.h"
#include "om/Values.h"
#include "meta/Ids.h"

namespace aafkit {

namespace {

aafMobKind_t descriptorKind(const Object& descriptor) {
    if (descriptor.isA(AUID_AAFFileDescriptor)) return kAAFFileMob;
    if (descriptor.isA(AUID_AAFTapeDescriptor)) return kAAFTapeMob;
    if (descriptor.isA(AUID_AAFFilmDescriptor)) return kAAFFilmMob;
    if (descriptor.isA(AUID_AAFPhysicalDescriptor)) return kAAFPhysicalMob;
    return kAAFAllMob;
}

aafMobKind_t sourceMobKind(const Object& mob) {
    Object* descriptor = nullptr;
    if (getObject(mob, PID_SourceMob_EssenceDescription, descriptor) != AAFRESULT_SUCCESS || !descriptor)
        return kAAFAllMob;
    return descriptorKind(*descriptor);
}

// Absent optional collections enumerate as empty.
const std::vector<Object*>& objectsOrNone(const Object& o, uint16_t pid) {
    static const std::vector<Object*> kNone;
    const std::vector<Object*>* objects = nullptr;
    return getObjects(o, pid, objects) == AAFRESULT_SUCCESS && objects ? *objects : kNone;
}

}  // namespace

aafMobKind_t mobKind(const Object& mob) {
    if (mob.isA(AUID_AAFCompositionMob)) return kAAFCompMob;
    if (mob.isA(AUID_AAFMasterMob)) return kAAFMasterMob;
    if (mob.isA(AUID_AAFSourceMob)) return sourceMobKind(mob);
    return kAAFAllMob;
}

AAFRESULT getMobs(const File& file, aafMobKind_t kind, std::vector<Object*>& out) {
    out.clear();
    Object* storage = file.contentStorage();
    if (!storage) return AAFRESULT_OBJECT_NOT_FOUND;
    for (Object* mob : objectsOrNone(*storage, PID_ContentStorage_Mobs))
        if (kind == kAAFAllMob || mobKind(*mob) == kind) out.push_back(mob);
    return AAFRESULT_SUCCESS;
}

const std::vector<Object*>& getSlots(const Object& mob) { return objectsOrNone(mob, PID_Mob_Slots); }

AAFRESULT lookupSlot(const Object& mob, uint32_t slotId, Object*& out) {
    for (Object* slot : getSlots(mob)) {
        uint32_t id = 0;  // a slot without its required SlotID reads as 0
        getUInt32(*slot, PID_MobSlot_SlotID, id);
        if (id == slotId) {
            out = slot;
            return AAFRESULT_SUCCESS;
        }
    }
    return AAFRESULT_SLOT_NOT_FOUND;
}

AAFRESULT getUsageCode(const Object& mob, aafUID_t& out) { return getAuid(mob, PID_Mob_UsageCode, out); }

AAFRESULT getEssenceDescriptor(const Object& sourceMob, Object*& out) {
    Object* descriptor = nullptr;
    AAFRESULT result = getObject(sourceMob, PID_SourceMob_EssenceDescription, descriptor);
    if (result == AAFRESULT_PROP_NOT_PRESENT) return AAFRESULT_SUCCESS;
    if (result == AAFRESULT_SUCCESS) out = descriptor;
    return result;
}

AAFRESULT getLastIdentification(const Object& header, Object*& out) {
    const std::vector<Object*>& list = objectsOrNone(header, PID_Header_IdentificationList);
    if (list.empty()) {
        out = nullptr;
        return AAFRESULT_INCONSISTENCY;
    }
    out = list.back();
    return AAFRESULT_SUCCESS;
}

}  // namespace aafkit
