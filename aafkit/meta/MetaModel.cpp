#include "MetaModel.h"

#include <string_view>

#include "../mem/Arena.h"

namespace aafkit::meta {

namespace {

TypeDef typeFromBaseline(const BaselineType& row) {
    TypeDef type;
    type.id = row.id;
    type.name = row.name;
    type.kind = row.kind;
    type.size = row.size;
    type.isSigned = row.isSigned;
    type.element = row.element;
    type.count = row.count;
    type.path.assign(row.path, row.path + row.pathLength);
    type.builtin = true;
    type.extension = row.extension;
    return type;
}

template <typename Map>
auto findIn(const Map& map, const typename Map::key_type& key) -> typename Map::mapped_type {
    auto it = map.find(key);
    return it == map.end() ? nullptr : it->second;
}

void addTypes(ModelStore& store) {
    for (const BaselineType& row : baselineTypes()) {
        if (store.typesById.count(AuidKey(row.id))) continue;
        TypeDef& type = store.types.emplace_back(typeFromBaseline(row));
        store.typesById.emplace(AuidKey(type.id), &type);
    }
    std::unordered_map<std::string_view, TypeDef*> byName;
    for (TypeDef& t : store.types) byName.emplace(t.name, &t);
    for (const BaselineTypeMember& row : baselineTypeMembers()) {
        auto owner = byName.find(row.type.c_str());
        if (owner != byName.end())
            owner->second->members.push_back({row.name.c_str(), row.memberType, row.value, row.extValue});
    }
}

void addClasses(ModelStore& store) {
    std::unordered_map<std::string_view, ClassDef*> byName;
    for (const BaselineClass& row : baselineClasses()) {
        if (store.classesById.count(AuidKey(row.id))) continue;
        ClassDef& cls = store.classes.emplace_back();
        cls.id = row.id;
        cls.name = row.name;
        cls.concrete = row.concrete;
        cls.builtin = true;
        cls.extension = row.extension;
        store.classesById.emplace(AuidKey(cls.id), &cls);
        store.classesByName.emplace(cls.name, &cls);
        byName.emplace(cls.name, &cls);
    }
    // Parents by name may come later in the table.
    for (const BaselineClass& row : baselineClasses())
        if (*row.parent) byName.at(row.name.c_str())->parent = findIn(byName, row.parent.c_str());
    for (const BaselineProperty& row : baselineProperties()) {
        auto owner = byName.find(row.owner.c_str());
        if (owner == byName.end() || store.propertiesById.count(AuidKey(row.id))) continue;
        PropertyDef& p = store.properties.emplace_back();
        p.id = row.id;
        p.name = row.name;
        p.pid = row.pid;
        p.type = row.type;
        p.optional = row.optional;
        p.uniqueId = row.uniqueId;
        p.owner = owner->second;
        p.builtin = true;
        p.extension = row.extension;
        owner->second->properties.push_back(&p);
        store.propertiesById.emplace(AuidKey(p.id), &p);
        if (p.pid) store.propertiesByPid.emplace(p.pid, &p);
    }
    // Object reference types name their target class; resolve it to an AUID once.
    for (const BaselineType& row : baselineTypes())
        if (ClassDef* target = *row.target ? findIn(byName, row.target.c_str()) : nullptr)
            store.typesById.at(AuidKey(row.id))->target = target->id;
}

// The root object's class: not in the model tables, never written to a MetaDictionary.
void addRoot(ModelStore& store) {
    ClassDef& root = store.classes.emplace_back();
    root.id = kRootClassId;
    root.name = "Root";
    root.concrete = true;
    root.builtin = true;
    store.classesById.emplace(AuidKey(root.id), &root);
    for (auto [pid, name] : {std::pair<uint16_t, const char*>{kRootMetaDictionaryPid, "MetaDictionary"},
                             {kRootHeaderPid, "Header"}}) {
        PropertyDef& p = store.properties.emplace_back();
        p.id = kRootClassId;
        p.id.Data4[7] = uint8_t(pid);
        p.name = name;
        p.pid = pid;
        p.optional = false;
        p.owner = &root;
        p.builtin = true;
        root.properties.push_back(&p);
        store.propertiesByPid.emplace(pid, &p);
    }
}

// Built at the first open and kept to the end of the process: taking apart some
// thousands of definitions at exit would only cost a short run its time. Its own
// arena, whose pages come populated, spares a short run a page fault per few
// dozen definitions.
const ModelStore& builtinStore() {
    static const ModelStore& store = *[] {
        auto* s = new ModelStore(new mem::Arena);
        addTypes(*s);
        addClasses(*s);
        addRoot(*s);
        return s;
    }();
    return store;
}

}  // namespace

AuidKey::AuidKey(const aafUID_t& id)
    : high(uint64_t(id.Data1) << 32 | uint64_t(id.Data2) << 16 | id.Data3), low(0) {
    for (int i = 0; i < 8; ++i) low = low << 8 | id.Data4[i];
}

bool ClassDef::isA(const ClassDef* base) const {
    for (const ClassDef* c = this; c; c = c->parent)
        if (c == base) return true;
    return false;
}


const PropertyDef* ClassDef::uniqueIdProperty() const {
    for (const ClassDef* c = this; c; c = c->parent)
        for (const PropertyDef* p : c->properties)
            if (p->uniqueId) return p;
    return nullptr;
}

MetaModel::MetaModel() : builtin_(builtinStore()) {}

const ClassDef* MetaModel::findClass(const aafUID_t& id) const {
    const AuidKey key(id);
    if (const ClassDef* own = findIn(own_.classesById, key)) return own;
    return findIn(builtin_.classesById, key);
}

const ClassDef* MetaModel::findClass(const std::string& name) const {
    if (const ClassDef* own = findIn(own_.classesByName, name)) return own;
    return findIn(builtin_.classesByName, name);
}

const TypeDef* MetaModel::findType(const aafUID_t& id) const {
    const AuidKey key(id);
    if (const TypeDef* own = findIn(own_.typesById, key)) return own;
    return findIn(builtin_.typesById, key);
}

const PropertyDef* MetaModel::findProperty(uint16_t pid) const {
    if (const PropertyDef* own = findIn(own_.propertiesByPid, pid)) return own;
    return findIn(builtin_.propertiesByPid, pid);
}

const PropertyDef* MetaModel::findPropertyById(const aafUID_t& id) const {
    const AuidKey key(id);
    if (const PropertyDef* own = findIn(own_.propertiesById, key)) return own;
    return findIn(builtin_.propertiesById, key);
}

std::vector<const PropertyDef*> MetaModel::propertiesOf(const ClassDef& cls) const {
    std::vector<const PropertyDef*> out;
    out.reserve(cls.properties.size());
    for (const PropertyDef* p : cls.properties) out.push_back(findPropertyById(p->id));  // this file's pid
    auto added = addedToClass_.find(AuidKey(cls.id));
    if (added != addedToClass_.end()) out.insert(out.end(), added->second.begin(), added->second.end());
    return out;
}

const PropertyDef* MetaModel::findProperty(const ClassDef& cls, const aafUID_t& id) const {
    for (const ClassDef* c = &cls; c; c = c->parent)
        for (const PropertyDef* p : propertiesOf(*c))
            if (p->id == id) return p;
    return nullptr;
}

const ClassDef& MetaModel::declareClass(const aafUID_t& id, const std::string& name, const aafUID_t& parent,
                                        bool concrete) {
    if (const ClassDef* known = findClass(id)) return *known;
    ClassDef& cls = own_.classes.emplace_back();
    cls.id = id;
    cls.name = name;
    cls.parent = findClass(parent);
    cls.concrete = concrete;
    own_.classesById.emplace(AuidKey(id), &cls);
    own_.classesByName.emplace(name, &cls);
    addedClasses_.push_back(&cls);
    return cls;
}

const TypeDef& MetaModel::declareType(TypeDef type) {
    if (const TypeDef* known = findType(type.id)) return *known;
    TypeDef& stored = own_.types.emplace_back(std::move(type));
    own_.typesById.emplace(AuidKey(stored.id), &stored);
    addedTypes_.push_back(&stored);
    return stored;
}

PropertyDef& MetaModel::addProperty(const PropertyDef& property) {
    PropertyDef& p = own_.properties.emplace_back(property);
    own_.propertiesById[AuidKey(p.id)] = &p;
    own_.propertiesByPid[p.pid] = &p;
    return p;
}

const PropertyDef* MetaModel::declareProperty(const ClassDef& cls, const aafUID_t& id, const std::string& name,
                                              const aafUID_t& type, bool optional, uint16_t pid) {
    if (const PropertyDef* known = findPropertyById(id)) {
        if (known->owner != &cls && !findProperty(cls, id)) return nullptr;
        return known->pid ? known : bindPid(*known, pid ? pid : nextDynamicPid());
    }
    PropertyDef p;
    p.id = id;
    p.name = name;
    p.pid = pid ? pid : nextDynamicPid();
    p.type = type;
    p.optional = optional;
    p.owner = &cls;
    const PropertyDef& added = addProperty(p);
    if (ClassDef* declaredHere = findIn(own_.classesById, AuidKey(cls.id)))
        declaredHere->properties.push_back(&added);
    else
        addedToClass_[AuidKey(cls.id)].push_back(&added);
    return &added;
}

const PropertyDef* MetaModel::bindPid(const PropertyDef& property, uint16_t pid) {
    PropertyDef bound = *findPropertyById(property.id);
    if (bound.pid == pid) return findPropertyById(property.id);
    if (bound.pid) own_.propertiesByPid.erase(bound.pid);
    bound.pid = pid;
    return &addProperty(bound);
}

uint16_t MetaModel::nextDynamicPid() const {
    // New dynamic pids go down from 0xffff, below every dynamic pid already in use.
    uint32_t lowest = 0x10000;
    for (const auto& [pid, property] : own_.propertiesByPid)
        if (pid >= 0x8000 && pid < lowest) lowest = pid;
    return uint16_t(lowest - 1);
}

}  // namespace aafkit::meta
