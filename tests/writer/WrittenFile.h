#pragma once
// Writing a context to a file and reading the file back with aafkit's object API.
#include <memory>
#include <string>
#include <vector>

#include "aafkit/File.h"
#include "aafkit/Mobs.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "aafbridge/aaf_writer.h"

struct WrittenFile {
    std::string path;
    AAFRESULT result = 0;
    std::unique_ptr<aafkit::File> file;
};

// Writes to a fresh temporary path named after `name` and loads the file back; the
// test fails when the file does not load completely.
WrittenFile writeAndLoad(AafWriterContext* context, const std::string& name);

// True when an independent compound-file reader lists and reads every stream.
bool opensWithOlefile(const std::string& path);
bool olefileAvailable();

// Navigation and typed reads that fail the test when something is missing.
std::vector<aafkit::Object*> mobsOfKind(const aafkit::File& file, aafkit::aafMobKind_t kind);
const std::vector<aafkit::Object*>& objects(const aafkit::Object& o, uint16_t pid);
aafkit::Object& object(const aafkit::Object& o, uint16_t pid);
aafkit::Object& slot(const aafkit::Object& mob, size_t index);           // by position
aafkit::Object& segment(const aafkit::Object& slot);
aafkit::Object& component(const aafkit::Object& sequence, size_t index);
aafkit::Object& referenced(const aafkit::Object& o, uint16_t pid);     // weak reference target
aafkit::Object& mob(const aafkit::File& file, const aafMobID_t& id);
aafkit::Object& compositionMob(const aafkit::File& file);  // the one that is not a sub-clip
// The components of a composition track, numbered as the writer numbers them (from 0).
const std::vector<aafkit::Object*>& trackComponents(const aafkit::File& file, size_t track);

uint16_t u16(const aafkit::Object& o, uint16_t pid);
uint32_t u32(const aafkit::Object& o, uint16_t pid);
int64_t i64(const aafkit::Object& o, uint16_t pid);
std::wstring text(const aafkit::Object& o, uint16_t pid);
aafUID_t auid(const aafkit::Object& o, uint16_t pid);
aafMobID_t mobId(const aafkit::Object& o, uint16_t pid);
std::vector<uint8_t> bytes(const aafkit::Object& o, uint16_t pid);
aafUID_t definitionId(const aafkit::Object& definition);
std::string className(const aafkit::Object& o);
