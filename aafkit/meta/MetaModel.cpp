#include "MetaModel.h"

#include <string_view>

namespace aafkit::meta {

namespace {

AuidKey key(const aafUID_t& id) { return AuidKey(id); }

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

const ClassDef* ClassDef::nearestBuiltin() const {
    const ClassDef* c = this;
    while (c && !c->builtin) c = c->parent;
    return c;
}

const PropertyDef* ClassDef::uniqueIdProperty() const {
    for (const ClassDef* c = this; c; c = c->parent)
        for (const PropertyDef* p : c->properties)
            if (p->uniqueId) return p;
    return nullptr;
}

MetaModel::MetaModel() {
    classesById_.reserve(256);
    classesByName_.reserve(256);
    typesById_.reserve(256);
    propertiesById_.reserve(640);
    propertiesByPid_.reserve(640);
    for (const BaselineType& row : baselineTypes()) declareType(typeFromBaseline(row));
    std::unordered_map<std::string_view, TypeDef*> typesByName;
    for (TypeDef& t : types_) typesByName.emplace(t.name, &t);
    for (const BaselineTypeMember& row : baselineTypeMembers()) {
        auto owner = typesByName.find(row.type);
        if (owner != typesByName.end())
            owner->second->members.push_back({row.name, row.memberType, row.value, row.extValue});
    }
    // Classes first (parents by name may come later in the table), then parents.
    for (const BaselineClass& row : baselineClasses()) {
        if (findClass(row.id)) continue;
        ClassDef& cls = classes_.emplace_back();
        cls.id = row.id;
        cls.name = row.name;
        cls.concrete = row.concrete;
        cls.builtin = true;
        cls.extension = row.extension;
        classesById_[key(cls.id)] = &cls;
        classesByName_[cls.name] = &cls;
    }
    for (const BaselineClass& row : baselineClasses()) {
        if (*row.parent == 0) continue;
        auto parent = classesByName_.find(row.parent);
        if (parent != classesByName_.end()) classesById_[key(row.id)]->parent = parent->second;
    }
    for (const BaselineProperty& row : baselineProperties()) {
        auto owner = classesByName_.find(row.owner);
        if (owner == classesByName_.end() || propertiesById_.count(key(row.id))) continue;
        PropertyDef& p = properties_.emplace_back();
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
        propertiesById_[key(p.id)] = &p;
        if (p.pid) propertiesByPid_[p.pid] = &p;
    }
    // Object reference types name their target class; resolve it to an AUID once.
    for (const BaselineType& row : baselineTypes()) {
        if (*row.target == 0) continue;
        auto target = classesByName_.find(row.target);
        if (target != classesByName_.end()) typesById_[key(row.id)]->target = target->second->id;
    }
    declareRoot();
    addedClasses_.clear();
    addedTypes_.clear();
    addedProperties_.clear();
}

void MetaModel::declareRoot() {
    ClassDef& root = declareClass(kRootClassId, "Root", kNullAuid, true);
    root.builtin = true;
    for (auto [pid, name] : {std::pair<uint16_t, const char*>{kRootMetaDictionaryPid, "MetaDictionary"},
                             {kRootHeaderPid, "Header"}}) {
        PropertyDef& p = properties_.emplace_back();
        p.id = kRootClassId;
        p.id.Data4[7] = uint8_t(pid);  // private ids: these two never reach a MetaDictionary
        p.name = name;
        p.pid = pid;
        p.optional = false;
        p.owner = &root;
        p.builtin = true;
        root.properties.push_back(&p);
        propertiesByPid_[pid] = &p;
    }
}

const ClassDef* MetaModel::findClass(const aafUID_t& id) const {
    auto it = classesById_.find(key(id));
    return it == classesById_.end() ? nullptr : it->second;
}

const ClassDef* MetaModel::findClass(const std::string& name) const {
    auto it = classesByName_.find(name);
    return it == classesByName_.end() ? nullptr : it->second;
}

ClassDef* MetaModel::mutableClass(const aafUID_t& id) {
    auto it = classesById_.find(key(id));
    return it == classesById_.end() ? nullptr : it->second;
}

const TypeDef* MetaModel::findType(const aafUID_t& id) const {
    auto it = typesById_.find(key(id));
    return it == typesById_.end() ? nullptr : it->second;
}

const PropertyDef* MetaModel::findProperty(uint16_t pid) const {
    auto it = propertiesByPid_.find(pid);
    return it == propertiesByPid_.end() ? nullptr : it->second;
}

const PropertyDef* MetaModel::findPropertyById(const aafUID_t& id) const {
    auto it = propertiesById_.find(key(id));
    return it == propertiesById_.end() ? nullptr : it->second;
}

const PropertyDef* MetaModel::findProperty(const ClassDef& cls, const aafUID_t& id) const {
    for (const ClassDef* c = &cls; c; c = c->parent)
        for (const PropertyDef* p : c->properties)
            if (p->id == id) return p;
    return nullptr;
}

ClassDef& MetaModel::declareClass(const aafUID_t& id, const std::string& name, const aafUID_t& parent,
                                  bool concrete) {
    if (ClassDef* known = mutableClass(id)) return *known;
    ClassDef& cls = classes_.emplace_back();
    cls.id = id;
    cls.name = name;
    cls.parent = findClass(parent);
    cls.concrete = concrete;
    classesById_[key(id)] = &cls;
    classesByName_.emplace(name, &cls);
    addedClasses_.push_back(&cls);
    return cls;
}

TypeDef& MetaModel::declareType(TypeDef type) {
    auto it = typesById_.find(key(type.id));
    if (it != typesById_.end()) return *it->second;
    TypeDef& stored = types_.emplace_back(std::move(type));
    typesById_[key(stored.id)] = &stored;
    if (!stored.builtin) addedTypes_.push_back(&stored);
    return stored;
}

const PropertyDef* MetaModel::declareProperty(ClassDef& cls, const aafUID_t& id, const std::string& name,
                                              const aafUID_t& type, bool optional, uint16_t pid) {
    if (const PropertyDef* known = findProperty(cls, id)) return known;
    if (const PropertyDef* elsewhere = findPropertyById(id)) {
        // A known extension property (pid 0 in the built-in model) gets this file's pid.
        if (elsewhere->pid == 0 && elsewhere->owner == &cls) bindPid(*elsewhere, pid ? pid : nextDynamicPid());
        return elsewhere->owner == &cls ? elsewhere : nullptr;
    }
    PropertyDef& p = properties_.emplace_back();
    p.id = id;
    p.name = name;
    p.pid = pid ? pid : nextDynamicPid();
    p.type = type;
    p.optional = optional;
    p.owner = &cls;
    cls.properties.push_back(&p);
    propertiesById_[key(id)] = &p;
    propertiesByPid_[p.pid] = &p;
    addedProperties_.push_back(&p);
    return &p;
}

void MetaModel::bindPid(const PropertyDef& property, uint16_t pid) {
    PropertyDef& p = *propertiesById_.at(key(property.id));
    if (p.pid == pid) return;
    if (p.pid) propertiesByPid_.erase(p.pid);
    p.pid = pid;
    propertiesByPid_[pid] = &p;
    addedProperties_.push_back(&p);
}

uint16_t MetaModel::nextDynamicPid() const {
    // New dynamic pids go down from 0xffff, below every dynamic pid already in use.
    uint32_t lowest = 0x10000;
    for (const auto& [pid, property] : propertiesByPid_)
        if (pid >= 0x8000 && pid < lowest) lowest = pid;
    return uint16_t(lowest - 1);
}

bool MetaModel::isDeclaredByFile(const aafUID_t& id) const {
    const ClassDef* cls = findClass(id);
    if (cls) return !cls->builtin;
    const TypeDef* type = findType(id);
    return type && !type->builtin;
}

}  // namespace aafkit::meta
