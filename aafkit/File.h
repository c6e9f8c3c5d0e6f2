#pragma once
// An AAF file: its objects (an object store), opened from disk or created new.
// Opened files load their objects and keep the file open for data streams, which
// are read only on request; new files start with the objects a new AAF file holds.
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "AafTypes.h"
#include "Status.h"
#include "om/ObjectStore.h"

namespace aafkit {

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

class File final : public ObjectStore {
public:
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

    Object* header() const;
    Object* contentStorage() const;
    Object* dictionary() const;
    Object* metaDictionary() const;

    // Mobs by MobID, through ContentStorage Mobs.
    Object* lookupMob(const aafMobID_t& id) const;

private:
    File();
    friend class NewFileBuilder;

    // New files: the last modification stamped and the MetaDictionary rebuilt.
    void prepareSave();
    // Made by createNew: its MetaDictionary is built from the model at each save.
    bool createdNew() const { return ownsMetaDictionary_; }

    bool ownsMetaDictionary_ = false;  // created here: built from the model at save
    mutable std::unordered_map<aafMobID_t, Object*, MobIdHash> mobIndex_;
    mutable uint64_t mobIndexVersion_ = ~uint64_t(0);  // the sets' version it was built at
};

// The file that owns `object`: objects live only in files.
inline File& fileOf(const Object& object) { return static_cast<File&>(object.store()); }

}  // namespace aafkit
