#include "Saver.h"

#include <unordered_map>


#include "../cfb/CompoundFileWriter.h"
#include "../io/ByteWriter.h"
#include "../meta/Ids.h"
#include "ObjectStore.h"
#include "SetKey.h"
#include "StorageNames.h"
#include "Values.h"

namespace aafkit {

namespace {

constexpr uint8_t kLittleEndian = 0x4c;
constexpr uint8_t kFormatVersion = 0x20;
constexpr uint32_t kNoFreeKey = 0xffffffff;
constexpr uint8_t kStreamByteOrder = 0x55;  // "unspecified", as every writer stores it


// Objects are saved from an explicit work list, not by recursion, so that no
// nesting depth can exhaust the stack.
class ObjectSaver {
public:
    ObjectSaver(const ObjectStore& store, cfb::CompoundFileWriter& out) : store_(store), out_(out) {}
    Status saveTree(const Object& root, uint32_t storage);

private:
    struct Pending {
        const Object* object;
        uint32_t storage;
    };
    Status saveProperties(const Object& object, uint32_t storage);
    Status encode(const Property& p, uint32_t storage, std::vector<uint8_t>& value);
    void saveChild(const Object& child, uint32_t storage, const std::string& name);
    void saveVector(const Property& p, uint32_t storage, const std::string& base);
    Status saveSet(const Property& p, uint32_t storage, const std::string& base);
    void saveWeakIndex(const Property& p, uint32_t storage, const std::string& base);
    std::string baseName(const Property& p, size_t maxLength);
    Status encodeStream(const Property& p, uint32_t storage, ByteWriter& w);

    const ObjectStore& store_;
    cfb::CompoundFileWriter& out_;
    std::vector<Pending> pending_;
    std::unordered_map<uint32_t, std::string> names_;  // mangled names by pid and length
    std::vector<uint8_t> stream_;  // one object's properties at a time: the writer keeps a copy
};

void putU16(std::vector<uint8_t>& bytes, size_t at, uint16_t v) {
    bytes[at] = uint8_t(v);
    bytes[at + 1] = uint8_t(v >> 8);
}

Status ObjectSaver::saveTree(const Object& root, uint32_t storage) {
    pending_.push_back({&root, storage});
    while (!pending_.empty()) {
        const Pending next = pending_.back();
        pending_.pop_back();
        if (Status s = saveProperties(*next.object, next.storage); !s) return s;
    }
    return Status();
}

std::string ObjectSaver::baseName(const Property& p, size_t maxLength) {
    if (!p.data.empty()) return storedName(p);  // as the file had it
    std::string& name = names_[uint32_t(p.pid) << 8 | uint32_t(maxLength)];
    if (name.empty()) {
        const meta::PropertyDef* def = store_.model().findProperty(p.pid);
        name = mangledName(def ? def->name : "Property", p.pid, maxLength);
    }
    return name;
}

// Makes the child's storage now; its properties are written when the work list reaches it.
void ObjectSaver::saveChild(const Object& child, uint32_t storage, const std::string& name) {
    uint8_t clsid[16];
    encodeAuid(child.classId(), clsid);
    pending_.push_back({&child, out_.addStorage(storage, name, clsid)});
}

void ObjectSaver::saveVector(const Property& p, uint32_t storage, const std::string& base) {
    std::vector<uint8_t> index;
    ByteWriter w(index);
    w.u32(uint32_t(p.objects().size()));
    w.u32(uint32_t(p.objects().size()));
    w.u32(kNoFreeKey);
    for (uint32_t i = 0; i < p.objects().size(); ++i) w.u32(i);
    out_.addStream(storage, base + " index", index);
    for (uint32_t i = 0; i < p.objects().size(); ++i)
        saveChild(*p.objects()[i], storage, elementName(base, uint32_t(i)));
}

Status ObjectSaver::saveSet(const Property& p, uint32_t storage, const std::string& base) {
    std::vector<SetKey> keys(p.objects().size());
    for (size_t i = 0; i < p.objects().size(); ++i)
        if (!setKeyOf(*p.objects()[i], keys[i]))
            return Status::error("a set element of property 0x" + hexText(p.pid) + " has no key");
    std::vector<uint8_t> index;
    ByteWriter w(index);
    w.u32(uint32_t(p.objects().size()));
    w.u32(uint32_t(p.objects().size()));
    w.u32(kNoFreeKey);
    w.u16(keys.empty() ? p.keyPid : keys[0].keyPid);
    w.u8(uint8_t(keys.empty() ? p.keySize : keys[0].bytes.size()));
    for (uint32_t i = 0; i < keys.size(); ++i) {
        w.u32(i);
        w.u32(1);
        w.bytes(keys[i].bytes.data(), keys[i].bytes.size());
    }
    out_.addStream(storage, base + " index", index);
    for (uint32_t i = 0; i < p.objects().size(); ++i)
        saveChild(*p.objects()[i], storage, elementName(base, uint32_t(i)));
    return Status();
}

void ObjectSaver::saveWeakIndex(const Property& p, uint32_t storage, const std::string& base) {
    std::vector<uint8_t> index;
    ByteWriter w(index);
    w.u32(uint32_t(p.weak().size()));
    w.u16(p.weak().empty() ? 0 : uint16_t(p.weak()[0].pathId));
    w.u16(p.weak().empty() ? 0 : p.weak()[0].keyPid);
    w.u8(p.weak().empty() ? 0 : uint8_t(p.weak()[0].key.size()));
    for (const WeakReference& r : p.weak()) w.bytes(r.key.data(), r.key.size());
    out_.addStream(storage, base + " index", index);
}

// A data stream's value is its stream's name after a byte-order byte; new streams are named like references.
// The content is copied from its source while the file is written, a chunk at a time.
Status ObjectSaver::encodeStream(const Property& p, uint32_t storage, ByteWriter& w) {
    const std::string name = p.data.empty() ? baseName(p, kStrongRefNameLength) : streamName(p);
    if (p.stream())
        out_.addStream(storage, name, *p.stream());
    else
        out_.addStream(storage, name, std::vector<uint8_t>());
    if (!p.data.empty()) {
        w.bytes(p.data.data(), p.data.size());
        return Status();
    }
    const std::vector<uint8_t> stored = wideToUtf16(std::wstring(name.begin(), name.end()));
    w.u8(kStreamByteOrder);
    w.bytes(stored.data(), stored.size());
    return Status();
}

// Appends the property's stored value to `out`, and writes what it refers to.
Status ObjectSaver::encode(const Property& p, uint32_t storage, std::vector<uint8_t>& out) {
    ByteWriter w(out);
    const StoredForm form = p.storedForm();
    if (form == StoredForm::WeakRef) {
        WeakReference r;
        if (!p.weakReference(r)) return Status::error("weak reference 0x" + hexText(p.pid) + " without target");
        w.u16(uint16_t(r.pathId));
        w.u16(r.keyPid);
        w.u8(uint8_t(r.key.size()));
        w.bytes(r.key.data(), r.key.size());
        return Status();
    }
    if (form == StoredForm::DataStream) return encodeStream(p, storage, w);
    if (!p.isStrong() && !p.isWeak()) {
        w.bytes(p.data.data(), p.data.size());
        return Status();
    }
    const std::string& name = baseName(p, form == StoredForm::StrongRef ? kStrongRefNameLength : kCollectionNameLength);
    if (p.data.empty()) {
        const std::vector<uint8_t> stored = wideToUtf16(std::wstring(name.begin(), name.end()));
        w.bytes(stored.data(), stored.size());
    } else {
        w.bytes(p.data.data(), p.data.size());  // the name as the file had it
    }
    switch (form) {
    case StoredForm::StrongRef:
        if (p.objects().size() != 1) return Status::error("strong reference 0x" + hexText(p.pid) + " without object");
        saveChild(*p.objects()[0], storage, name);
        return Status();
    case StoredForm::StrongRefVector:
        saveVector(p, storage, name);
        return Status();
    case StoredForm::StrongRefSet:
        return saveSet(p, storage, name);
    default:
        saveWeakIndex(p, storage, name);
        return Status();
    }
}

Status ObjectSaver::saveProperties(const Object& object, uint32_t storage) {
    const size_t count = object.properties().size();
    std::vector<uint8_t>& stream = stream_;
    stream.assign(4 + 6 * count, 0);
    stream[0] = kLittleEndian;
    stream[1] = kFormatVersion;
    putU16(stream, 2, uint16_t(count));
    for (size_t i = 0; i < count; ++i) {
        const Property& p = object.properties()[i];
        const size_t start = stream.size();
        if (Status s = encode(p, storage, stream); !s) return s;
        const size_t length = stream.size() - start;
        if (length > 0xffff) return Status::error("property 0x" + hexText(p.pid) + " is too large to store");
        putU16(stream, 4 + 6 * i, p.pid);
        putU16(stream, 6 + 6 * i, p.form);
        putU16(stream, 8 + 6 * i, uint16_t(length));
    }
    out_.addStream(storage, "properties", stream);
    return Status();
}

std::vector<uint8_t> pathTable(const ObjectStore& store) {
    std::vector<uint8_t> bytes;
    ByteWriter w(bytes);
    uint32_t total = 0;
    for (const auto& path : store.paths()) total += uint32_t(path.size() + 1);
    w.u8(kLittleEndian);
    w.u16(uint16_t(store.paths().size()));
    w.u32(total);
    for (const auto& path : store.paths()) {
        for (uint16_t pid : path) w.u16(pid);
        w.u16(0);
    }
    return bytes;
}

Status build(const ObjectStore& store, cfb::CompoundFileWriter& out) {
    uint8_t rootClass[16];
    encodeAuid(store.root()->classId(), rootClass);
    out.setClsid(cfb::CompoundFileWriter::kRoot, rootClass);
    ObjectSaver saver(store, out);
    if (Status s = saver.saveTree(*store.root(), cfb::CompoundFileWriter::kRoot); !s) return s;
    out.addStream(cfb::CompoundFileWriter::kRoot, "referenced properties", pathTable(store));
    return Status();
}

}  // namespace

Status Saver::save(const ObjectStore& store, const std::string& path) {
    cfb::CompoundFileWriter out;
    if (Status s = build(store, out); !s) return s;
    return out.writeFile(path);
}

Status Saver::saveToBytes(const ObjectStore& store, std::vector<uint8_t>& bytes) {
    cfb::CompoundFileWriter out;
    if (Status s = build(store, out); !s) return s;
    return out.write(bytes);
}

}  // namespace aafkit
