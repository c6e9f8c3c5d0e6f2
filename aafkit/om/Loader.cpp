#include "Loader.h"

#include <algorithm>
#include <deque>
#include <string>

#include "../ByteReader.h"
#include "../File.h"
#include "../Values.h"
#include "../meta/Ids.h"
#include "../meta/MetaDictionaryReader.h"

namespace aafkit {

namespace {

constexpr int kMaxDepth = 512;
constexpr uint16_t kRootMetaDictionary = meta::kRootMetaDictionaryPid;
constexpr uint16_t kRootHeader = meta::kRootHeaderPid;

class ObjectLoader {
public:
    ObjectLoader(const cfb::CompoundFileReader& cfb, File& file, std::vector<Object*>& created)
        : cfb_(cfb), file_(file), created_(created) {}

    Status loadProperties(const cfb::DirectoryEntry& storage, Object& object, int depth,
                          const std::vector<uint16_t>* onlyPids = nullptr);
    Status loadObject(const cfb::DirectoryEntry& storage, int depth, Object*& out);

private:
    Status readNamedStream(const cfb::DirectoryEntry& storage, const std::string& name,
                           std::vector<uint8_t>& out);
    Status loadValue(const cfb::DirectoryEntry& storage, Object& object, Property& p,
                     const uint8_t* value, int depth);
    Status loadStrongRef(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth);
    Status loadVector(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth);
    Status loadSet(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth);
    Status loadWeakCollection(const cfb::DirectoryEntry& storage, Property& p);
    Status loadChild(const cfb::DirectoryEntry& storage, const std::string& name, Property& p,
                     Object& owner, int depth, Object*& out);
    bool readWeak(ByteReader& in, WeakReference& out);
    std::vector<uint8_t>& buffer(int depth);

    const cfb::CompoundFileReader& cfb_;
    File& file_;
    std::vector<Object*>& created_;
    std::deque<std::vector<uint8_t>> buffers_;
};

std::string hex(uint32_t v) {
    char text[8];
    char* end = text + sizeof text;
    char* at = end;
    do {
        *--at = "0123456789abcdef"[v & 0xf];
        v >>= 4;
    } while (v);
    return std::string(at, end);
}

std::string storedName(const Property& p) {
    std::wstring wide = utf16ToWide(p.data.data(), p.data.size());
    return wideToUtf8(wide);
}

Status ObjectLoader::readNamedStream(const cfb::DirectoryEntry& storage, const std::string& name,
                                     std::vector<uint8_t>& out) {
    const cfb::DirectoryEntry* stream = cfb_.child(storage, name);
    if (!stream || stream->type != cfb::EntryType::Stream)
        return Status::error("missing stream \"" + name + "\" in \"" + storage.name + "\"");
    return cfb_.readStream(*stream, out);
}

Status ObjectLoader::loadObject(const cfb::DirectoryEntry& storage, int depth, Object*& out) {
    if (depth > kMaxDepth) return Status::error("objects nested too deeply at " + storage.name);
    if (storage.type != cfb::EntryType::Storage)
        return Status::error("\"" + storage.name + "\" is not a storage");
    const aafUID_t classId = decodeAuid(storage.clsid);
    Object* object = file_.newObject(classId, file_.model().findClass(classId));
    created_.push_back(object);
    out = object;
    return loadProperties(storage, *object, depth);
}

Status ObjectLoader::loadProperties(const cfb::DirectoryEntry& storage, Object& object, int depth,
                                    const std::vector<uint16_t>* onlyPids) {
    std::vector<uint8_t>& bytes = buffer(depth);
    if (Status s = readNamedStream(storage, "properties", bytes); !s) return s;
    auto where = [&] { return "object \"" + storage.name + "\""; };
    ByteReader table(bytes.data(), bytes.size());
    uint8_t byteOrder = 0, version = 0;
    uint16_t count = 0;
    if (!table.u8(byteOrder) || !table.u8(version) || !table.u16(count))
        return Status::error("truncated properties header in " + where());
    if (byteOrder != 0x4c) return Status::error("big-endian properties are not supported in " + where());
    ByteReader values(bytes.data(), bytes.size());
    if (!values.seek(4 + 6 * size_t(count))) return Status::error("truncated property table in " + where());
    object.properties().reserve(object.properties().size() + count);
    for (uint16_t i = 0; i < count; ++i) {
        uint16_t pid = 0, form = 0, length = 0;
        const uint8_t* value = nullptr;
        table.u16(pid);
        table.u16(form);
        table.u16(length);
        if (!values.bytes(length, value))
            return Status::error("property 0x" + hex(pid) + " runs past the end of " + where());
        if (onlyPids && std::find(onlyPids->begin(), onlyPids->end(), pid) == onlyPids->end()) continue;
        if (object.find(pid)) return Status::error("duplicate property 0x" + hex(pid) + " in " + where());
        Property& p = object.properties().emplace_back();
        p.pid = pid;
        p.form = form;
        p.data.assign(value, value + length);
        if (Status s = loadValue(storage, object, p, value, depth); !s) return s;
    }
    return Status();
}

// One buffer per nesting level: a parent's stream stays in use while its children load.
std::vector<uint8_t>& ObjectLoader::buffer(int depth) {
    while (buffers_.size() <= size_t(depth)) buffers_.emplace_back();
    return buffers_[size_t(depth)];
}

Status ObjectLoader::loadValue(const cfb::DirectoryEntry& storage, Object& object, Property& p,
                               const uint8_t* value, int depth) {
    auto where = [&] { return "property 0x" + hex(p.pid) + " of \"" + storage.name + "\""; };
    switch (p.storedForm()) {
    case StoredForm::StrongRef:
        return loadStrongRef(storage, p, object, depth);
    case StoredForm::StrongRefVector:
        return loadVector(storage, p, object, depth);
    case StoredForm::StrongRefSet:
        return loadSet(storage, p, object, depth);
    case StoredForm::WeakRef: {
        ByteReader in(value, p.data.size());
        p.weak.emplace_back();
        if (!readWeak(in, p.weak.back())) return Status::error("malformed weak reference in " + where());
        return Status();
    }
    case StoredForm::WeakRefVector:
    case StoredForm::WeakRefSet:
        return loadWeakCollection(storage, p);
    case StoredForm::DataStream: {
        if (p.data.size() < 3 || p.data[0] != 0x55) return Status::error("malformed stream reference in " + where());
        std::wstring name = utf16ToWide(p.data.data() + 1, p.data.size() - 1);
        return readNamedStream(storage, wideToUtf8(name), p.stream);
    }
    default:
        return Status();  // data and rare forms keep their bytes
    }
}

bool ObjectLoader::readWeak(ByteReader& in, WeakReference& out) {
    uint16_t tag = 0;
    uint8_t keySize = 0;
    const uint8_t* key = nullptr;
    if (!in.u16(tag) || !in.u16(out.keyPid) || !in.u8(keySize) || !in.bytes(keySize, key) ||
        tag >= file_.paths().size())
        return false;
    out.pathId = tag;
    out.key.assign(key, key + keySize);
    return true;
}

Status ObjectLoader::loadChild(const cfb::DirectoryEntry& storage, const std::string& name, Property& p,
                               Object& owner, int depth, Object*& out) {
    const cfb::DirectoryEntry* child = cfb_.child(storage, name);
    if (!child) return Status::error("missing storage \"" + name + "\" in \"" + storage.name + "\"");
    if (Status s = loadObject(*child, depth + 1, out); !s) return s;
    out->attach(&owner, p.pid);
    return Status();
}

Status ObjectLoader::loadStrongRef(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth) {
    Object* child = nullptr;
    if (Status s = loadChild(storage, storedName(p), p, owner, depth, child); !s) return s;
    p.objects.push_back(child);
    return Status();
}

Status ObjectLoader::loadVector(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth) {
    const std::string base = storedName(p);
    std::vector<uint8_t> index;
    if (Status s = readNamedStream(storage, base + " index", index); !s) return s;
    ByteReader in(index.data(), index.size());
    uint32_t count = 0, nextFree = 0, lastFree = 0;
    if (!in.u32(count) || !in.u32(nextFree) || !in.u32(lastFree) || count > in.remaining() / 4)
        return Status::error("malformed index \"" + base + " index\" in \"" + storage.name + "\"");
    p.objects.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t localKey = 0;
        in.u32(localKey);
        Object* child = nullptr;
        if (Status s = loadChild(storage, base + "{" + hex(localKey) + "}", p, owner, depth, child); !s) return s;
        p.objects.push_back(child);
    }
    return Status();
}

Status ObjectLoader::loadSet(const cfb::DirectoryEntry& storage, Property& p, Object& owner, int depth) {
    const std::string base = storedName(p);
    std::vector<uint8_t> index;
    if (Status s = readNamedStream(storage, base + " index", index); !s) return s;
    ByteReader in(index.data(), index.size());
    uint32_t count = 0, nextFree = 0, lastFree = 0;
    if (!in.u32(count) || !in.u32(nextFree) || !in.u32(lastFree) || !in.u16(p.keyPid) || !in.u8(p.keySize) ||
        count > in.remaining() / (8 + size_t(p.keySize)))
        return Status::error("malformed index \"" + base + " index\" in \"" + storage.name + "\"");
    std::vector<std::pair<std::vector<uint8_t>, Object*>> elements;
    elements.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        uint32_t localKey = 0, references = 0;
        const uint8_t* key = nullptr;
        in.u32(localKey);
        in.u32(references);
        in.bytes(p.keySize, key);
        Object* child = nullptr;
        if (Status s = loadChild(storage, base + "{" + hex(localKey) + "}", p, owner, depth, child); !s) return s;
        elements.emplace_back(std::vector<uint8_t>(key, key + p.keySize), child);
    }
    // Sets enumerate in key order, whatever order the file stored them in.
    std::stable_sort(elements.begin(), elements.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (auto& element : elements) p.objects.push_back(element.second);
    return Status();
}

Status ObjectLoader::loadWeakCollection(const cfb::DirectoryEntry& storage, Property& p) {
    const std::string base = storedName(p);
    std::vector<uint8_t> index;
    if (Status s = readNamedStream(storage, base + " index", index); !s) return s;
    const std::string where = "\"" + base + " index\" in \"" + storage.name + "\"";
    ByteReader in(index.data(), index.size());
    uint32_t count = 0;
    uint16_t tag = 0, keyPid = 0;
    uint8_t keySize = 0;
    if (!in.u32(count) || !in.u16(tag) || !in.u16(keyPid) || !in.u8(keySize) ||
        (keySize && count > in.remaining() / keySize))
        return Status::error("malformed weak index " + where);
    if (tag >= file_.paths().size() && count) return Status::error("weak reference tag out of range in " + where);
    for (uint32_t i = 0; i < count; ++i) {
        const uint8_t* key = nullptr;
        if (!in.bytes(keySize, key)) return Status::error("truncated weak index " + where);
        p.weak.push_back({tag, keyPid, std::vector<uint8_t>(key, key + keySize)});
    }
    return Status();
}

Status readPathTable(const cfb::CompoundFileReader& cfb, File& file) {
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
        file.internPath(path);
    }
    return Status();
}

}  // namespace

Status Loader::load(const cfb::CompoundFileReader& cfb, File& file) {
    if (Status s = readPathTable(cfb, file); !s) return s;
    std::vector<Object*> created;
    ObjectLoader loader(cfb, file, created);
    const cfb::DirectoryEntry& rootEntry = cfb.root();
    const aafUID_t rootClass = decodeAuid(rootEntry.clsid);
    Object* root = file.newObject(rootClass, file.model().findClass(rootClass));
    file.root_ = root;
    // The MetaDictionary declares what the rest of the file needs to be understood.
    const std::vector<uint16_t> metaOnly{kRootMetaDictionary};
    if (Status s = loader.loadProperties(rootEntry, *root, 0, &metaOnly); !s) return s;
    if (Object* metaDictionary = file.metaDictionary())
        if (Status s = readMetaDictionary(*metaDictionary, file.model()); !s) return s;
    // Objects made before the declarations were known get their classes now.
    for (Object* object : created) object->setClassDef(file.model().findClass(object->classId()));
    const std::vector<uint16_t> rest{kRootHeader};
    if (Status s = loader.loadProperties(rootEntry, *root, 0, &rest); !s) return s;
    if (!file.header()) return Status::error("the file has no Header object");
    return Status();
}

}  // namespace aafkit
