#include "WrittenFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "aafkit/meta/MetaModel.h"
#include "support/SampleFiles.h"

namespace {

// Fails the current test and stops the helper: a missing object cannot be followed.
[[noreturn]] void missing(const std::string& what) {
    ADD_FAILURE() << what;
    throw std::runtime_error(what);
}

template <typename T, typename Get>
T read(const aafkit::Object& o, uint16_t pid, Get get) {
    T value{};
    if (get(o, pid, value) != 0) missing(className(o) + " lacks property " + std::to_string(pid));
    return value;
}

std::wstring widen(const std::string& s) { return std::wstring(s.begin(), s.end()); }

}  // namespace

WrittenFile writeAndLoad(AafWriterContext* context, const std::string& name) {
    WrittenFile written;
    written.path = testsupport::temporaryPath("writer_" + name + ".aaf");
    std::remove(written.path.c_str());
    written.result = WriteAafFile(widen(written.path).c_str(), context);
    aafkit::Status why;
    EXPECT_EQ(aafkit::File::openExistingRead(written.path, written.file, &why), 0) << why.message();
    std::remove(written.path.c_str());  // the open file keeps its bytes until it is closed
    return written;
}

bool olefileAvailable() { return std::system("/usr/bin/python3 -c 'import olefile' 2>/dev/null") == 0; }

bool opensWithOlefile(const std::string& path) {
    const std::string command =
        "/usr/bin/python3 -c \"import olefile,sys; f=olefile.OleFileIO(sys.argv[1]); "
        "[f.openstream(s).read() for s in f.listdir(streams=True, storages=False)]\" '" +
        path + "' 2>/dev/null";
    return std::system(command.c_str()) == 0;
}

std::vector<aafkit::Object*> mobsOfKind(const aafkit::File& file, aafkit::aafMobKind_t kind) {
    std::vector<aafkit::Object*> mobs;
    aafkit::getMobs(file, kind, mobs);
    return mobs;
}

const std::vector<aafkit::Object*>& objects(const aafkit::Object& o, uint16_t pid) {
    const std::vector<aafkit::Object*>* out = nullptr;
    if (aafkit::getObjects(o, pid, out) != 0) missing(className(o) + " lacks objects " + std::to_string(pid));
    return *out;
}

aafkit::Object& object(const aafkit::Object& o, uint16_t pid) { return *read<aafkit::Object*>(o, pid, aafkit::getObject); }

aafkit::Object& slot(const aafkit::Object& mob, size_t index) {
    const auto& slots = objects(mob, PID_Mob_Slots);
    if (index >= slots.size()) missing("no slot " + std::to_string(index));
    return *slots[index];
}

aafkit::Object& segment(const aafkit::Object& slot) { return object(slot, PID_MobSlot_Segment); }

aafkit::Object& component(const aafkit::Object& sequence, size_t index) {
    const auto& components = objects(sequence, PID_Sequence_Components);
    if (index >= components.size()) missing("no component " + std::to_string(index));
    return *components[index];
}

aafkit::Object& referenced(const aafkit::Object& o, uint16_t pid) {
    return *read<aafkit::Object*>(o, pid, aafkit::getReferenced);
}

aafkit::Object& mob(const aafkit::File& file, const aafMobID_t& id) {
    aafkit::Object* found = file.lookupMob(id);
    if (!found) missing("no mob with that MobID");
    return *found;
}

aafkit::Object& compositionMob(const aafkit::File& file) {
    for (aafkit::Object* found : mobsOfKind(file, aafkit::kAAFCompMob)) {
        aafUID_t usage;
        if (aafkit::getUsageCode(*found, usage) != 0 || !(usage == kAAFUsage_SubClip)) return *found;
    }
    missing("no composition mob");
}

const std::vector<aafkit::Object*>& trackComponents(const aafkit::File& file, size_t track) {
    return objects(segment(slot(compositionMob(file), track + 1)), PID_Sequence_Components);
}

uint16_t u16(const aafkit::Object& o, uint16_t pid) { return read<uint16_t>(o, pid, aafkit::getUInt16); }
uint32_t u32(const aafkit::Object& o, uint16_t pid) { return read<uint32_t>(o, pid, aafkit::getUInt32); }
int64_t i64(const aafkit::Object& o, uint16_t pid) { return read<int64_t>(o, pid, aafkit::getInt64); }
std::wstring text(const aafkit::Object& o, uint16_t pid) { return read<std::wstring>(o, pid, aafkit::getString); }
aafUID_t auid(const aafkit::Object& o, uint16_t pid) { return read<aafUID_t>(o, pid, aafkit::getAuid); }
aafMobID_t mobId(const aafkit::Object& o, uint16_t pid) { return read<aafMobID_t>(o, pid, aafkit::getMobId); }
std::vector<uint8_t> bytes(const aafkit::Object& o, uint16_t pid) {
    return read<std::vector<uint8_t>>(o, pid, aafkit::getBytes);
}

aafUID_t definitionId(const aafkit::Object& definition) {
    return auid(definition, PID_DefinitionObject_Identification);
}

std::string className(const aafkit::Object& o) { return o.classDef() ? o.classDef()->name : "unknown class"; }
