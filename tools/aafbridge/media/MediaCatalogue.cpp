#include "media/MediaCatalogue.h"

#include <map>

#include "view/ValueText.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

using aafkit::Object;

namespace {

std::string textProperty(const Object& object, uint16_t pid) {
    std::wstring text;
    return aafkit::getString(object, pid, text) == AAFRESULT_SUCCESS ? aafkit::wideToUtf8(text) : "";
}

// The source clips of a master mob slot's segment: a clip itself, or a sequence of them.
void sourceClipsOf(const Object& segment, std::vector<const Object*>& out) {
    if (segment.isA(AUID_AAFSourceClip)) out.push_back(&segment);
    const std::vector<Object*>* components = nullptr;
    if (segment.isA(AUID_AAFSequence) &&
        aafkit::getObjects(segment, PID_Sequence_Components, components) == AAFRESULT_SUCCESS && components)
        for (const Object* component : *components) sourceClipsOf(*component, out);
}

// File mob ID (as text) -> the name of the first master clip that refers to it.
std::map<std::string, std::string> masterClipNames(const aafkit::File& file) {
    std::map<std::string, std::string> names;
    std::vector<Object*> masters;
    aafkit::getMobs(file, aafkit::kAAFMasterMob, masters);
    for (const Object* master : masters) {
        const std::string name = textProperty(*master, PID_Mob_Name);
        for (const Object* slot : aafkit::getSlots(*master)) {
            Object* segment = nullptr;
            if (aafkit::getObject(*slot, PID_MobSlot_Segment, segment) != AAFRESULT_SUCCESS || !segment) continue;
            std::vector<const Object*> clips;
            sourceClipsOf(*segment, clips);
            for (const Object* clip : clips) {
                aafMobID_t id;
                if (aafkit::getMobId(*clip, PID_SourceReference_SourceID, id) == AAFRESULT_SUCCESS)
                    names.emplace(aafkit::mobIdToText(id), name);
            }
        }
    }
    return names;
}

std::string kindOf(const Object* descriptor) {
    if (descriptor && descriptor->isA(AUID_AAFSoundDescriptor)) return "sound";
    if (descriptor && (descriptor->isA(AUID_AAFWAVEDescriptor) || descriptor->isA(AUID_AAFAIFCDescriptor)))
        return "sound";
    if (descriptor && descriptor->isA(AUID_AAFDigitalImageDescriptor)) return "picture";
    return "data";
}

std::string firstLocator(const Object& descriptor) {
    const std::vector<Object*>* locators = nullptr;
    if (aafkit::getObjects(descriptor, PID_EssenceDescriptor_Locator, locators) != AAFRESULT_SUCCESS || !locators)
        return "";
    for (const Object* locator : *locators) {
        const std::string url = textProperty(*locator, PID_NetworkLocator_URLString);
        if (!url.empty()) return url;
    }
    return "";
}

MediaEntry entryOf(const aafkit::EssenceIndex& essence, Object& mob,
                   const std::map<std::string, std::string>& masterNames) {
    MediaEntry entry;
    entry.fileMob = &mob;
    aafkit::getMobId(mob, PID_Mob_MobID, entry.mobId);
    entry.mobIdText = aafkit::mobIdToText(entry.mobId);
    auto master = masterNames.find(entry.mobIdText);
    entry.clipName =
        master != masterNames.end() && !master->second.empty() ? master->second : textProperty(mob, PID_Mob_Name);
    aafkit::getEssenceDescriptor(mob, entry.descriptor);
    entry.kind = kindOf(entry.descriptor);
    entry.essenceData = essence.find(entry.mobId);
    if (entry.descriptor) {
        entry.audioStatus = aafkit::describeAudio(*entry.descriptor, entry.audio);
        entry.locator = firstLocator(*entry.descriptor);
    } else {
        entry.audioStatus = aafkit::Status::error("the source mob has no essence descriptor");
    }
    return entry;
}

}  // namespace

std::vector<MediaEntry> catalogueMedia(const aafkit::File& file) {
    const std::map<std::string, std::string> masterNames = masterClipNames(file);
    std::vector<Object*> mobs;
    aafkit::getMobs(file, aafkit::kAAFFileMob, mobs);
    const aafkit::EssenceIndex essence(file);
    std::vector<MediaEntry> entries;
    for (Object* mob : mobs) entries.push_back(entryOf(essence, *mob, masterNames));
    return entries;
}
