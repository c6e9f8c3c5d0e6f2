#include "ObjectStore.h"

#include "../meta/Ids.h"
#include "SetKey.h"
#include "Values.h"

namespace aafkit {

// FNV-1a over the key's bytes, seeded with the set.
size_t ObjectStore::ResolveKeyHash::operator()(const ResolveKey& k) const {
    uint64_t hash = 0xcbf29ce484222325ull ^ k.pathId;
    for (uint8_t byte : k.key) hash = (hash ^ byte) * 0x100000001b3ull;
    return size_t(hash);
}

Object* ObjectStore::newObject(const aafUID_t& classId, const meta::ClassDef* classDef) {
    return &objects_.emplace_back(*this, classId, classDef, &memory_);
}

Object* ObjectStore::create(const aafUID_t& classId) {
    const meta::ClassDef* cls = model_.findClass(classId);
    if (!cls || !cls->concrete) return nullptr;
    Object* object = newObject(classId, cls);
    object->properties().reserve(4);  // most objects get a handful of properties, one at a time
    return object;
}

uint32_t ObjectStore::internPath(const std::vector<uint16_t>& pids) {
    for (size_t i = 0; i < paths_.size(); ++i)
        if (paths_[i] == pids) return uint32_t(i);
    paths_.push_back(pids);
    return uint32_t(paths_.size() - 1);
}

Object* ObjectStore::resolve(const WeakReference& reference) const {
    if (reference.pathId >= paths_.size()) return nullptr;
    auto cached = resolveCache_.find(ResolveKey{reference.pathId, reference.key});
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
        resolveCache_.emplace(ResolveKey{reference.pathId, std::move(key.bytes)}, element);
    }
    return found;
}

bool ObjectStore::referenceTo(const Object& target, WeakReference& out) {
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

WeakReference ObjectStore::metaReference(uint16_t metaSetPid, const aafUID_t& id) {
    WeakReference reference{internPath({meta::kRootMetaDictionaryPid, metaSetPid}), PID_MetaDefinition_Identification,
                            Bytes()};
    reference.key.resize(16);
    encodeAuid(id, reference.key.data());
    return reference;
}

void ObjectStore::setsChanged() {
    ++setsVersion_;
    resolveCache_.clear();
}

}  // namespace aafkit
