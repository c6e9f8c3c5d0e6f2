#pragma once
// The classes, properties and types a file knows: the built-in model plus what
// the file's MetaDictionary declares, plus what the writer registers.
#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "../AafTypes.h"
#include "../mem/Resource.h"
#include "BaselineModel.h"

namespace aafkit::meta {

struct ClassDef;

struct TypeMember {
    std::string name;
    aafUID_t type = kNullAuid;  // records
    int64_t value = 0;          // enums
    aafUID_t extValue = kNullAuid;  // extendible enums
};

struct TypeDef {
    aafUID_t id = kNullAuid;
    std::string name;
    TypeKind kind = TypeKind::Opaque;
    uint8_t size = 0;                // integers
    bool isSigned = false;           // integers
    aafUID_t element = kNullAuid;    // element, base or character type
    uint32_t count = 0;              // fixed arrays
    aafUID_t target = kNullAuid;     // referenced class of object references
    std::vector<aafUID_t> path;      // weak references: property AUIDs to the target set
    std::vector<TypeMember> members; // records, enums
    bool builtin = false;
    bool extension = false;          // an Avid extension: written only where used
};

struct PropertyDef {
    aafUID_t id = kNullAuid;
    std::string name;
    uint16_t pid = 0;
    aafUID_t type = kNullAuid;
    bool optional = true;
    bool uniqueId = false;
    const ClassDef* owner = nullptr;
    bool builtin = false;
    bool extension = false;
};

struct ClassDef {
    aafUID_t id = kNullAuid;
    std::string name;
    const ClassDef* parent = nullptr;
    bool concrete = false;
    bool builtin = false;  // known to aafkit; an object of another class behaves as its nearest built-in ancestor
    bool extension = false;
    std::vector<const PropertyDef*> properties;  // own properties, not inherited ones

    bool isA(const ClassDef* base) const;
    const PropertyDef* uniqueIdProperty() const;  // own or inherited
};

// The root object of every file: not part of the model tables, never written
// to a MetaDictionary.
constexpr aafUID_t kRootClassId = {0xb3b398a5, 0x1c90, 0x11d4, {0x80, 0x53, 0x08, 0x00, 0x36, 0x21, 0x08, 0x04}};
constexpr uint16_t kRootMetaDictionaryPid = 0x0001;
constexpr uint16_t kRootHeaderPid = 0x0002;

// Hash-map key of an AUID: its 16 stored bytes, compared and hashed without allocation.
struct AuidKey {
    uint64_t high, low;
    explicit AuidKey(const aafUID_t& id);
    bool operator==(const AuidKey& o) const { return high == o.high && low == o.low; }
};
struct AuidKeyHash {
    size_t operator()(const AuidKey& k) const { return size_t(k.high * 0x9e3779b97f4a7c15ull ^ k.low); }
};

// Definitions with their lookup indexes: the built-in model once per process,
// and per file what the file declares on top of it.
struct ModelStore {
    explicit ModelStore(mem::Resource* memory = mem::heapResource())
        : classes(memory), types(memory), properties(memory), classesById(memory), classesByName(memory),
          typesById(memory), propertiesById(memory), propertiesByPid(memory) {}

    mem::Deque<ClassDef> classes;
    mem::Deque<TypeDef> types;
    mem::Deque<PropertyDef> properties;
    mem::UnorderedMap<AuidKey, ClassDef*, AuidKeyHash> classesById;
    mem::UnorderedMap<std::string, ClassDef*> classesByName;
    mem::UnorderedMap<AuidKey, TypeDef*, AuidKeyHash> typesById;
    mem::UnorderedMap<AuidKey, PropertyDef*, AuidKeyHash> propertiesById;
    mem::UnorderedMap<uint16_t, PropertyDef*> propertiesByPid;
};

class MetaModel {
public:
    MetaModel();  // the built-in model, shared by every file
    MetaModel(const MetaModel&) = delete;
    MetaModel& operator=(const MetaModel&) = delete;

    const ClassDef* findClass(const aafUID_t& id) const;
    const ClassDef* findClass(const std::string& name) const;
    const TypeDef* findType(const aafUID_t& id) const;
    // By local pid as the file stores it (fixed pids, and dynamic pids this file assigned).
    const PropertyDef* findProperty(uint16_t pid) const;
    const PropertyDef* findPropertyById(const aafUID_t& id) const;
    // Searches the class and its ancestors.
    const PropertyDef* findProperty(const ClassDef& cls, const aafUID_t& id) const;
    // The class's own properties as this file knows them: with its pids, and what it added.
    std::vector<const PropertyDef*> propertiesOf(const ClassDef& cls) const;

    // Declarations from a file's MetaDictionary or from the writer. Lookups first:
    // an id that is already known keeps its first definition.
    const ClassDef& declareClass(const aafUID_t& id, const std::string& name, const aafUID_t& parent,
                                 bool concrete);
    const TypeDef& declareType(TypeDef type);
    // A property on a class; pid 0 asks for the next free dynamic pid (0xffff downwards).
    // Null when the id already belongs to a property of another class.
    const PropertyDef* declareProperty(const ClassDef& cls, const aafUID_t& id, const std::string& name,
                                       const aafUID_t& type, bool optional, uint16_t pid = 0);
    // A known extension property (pid 0 in the built-in model) gets this file's pid.
    const PropertyDef* bindPid(const PropertyDef& property, uint16_t pid);

    const std::vector<const ClassDef*>& addedClasses() const { return addedClasses_; }
    const std::vector<const TypeDef*>& addedTypes() const { return addedTypes_; }

private:
    uint16_t nextDynamicPid() const;
    PropertyDef& addProperty(const PropertyDef& property);

    const ModelStore& builtin_;
    ModelStore own_;
    // Properties this file added to classes it did not declare, by class.
    std::unordered_map<AuidKey, std::vector<const PropertyDef*>, AuidKeyHash> addedToClass_;
    std::vector<const ClassDef*> addedClasses_;
    std::vector<const TypeDef*> addedTypes_;
};

}  // namespace aafkit::meta
