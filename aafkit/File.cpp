#include "File.h"

#include <cstring>

#include "ResultCodes.h"
#include "om/Values.h"
#include "cfb/CompoundFileFormat.h"
#include "cfb/CompoundFileReader.h"
#include "io/InputFile.h"
#include "meta/Ids.h"
#include "meta/MetaDictionaryWriter.h"
#include "om/Loader.h"
#include "NewFileBuilder.h"
#include "om/Saver.h"

namespace aafkit {

namespace {

// The compound-file signature, then the AAF file-kind signature as the header CLSID.
bool isAafFile(const io::InputFile& input) {
    uint8_t start[24];
    return input.read(0, start, sizeof start).ok() && input.size() >= 512 &&
           std::memcmp(start, cfb::kSignature, 8) == 0 &&
           (std::memcmp(start + 8, cfb::kAafSignature512, 16) == 0 ||
            std::memcmp(start + 8, cfb::kAafSignature4096, 16) == 0);
}

}  // namespace

File::File() = default;
File::~File() = default;

AAFRESULT File::openExistingRead(const std::string& path, std::unique_ptr<File>& out, Status* why) {
    std::unique_ptr<io::InputFile> input;
    if (Status s = io::InputFile::open(path, input); !s) {
        if (why) *why = s;
        return AAFRESULT_FILE_NOT_FOUND;
    }
    if (!isAafFile(*input)) {
        if (why) *why = Status::error(path + " is not an AAF file");
        return AAFRESULT_NOT_AAF_FILE;
    }
    std::unique_ptr<File> file;
    if (Status s = load(std::move(input), file); !s) {
        if (why) *why = s;
        return AAFRESULT_NOT_AAF_FILE;
    }
    uint32_t objectModelVersion = 0;
    if (getUInt32(*file->header(), PID_Header_ObjectModelVersion, objectModelVersion) == AAFRESULT_SUCCESS &&
        objectModelVersion > 1) {
        if (why) *why = Status::error(path + " has a newer object model version");
        return AAFRESULT_FILEREV_DIFF;
    }
    out = std::move(file);
    return AAFRESULT_SUCCESS;
}

Status File::load(std::vector<uint8_t> bytes, std::unique_ptr<File>& out) {
    return load(io::InputFile::fromBytes(std::move(bytes)), out);
}

Status File::load(std::unique_ptr<io::InputFile> input, std::unique_ptr<File>& out) {
    auto storage = std::make_unique<cfb::CompoundFileReader>();
    if (Status s = cfb::CompoundFileReader::open(std::move(input), *storage); !s) return s;
    std::unique_ptr<File> file(new File());
    if (Status s = Loader::load(*storage, *file); !s) return s;
    storage->releaseDirectory();  // the objects are made: only their data streams read on
    file->keepSource(std::move(storage));
    out = std::move(file);
    return Status();
}

std::unique_ptr<File> File::createNew(const ProductIdentification& identification) {
    std::unique_ptr<File> file(new File());
    NewFileBuilder::build(*file, identification);
    return file;
}

uint32_t File::sectorSize() const { return source() ? source()->sectorSize() : 0; }
uint64_t File::fileSize() const { return source() ? source()->fileSize() : 0; }

Status File::save(const std::string& path) {
    prepareSave();
    return Saver::save(*this, path);
}

Status File::saveToBytes(std::vector<uint8_t>& out) {
    prepareSave();
    return Saver::saveToBytes(*this, out);
}

void File::prepareSave() {
    if (!createdNew()) return;
    setTimeStamp(*header(), PID_Header_LastModified, nowTimeStamp());
    meta::writeMetaDictionary(*this);
}

Object* File::header() const { return strongChild(root(), meta::kRootHeaderPid); }
Object* File::metaDictionary() const { return strongChild(root(), meta::kRootMetaDictionaryPid); }
Object* File::contentStorage() const { return strongChild(header(), PID_Header_Content); }
Object* File::dictionary() const { return strongChild(header(), PID_Header_Dictionary); }

Object* File::lookupMob(const aafMobID_t& id) const {
    if (mobIndexVersion_ != setsVersion()) {
        mobIndex_.clear();
        const std::vector<Object*>* mobs = nullptr;
        if (Object* content = contentStorage(); content && getObjects(*content, PID_ContentStorage_Mobs, mobs) == 0)
            for (Object* mob : *mobs) {
                const Property* mobId = mob->find(PID_Mob_MobID);
                if (mobId && mobId->data.size() == 32) mobIndex_.emplace(decodeMobId(mobId->data.data()), mob);
            }
        mobIndexVersion_ = setsVersion();
    }
    auto it = mobIndex_.find(id);
    return it == mobIndex_.end() ? nullptr : it->second;
}

}  // namespace aafkit
