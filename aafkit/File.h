#pragma once
// An AAF file: every object from the root down, its model and the table of
// weak-reference paths. Opened files load their objects and keep the file open
// for data streams, which are read only on request; new files start with the
// objects a new AAF file holds.
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "AafTypes.h"
#include "Status.h"
#include "meta/MetaModel.h"
#include "om/Object.h"

namespace aafkit {

namespace cfb {
class CompoundFileReader;
}
namespace io {
class InputFile;
}

struct ProductIdentification {
    std::wstring companyName;
    std::wstring productName;
    std::wstring productVersionString;
    std::wstring platform;
    aafUID_t productId = kNullAuid;
    aafProductVersion_t productVersion = {0, 0, 0, 0, 0};
};

class File {
public:
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    // AAFFileOpenExistingRead: the SDK's codes (FILE_NOT_FOUND, NOT_AAF_FILE, FILEREV_DIFF,
    // or a load failure), with the detail in `why`.
    static AAFRESULT openExistingRead(const std::string& path, std::unique_ptr<File>& out,
                                      Status* why = nullptr);
    static Status load(std::vector<uint8_t> bytes, std::unique_ptr<File>& out);
    // Loads the objects; the file stays open for the data streams, read on request.
    static Status load(std::unique_ptr<io::InputFile> input, std::unique_ptr<File>& out);
    // AAFFileOpenNewModify: header, content storage, dictionary with the built-in data and
    // container definitions, and one identification.
    static std::unique_ptr<File> createNew(const ProductIdentification& identification);

    // Writes every object reachable from the root. New files get a MetaDictionary with every
    // class in use, its ancestors and the types their properties need.
    Status save(const std::string& path);
    Status saveToBytes(std::vector<uint8_t>& out);

    // The compound file it was opened from: sector size and size in bytes (0 for new files).
    uint32_t sectorSize() const;
    uint64_t fileSize() const;

    Object* root() const { return root_; }
    Object* header() const;
    Object* contentStorage() const;
    Object* dictionary() const;
    Object* metaDictionary() const;

    meta::MetaModel& model() { return model_; }
    const meta::MetaModel& model() const { return model_; }

    // A new, unattached object of a known concrete or extension class (null if unknown).
    Object* create(const aafUID_t& classId);
    // Made by createNew: its MetaDictionary is built from the model at each save.
    bool createdNew() const { return ownsMetaDictionary_; }
    // An object as stored, whatever its class (the loader's way in).
    Object* newObject(const aafUID_t& classId, const meta::ClassDef* classDef);
    size_t objectCount() const { return objects_.size(); }
    const Object& objectAt(size_t i) const { return objects_[i]; }

    // Weak references: the path table and resolution.
    uint32_t internPath(const std::vector<uint16_t>& pids);
    const std::vector<std::vector<uint16_t>>& paths() const { return paths_; }
    Object* resolve(const WeakReference& reference) const;
    // The reference that names `target`, an element of a set reached by strong references.
    bool referenceTo(const Object& target, WeakReference& out);
    // A reference to a class or type definition of the MetaDictionary (set 0x0003 or 0x0004) by AUID.
    WeakReference metaReference(uint16_t metaSetPid, const aafUID_t& id);

    // Mobs by MobID, through ContentStorage Mobs.
    Object* lookupMob(const aafMobID_t& id) const;
    // Called when a set gains an element: lookups rebuild their indexes.
    void setsChanged();

private:
    File();
    friend class Loader;
    friend class Saver;
    friend class NewFileBuilder;

    std::unique_ptr<cfb::CompoundFileReader> storage_;  // outlives the objects whose streams it reads
    meta::MetaModel model_;
    std::deque<Object> objects_;
    Object* root_ = nullptr;
    std::vector<std::vector<uint16_t>> paths_;
    bool ownsMetaDictionary_ = false;  // created here: built from the model at save
    mutable std::unordered_map<std::string, Object*> mobIndex_;
    mutable std::unordered_map<std::string, Object*> resolveCache_;
    std::unordered_map<const Object*, WeakReference> referenceCache_;
    mutable bool mobIndexValid_ = false;
};

}  // namespace aafkit
