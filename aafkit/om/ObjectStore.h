#pragma once
// Every object of a file from the root down, the model they are read against and
// the table of weak-reference paths with which references name their targets.
// Objects are owned here; everything else holds plain pointers valid until the
// store is destroyed.
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "../AafTypes.h"
#include "../cfb/CompoundFileReader.h"
#include "../mem/Arena.h"
#include "../meta/MetaModel.h"
#include "Object.h"

namespace aafkit {

class ObjectStore {
public:
    ObjectStore(const ObjectStore&) = delete;
    ObjectStore& operator=(const ObjectStore&) = delete;

    Object* root() const { return root_; }
    void setRoot(Object* root) { root_ = root; }

    meta::MetaModel& model() { return model_; }
    const meta::MetaModel& model() const { return model_; }

    // A new, unattached object of a known concrete or extension class (null if unknown).
    Object* create(const aafUID_t& classId);
    // An object as stored, whatever its class (the loader's way in).
    Object* newObject(const aafUID_t& classId, const meta::ClassDef* classDef);
    size_t objectCount() const { return objects_.size(); }
    const Object& objectAt(size_t i) const { return objects_[i]; }
    Object& objectAt(size_t i) { return objects_[i]; }

    // Weak references: the path table and resolution.
    uint32_t internPath(const std::vector<uint16_t>& pids);
    const std::vector<std::vector<uint16_t>>& paths() const { return paths_; }
    Object* resolve(const WeakReference& reference) const;
    // The reference that names `target`, an element of a set reached by strong references.
    bool referenceTo(const Object& target, WeakReference& out);
    // A reference to a class or type definition of the MetaDictionary (set 0x0003 or 0x0004) by AUID.
    WeakReference metaReference(uint16_t metaSetPid, const aafUID_t& id);

    // Called when a set gains an element: lookups rebuild their indexes.
    void setsChanged();
    // Grows at every setsChanged: an index built at one value is stale at any other.
    uint64_t setsVersion() const { return setsVersion_; }

    // The compound file the objects were loaded from, kept open for their data streams
    // (null for new files).
    const cfb::CompoundFileReader* source() const { return source_.get(); }
    void keepSource(std::unique_ptr<cfb::CompoundFileReader> source) { source_ = std::move(source); }

protected:
    // Made only as part of the file that owns the objects.
    ObjectStore() = default;
    ~ObjectStore() = default;

private:
    mem::Arena memory_;  // the objects and their properties; declared first, so freed last
    std::unique_ptr<cfb::CompoundFileReader> source_;  // outlives the objects whose streams it reads
    meta::MetaModel model_;
    mem::Deque<Object> objects_{&memory_};
    Object* root_ = nullptr;
    std::vector<std::vector<uint16_t>> paths_;
    uint64_t setsVersion_ = 0;
    // By set (path) and key; a key of up to 32 bytes, every AUID and MobID, is held inline.
    struct ResolveKey {
        uint32_t pathId;
        Bytes key;
        bool operator==(const ResolveKey& o) const { return pathId == o.pathId && key == o.key; }
    };
    struct ResolveKeyHash {
        size_t operator()(const ResolveKey& k) const;
    };
    mutable std::unordered_map<ResolveKey, Object*, ResolveKeyHash> resolveCache_;
    std::unordered_map<const Object*, WeakReference> referenceCache_;
};

}  // namespace aafkit
