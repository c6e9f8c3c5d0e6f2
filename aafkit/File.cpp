#include "File.h"

#include <cstring>

#include "ResultCodes.h"
#include "om/Values.h"
#include "cfb/CompoundFileFormat.h"
#include "cfb/CompoundFileReader.h"
#include "io/InputFile.h"
#include "meta/Ids.h"
#include "om/Loader.h"
#include "NewFileBuilder.h"
#include "om/Saver.h"
#include "om/SetKey.h"

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

std::string resolveCacheKey(uint32_t pathId, const Bytes& key) {
    std::string k(reinterpret_cast<const char*>(&pathId), sizeof pathId);
    k.append(key.begin(), key.end());
    return k;
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
    file->storage_ = std::move(storage);
    if (Status s = Loader::load(*file->storage_, *file); !s) return s;
    file->storage_->releaseDirectory();  // the objects are made: only their data streams read on
    out = std::move(file);
    return Status();
}

std::unique_ptr<File> File::createNew(const ProductIdentification& identification) {
    std::unique_ptr<File> file(new File());
    NewFileBuilder::build(*file, identification);
    return file;
}

uint32_t File::sectorSize() const { return storage_ ? storage_->sectorSize() : 0; }
uint64_t File::fileSize() const { return storage_ ? storage_->fileSize() : 0; }

Status File::save(const std::string& path) {
    return Saver::save(*this, path);
}

Status File::saveToBytes(std::vector<uint8_t>& out) {
    return Saver::saveToBytes(*this, out);
}

static Object* strongChild(Object* parent, uint16_t pid) {
    Object* child = nullptr;
    return parent && getObject(*parent, pid, child) == AAFRESULT_SUCCESS ? child : nullptr;
}

Object* File::header() const { return strongChild(root_, meta::kRootHeaderPid); }
Object* File::metaDictionary() const { return strongChild(root_, meta::kRootMetaDictionaryPid); }
Object* File::contentStorage() const { return strongChild(header(), PID_Header_Content); }
Object* File::dictionary() const { return strongChild(header(), PID_Header_Dictionary); }

Object* File::newObject(const aafUID_t& classId, const meta::ClassDef* classDef) {
    return &objects_.emplace_back(*this, classId, classDef);
}

Object* File::create(const aafUID_t& classId) {
    const meta::ClassDef* cls = model_.findClass(classId);
    if (!cls || !cls->concrete) return nullptr;
    Object* object = newObject(classId, cls);
    object->properties().reserve(4);  // most objects get a handful of properties, one at a time
    return object;
}

uint32_t File::internPath(const std::vector<uint16_t>& pids) {
    for (size_t i = 0; i < paths_.size(); ++i)
        if (paths_[i] == pids) return uint32_t(i);
    paths_.push_back(pids);
    return uint32_t(paths_.size() - 1);
}

Object* File::resolve(const WeakReference& reference) const {
    if (reference.pathId >= paths_.size()) return nullptr;
    auto cached = resolveCache_.find(resolveCacheKey(reference.pathId, reference.key));
    if (cached != resolveCache_.end()) return cached->second;
    const std::vector<uint16_t>& path = paths_[reference.pathId];
    Object* holder = root_;
    for (size_t i = 0; holder && i + 1 < path.size(); ++i) holder = strongChild(holder, path[i]);
    const std::vector<Object*>* elements = nullptr;
    if (!holder || path.empty() || getObjects(*holder, path.back(), elements) != AAFRESULT_SUCCESS)
        return nullptr;
    Object* found = nullptr;
    // Index the whole set at once: its other elements are usually referenced too.
    for (Object* element : *elements) {
        SetKey key;
        if (!setKeyOf(*element, key)) continue;
        if (key.bytes == reference.key) found = element;
        resolveCache_.emplace(resolveCacheKey(reference.pathId, key.bytes), element);
    }
    return found;
}

bool File::referenceTo(const Object& target, WeakReference& out) {
    // Definitions are referenced by thousands of components: remember each answer.
    auto known = referenceCache_.find(&target);
    if (known != referenceCache_.end()) {
        out = known->second;
        return true;
    }
    std::vector<uint16_t> path;
    const Object* at = &target;
    for (; at->container(); at = at->container()) path.insert(path.begin(), at->containerPid());
    const Property* holder = target.container() ? target.container()->find(target.containerPid()) : nullptr;
    SetKey key;
    if (at != root_ || !holder || holder->storedForm() != StoredForm::StrongRefSet || !setKeyOf(target, key))
        return false;
    out.pathId = internPath(path);
    out.keyPid = key.keyPid;
    out.key = std::move(key.bytes);
    referenceCache_.emplace(&target, out);
    return true;
}

WeakReference File::metaReference(uint16_t metaSetPid, const aafUID_t& id) {
    WeakReference reference{internPath({meta::kRootMetaDictionaryPid, metaSetPid}), PID_MetaDefinition_Identification,
                            Bytes()};
    reference.key.resize(16);
    encodeAuid(id, reference.key.data());
    return reference;
}

Object* File::lookupMob(const aafMobID_t& id) const {
    if (!mobIndexValid_) {
        mobIndex_.clear();
        const std::vector<Object*>* mobs = nullptr;
        if (Object* content = contentStorage(); content && getObjects(*content, PID_ContentStorage_Mobs, mobs) == 0)
            for (Object* mob : *mobs) {
                const Property* mobId = mob->find(PID_Mob_MobID);
                if (mobId) mobIndex_.emplace(std::string(mobId->data.begin(), mobId->data.end()), mob);
            }
        mobIndexValid_ = true;
    }
    uint8_t bytes[32];
    encodeMobId(id, bytes);
    auto it = mobIndex_.find(std::string(reinterpret_cast<const char*>(bytes), 32));
    return it == mobIndex_.end() ? nullptr : it->second;
}

void File::setsChanged() {
    mobIndexValid_ = false;
    resolveCache_.clear();
}

}  // namespace aafkit
