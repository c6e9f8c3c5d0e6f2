#include "Loader.h"

#include <algorithm>
#include <string>

#include "../io/ByteReader.h"
#include "../meta/Ids.h"
#include "../meta/MetaDictionaryReader.h"
#include "ObjectStore.h"
#include "StorageNames.h"
#include "StoredStream.h"
#include "Values.h"

namespace aafkit {

namespace {

// Deeper trees are refused: callers walk object trees recursively.
constexpr int kMaxDepth = 1000;


// Objects are loaded from an explicit work list, not by recursion, so that no
// nesting in a file can exhaust the stack: making an object queues its storage.
class ObjectLoader {
public:
    ObjectLoader(const cfb::CompoundFileReader& cfb, ObjectStore& store) : cfb_(cfb), store_(store) {}

    // Loads the object's properties (only those in `onlyPids` when given), then everything they reach.
    Status loadTree(const cfb::DirectoryEntry& storage, Object& object, const std::vector<uint16_t>* onlyPids);
    // The model has learnt the file's own classes: classes found so far may be stale.
    void modelChanged() { classes_.clear(); }

private:
    struct Pending {
        const cfb::DirectoryEntry* storage;
        Object* object;
        int depth;
    };

    Status loadProperties(const Pending& item, const std::vector<uint16_t>* onlyPids);
    Status loadValue(const Pending& item, Property& p);
    Status loadVector(const Pending& item, Property& p);
    Status loadSet(const Pending& item, Property& p);
    Status loadWeakCollection(const cfb::DirectoryEntry& storage, Property& p);
    Status addChild(const Pending& item, const std::string& name, Property& p, Object*& out);
    Status readNamedStream(const cfb::DirectoryEntry& storage, const std::string& name, std::vector<uint8_t>& out);
    std::string nameOf(const cfb::DirectoryEntry& entry) const { return std::string(cfb_.name(entry)); }
    const meta::ClassDef* classOf(const cfb::DirectoryEntry& storage);

    const cfb::CompoundFileReader& cfb_;
    ObjectStore& store_;
    std::vector<Pending> pending_;
    std::vector<uint8_t> properties_;  // reused: one object's stream is done before the next is read
    std::vector<uint8_t> index_;
    // The class of each of the directory's distinct class ids, by its index there:
    // a file holds a hundred thousand objects of a few dozen classes.
    std::vector<std::pair<bool, const meta::ClassDef*>> classes_;
};

Status ObjectLoader::loadTree(const cfb::DirectoryEntry& storage, Object& object,
                              const std::vector<uint16_t>* onlyPids) {
    if (Status s = loadProperties({&storage, &object, 0}, onlyPids); !s) return s;
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        if (Status s = loadProperties(next, nullptr); !s) return s;
    }
    return Status();
}

Status ObjectLoader::readNamedStream(const cfb::DirectoryEntry& storage, const std::string& name,
                                     std::vector<uint8_t>& out) {
    const cfb::DirectoryEntry* stream = cfb_.child(storage, name);
    if (!stream || stream->type != cfb::EntryType::Stream)
        return Status::error("missing stream \"" + name + "\" in \"" + nameOf(storage) + "\"");
    return cfb_.readStream(*stream, out);
}

Status ObjectLoader::loadProperties(const Pending& item, const std::vector<uint16_t>* onlyPids) {
    const cfb::DirectoryEntry& storage = *item.storage;
    if (Status s = readNamedStream(storage, "properties", properties_); !s) return s;
    const std::vector<uint8_t>& bytes = properties_;
    auto where = [&] { return "object \"" + nameOf(storage) + "\""; };
    ByteReader table(bytes.data(), bytes.size());
    uint8_t byteOrder = 0, version = 0;
    uint16_t count = 0;
    if (!table.u8(byteOrder) || !table.u8(version) || !table.u16(count))
        return Status::error("truncated properties header in " + where());
    if (byteOrder != 0x4c) return Status::error("big-endian properties are not supported in " + where());
    ByteReader values(bytes.data(), bytes.size());
    if (!values.seek(4 + 6 * size_t(count))) return Status::error("truncated property table in " + where());
    Object& object = *item.object;
    object.properties().reserve(object.properties().size() + count);
    for (uint16_t i = 0; i < count; ++i) {
        uint16_t pid = 0, form = 0, length = 0;
        const uint8_t* value = nullptr;
        table.u16(pid);
        table.u16(form);
        table.u16(length);
        if (!values.bytes(length, value))
            return Status::error("property 0x" + hexText(pid) + " runs past the end of " + where());
        if (onlyPids && std::find(onlyPids->begin(), onlyPids->end(), pid) == onlyPids->end()) continue;
        if (object.find(pid)) return Status::error("duplicate property 0x" + hexText(pid) + " in " + where());
        Property& p = object.properties().emplace_back();
        p.pid = pid;
        p.form = form;
        p.data.assign(value, value + length);
        if (Status s = loadValue(item, p); !s) return s;
    }
    return Status();
}

Status ObjectLoader::loadValue(const Pending& item, Property& p) {
    auto where = [&] { return "property 0x" + hexText(p.pid) + " of \"" + nameOf(*item.storage) + "\""; };
    switch (p.storedForm()) {
    case StoredForm::StrongRef: {
        Object* child = nullptr;
        if (Status s = addChild(item, storedName(p), p, child); !s) return s;
        p.objects().push_back(child);
        return Status();
    }
    case StoredForm::StrongRefVector:
        return loadVector(item, p);
    case StoredForm::StrongRefSet:
        return loadSet(item, p);
    case StoredForm::WeakRef: {
        WeakReference checked;  // kept as stored in `data`, read through the property
        if (!p.weakReference(checked) || checked.pathId >= store_.paths().size())
            return Status::error("malformed weak reference in " + where());
        return Status();
    }
    case StoredForm::WeakRefVector:
    case StoredForm::WeakRefSet:
        return loadWeakCollection(*item.storage, p);
    case StoredForm::DataStream: {
        if (p.data.size() < 3 || p.data[0] != 0x55) return Status::error("malformed stream reference in " + where());
        const std::string name = streamName(p);
        const cfb::DirectoryEntry* stream = cfb_.child(*item.storage, name);
        if (!stream || stream->type != cfb::EntryType::Stream)
            return Status::error("missing stream \"" + name + "\" in \"" + nameOf(*item.storage) + "\"");
        p.setStream(std::make_unique<StoredStream>(cfb_, *stream));
        return Status();
    }
    default:
        return Status();  // data and rare forms keep their bytes
    }
}

const meta::ClassDef* ObjectLoader::classOf(const cfb::DirectoryEntry& storage) {
    if (storage.clsidIndex >= classes_.size()) classes_.resize(storage.clsidIndex + 1);
    auto& known = classes_[storage.clsidIndex];
    if (!known.first) known = {true, store_.model().findClass(decodeAuid(cfb_.clsid(storage)))};
    return known.second;
}

// Makes the child object now and queues its storage for loading.
Status ObjectLoader::addChild(const Pending& item, const std::string& name, Property& p, Object*& out) {
    const cfb::DirectoryEntry* child = cfb_.child(*item.storage, name);
    if (!child || child->type != cfb::EntryType::Storage)
        return Status::error("missing storage \"" + name + "\" in \"" + nameOf(*item.storage) + "\"");
    if (item.depth >= kMaxDepth) return Status::error("objects nested too deeply at \"" + name + "\"");
    out = store_.newObject(decodeAuid(cfb_.clsid(*child)), classOf(*child));
    out->attach(item.object, p.pid);
    pending_.push_back({child, out, item.depth + 1});
    return Status();
}

Status ObjectLoader::loadVector(const Pending& item, Property& p) {
    const std::string base = storedName(p);
    if (Status s = readNamedStream(*item.storage, base + " index", index_); !s) return s;
    ByteReader in(index_.data(), index_.size());
    uint32_t count = 0, nextFree = 0, lastFree = 0;
    if (!in.u32(count) || !in.u32(nextFree) || !in.u32(lastFree) || count > in.remaining() / 4)
        return Status::error("malformed index \"" + base + " index\" in \"" + nameOf(*item.storage) + "\"");
    p.objects().reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t localKey = 0;
        in.u32(localKey);
        Object* child = nullptr;
        if (Status s = addChild(item, elementName(base, localKey), p, child); !s) return s;
        p.objects().push_back(child);
    }
    return Status();
}

Status ObjectLoader::loadSet(const Pending& item, Property& p) {
    const std::string base = storedName(p);
    if (Status s = readNamedStream(*item.storage, base + " index", index_); !s) return s;
    ByteReader in(index_.data(), index_.size());
    uint32_t count = 0, nextFree = 0, lastFree = 0;
    if (!in.u32(count) || !in.u32(nextFree) || !in.u32(lastFree) || !in.u16(p.keyPid) || !in.u8(p.keySize) ||
        count > in.remaining() / (8 + size_t(p.keySize)))
        return Status::error("malformed index \"" + base + " index\" in \"" + nameOf(*item.storage) + "\"");
    std::vector<std::pair<Bytes, Object*>> elements;
    elements.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t localKey = 0, references = 0;
        const uint8_t* key = nullptr;
        in.u32(localKey);
        in.u32(references);
        in.bytes(p.keySize, key);
        Object* child = nullptr;
        if (Status s = addChild(item, elementName(base, localKey), p, child); !s) return s;
        elements.emplace_back(Bytes(key, p.keySize), child);
    }
    // Sets enumerate in key order, whatever order the file stored them in.
    std::stable_sort(elements.begin(), elements.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (auto& element : elements) p.objects().push_back(element.second);
    return Status();
}

Status ObjectLoader::loadWeakCollection(const cfb::DirectoryEntry& storage, Property& p) {
    const std::string base = storedName(p);
    if (Status s = readNamedStream(storage, base + " index", index_); !s) return s;
    const std::string where = "\"" + base + " index\" in \"" + nameOf(storage) + "\"";
    ByteReader in(index_.data(), index_.size());
    uint32_t count = 0;
    uint16_t tag = 0, keyPid = 0;
    uint8_t keySize = 0;
    if (!in.u32(count) || !in.u16(tag) || !in.u16(keyPid) || !in.u8(keySize) ||
        (keySize && count > in.remaining() / keySize))
        return Status::error("malformed weak index " + where);
    if (tag >= store_.paths().size() && count) return Status::error("weak reference tag out of range in " + where);
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t* key = nullptr;
        if (!in.bytes(keySize, key)) return Status::error("truncated weak index " + where);
        p.weak().push_back({tag, keyPid, Bytes(key, keySize)});
    }
    return Status();
}

Status readPathTable(const cfb::CompoundFileReader& cfb, ObjectStore& store) {
    const cfb::DirectoryEntry* stream = cfb.child(cfb.root(), "referenced properties");
    if (!stream) return Status();  // a file without weak references
    std::vector<uint8_t> bytes;
    if (Status s = cfb.readStream(*stream, bytes); !s) return s;
    ByteReader in(bytes.data(), bytes.size());
    uint8_t byteOrder = 0;
    uint16_t count = 0;
    uint32_t total = 0;
    if (!in.u8(byteOrder) || !in.u16(count) || !in.u32(total))
        return Status::error("truncated referenced properties table");
    for (uint16_t i = 0; i < count; ++i) {
        std::vector<uint16_t> path;
        for (uint16_t pid = 1; pid != 0;) {
            if (!in.u16(pid)) return Status::error("truncated referenced properties table");
            if (pid) path.push_back(pid);
        }
        store.internPath(path);
    }
    return Status();
}

}  // namespace

Status Loader::load(const cfb::CompoundFileReader& cfb, ObjectStore& store) {
    if (Status s = readPathTable(cfb, store); !s) return s;
    ObjectLoader loader(cfb, store);
    const cfb::DirectoryEntry& rootEntry = cfb.root();
    const aafUID_t rootClass = decodeAuid(cfb.clsid(rootEntry));
    Object* root = store.newObject(rootClass, store.model().findClass(rootClass));
    store.setRoot(root);
    // The MetaDictionary declares what the rest of the file needs to be understood.
    const std::vector<uint16_t> metaOnly{meta::kRootMetaDictionaryPid};
    if (Status s = loader.loadTree(rootEntry, *root, &metaOnly); !s) return s;
    if (Object* metaDictionary = strongChild(root, meta::kRootMetaDictionaryPid))
        if (Status s = readMetaDictionary(*metaDictionary, store.model()); !s) return s;
    // Objects made before the declarations were known get their classes now.
    loader.modelChanged();
    for (size_t i = 0; i < store.objectCount(); ++i) {
        Object& object = store.objectAt(i);
        object.setClassDef(store.model().findClass(object.classId()));
    }
    const std::vector<uint16_t> rest{meta::kRootHeaderPid};
    if (Status s = loader.loadTree(rootEntry, *root, &rest); !s) return s;
    if (!strongChild(root, meta::kRootHeaderPid)) return Status::error("the file has no Header object");
    return Status();
}

}  // namespace aafkit
