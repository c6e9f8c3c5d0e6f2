#include "MetaDictionaryWriter.h"

#include <set>
#include <unordered_set>

#include "../om/ObjectStore.h"
#include "../om/Values.h"
#include "Ids.h"

namespace aafkit::meta {

namespace {

std::wstring wide(const std::string& s) { return std::wstring(s.begin(), s.end()); }

std::string keyOf(const aafUID_t& id) {
    uint8_t bytes[16];
    encodeAuid(id, bytes);
    return std::string(reinterpret_cast<const char*>(bytes), 16);
}

bool usesElement(TypeKind kind) {
    return kind == TypeKind::Enum || kind == TypeKind::FixedArray || kind == TypeKind::VariableArray ||
           kind == TypeKind::Set || kind == TypeKind::String || kind == TypeKind::Rename;
}

class MetaDictionaryWriter {
public:
    explicit MetaDictionaryWriter(ObjectStore& store) : store_(store), model_(store.model()) {}
    void write();

private:
    void collectClasses();
    void collectType(const aafUID_t& id);
    void writeClass(Object& dictionary, const ClassDef& cls);
    void writeType(Object& dictionary, const TypeDef& type);
    void setMetaReferences(Object& o, uint16_t pid, uint16_t setPid, const std::vector<aafUID_t>& targets);
    Object& newDefinition(const aafUID_t& classId, const aafUID_t& id, const std::string& name);

    ObjectStore& store_;
    const MetaModel& model_;
    std::vector<const ClassDef*> classes_;
    std::set<std::string> classKeys_;
    std::vector<const TypeDef*> types_;
    std::set<std::string> typeKeys_;
};

void MetaDictionaryWriter::collectType(const aafUID_t& id) {
    const TypeDef* type = model_.findType(id);
    // A type whose element the model does not define cannot be described without a dangling reference.
    if (!type || (usesElement(type->kind) && !model_.findType(type->element))) return;
    if (!typeKeys_.insert(keyOf(id)).second) return;
    types_.push_back(type);
    collectType(type->element);
    for (const TypeMember& m : type->members) collectType(m.type);
}

void MetaDictionaryWriter::collectClasses() {
    auto addWithAncestors = [this](const ClassDef* cls) {
        for (; cls && cls->id != kRootClassId; cls = cls->parent)
            if (classKeys_.insert(keyOf(cls->id)).second) classes_.push_back(cls);
    };
    for (const BaselineClass& row : baselineClasses())
        if (!row.extension) addWithAncestors(model_.findClass(row.id));
    for (const ClassDef* cls : model_.addedClasses()) addWithAncestors(cls);
    std::unordered_set<const ClassDef*> inUse;
    for (size_t i = 0; i < store_.objectCount(); ++i) inUse.insert(store_.objectAt(i).classDef());
    for (const ClassDef* cls : inUse) addWithAncestors(cls);
    for (const BaselineType& row : baselineTypes())
        if (!row.extension) collectType(row.id);
    for (const TypeDef* type : model_.addedTypes()) collectType(type->id);
    for (const ClassDef* cls : classes_)
        for (const PropertyDef* p : model_.propertiesOf(*cls))
            if (p->pid) collectType(p->type);
}

Object& MetaDictionaryWriter::newDefinition(const aafUID_t& classId, const aafUID_t& id, const std::string& name) {
    Object& o = *store_.create(classId);
    setAuid(o, PID_MetaDefinition_Identification, id);
    setString(o, PID_MetaDefinition_Name, wide(name));
    return o;
}

void MetaDictionaryWriter::setMetaReferences(Object& o, uint16_t pid, uint16_t setPid,
                                             const std::vector<aafUID_t>& targets) {
    Property& p = o.ensure(pid, StoredForm::WeakRefVector);
    for (const aafUID_t& target : targets) p.weak().push_back(store_.metaReference(setPid, target));
}

void MetaDictionaryWriter::writeClass(Object& dictionary, const ClassDef& cls) {
    Object& c = newDefinition(AUID_AAFClassDefinition, cls.id, cls.name);
    setMetaReference(c, PID_ClassDefinition_ParentClass, PID_MetaDictionary_ClassDefinitions,
                     cls.parent ? cls.parent->id : cls.id);
    setUInt8(c, PID_ClassDefinition_IsConcrete, cls.concrete);
    for (const PropertyDef* p : model_.propertiesOf(cls)) {
        if (!p->pid) continue;  // an extension this file does not use
        Object& d = newDefinition(AUID_AAFPropertyDefinition, p->id, p->name);
        setAuid(d, PID_PropertyDefinition_Type, p->type);
        setUInt8(d, PID_PropertyDefinition_IsOptional, p->optional);
        setUInt16(d, PID_PropertyDefinition_LocalIdentification, p->pid);
        if (p->uniqueId) setUInt8(d, PID_PropertyDefinition_IsUniqueIdentifier, 1);
        addToSet(c, PID_ClassDefinition_Properties, d);
    }
    addToSet(dictionary, PID_MetaDictionary_ClassDefinitions, c);
}

std::vector<uint8_t> stringArray(const std::vector<TypeMember>& members) {
    std::vector<uint8_t> bytes;
    for (const TypeMember& m : members) {
        std::vector<uint8_t> one = wideToUtf16(wide(m.name));
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    return bytes;
}

void MetaDictionaryWriter::writeType(Object& dictionary, const TypeDef& type) {
    static const std::pair<TypeKind, aafUID_t> kClasses[] = {
        {TypeKind::Integer, AUID_AAFTypeDefinitionInteger},
        {TypeKind::Character, AUID_AAFTypeDefinitionCharacter},
        {TypeKind::Enum, AUID_AAFTypeDefinitionEnumeration},
        {TypeKind::ExtEnum, AUID_AAFTypeDefinitionExtendibleEnumeration},
        {TypeKind::Record, AUID_AAFTypeDefinitionRecord},
        {TypeKind::FixedArray, AUID_AAFTypeDefinitionFixedArray},
        {TypeKind::VariableArray, AUID_AAFTypeDefinitionVariableArray},
        {TypeKind::Set, AUID_AAFTypeDefinitionSet},
        {TypeKind::String, AUID_AAFTypeDefinitionString},
        {TypeKind::StrongRef, AUID_AAFTypeDefinitionStrongObjectReference},
        {TypeKind::WeakRef, AUID_AAFTypeDefinitionWeakObjectReference},
        {TypeKind::Rename, AUID_AAFTypeDefinitionRename},
        {TypeKind::Indirect, AUID_AAFTypeDefinitionIndirect},
        {TypeKind::Opaque, AUID_AAFTypeDefinitionOpaque},
        {TypeKind::Stream, AUID_AAFTypeDefinitionStream},
    };
    aafUID_t classId = AUID_AAFTypeDefinitionOpaque;
    for (const auto& [kind, id] : kClasses)
        if (kind == type.kind) classId = id;
    Object& t = newDefinition(classId, type.id, type.name);
    const uint16_t types = PID_MetaDictionary_TypeDefinitions;
    switch (type.kind) {
    case TypeKind::Integer:
        setUInt8(t, PID_TypeDefinitionInteger_Size, type.size);
        setUInt8(t, PID_TypeDefinitionInteger_IsSigned, type.isSigned);
        break;
    case TypeKind::Enum: {
        setMetaReference(t, PID_TypeDefinitionEnumeration_ElementType, types, type.element);
        setBytes(t, PID_TypeDefinitionEnumeration_ElementNames, stringArray(type.members));
        std::vector<uint8_t> values;
        for (const TypeMember& m : type.members)
            for (int i = 0; i < 8; ++i) values.push_back(uint8_t(uint64_t(m.value) >> (8 * i)));
        setBytes(t, PID_TypeDefinitionEnumeration_ElementValues, std::move(values));
        break;
    }
    case TypeKind::ExtEnum: {
        setBytes(t, PID_TypeDefinitionExtendibleEnumeration_ElementNames, stringArray(type.members));
        std::vector<uint8_t> values(16 * type.members.size());
        for (size_t i = 0; i < type.members.size(); ++i) encodeAuid(type.members[i].extValue, &values[16 * i]);
        setBytes(t, PID_TypeDefinitionExtendibleEnumeration_ElementValues, std::move(values));
        break;
    }
    case TypeKind::Record: {
        std::vector<aafUID_t> memberTypes;
        for (const TypeMember& m : type.members) memberTypes.push_back(m.type);
        setMetaReferences(t, PID_TypeDefinitionRecord_MemberTypes, types, memberTypes);
        setBytes(t, PID_TypeDefinitionRecord_MemberNames, stringArray(type.members));
        break;
    }
    case TypeKind::FixedArray:
        setMetaReference(t, PID_TypeDefinitionFixedArray_ElementType, types, type.element);
        setUInt32(t, PID_TypeDefinitionFixedArray_ElementCount, type.count);
        break;
    case TypeKind::VariableArray:
        setMetaReference(t, PID_TypeDefinitionVariableArray_ElementType, types, type.element);
        break;
    case TypeKind::Set:
        setMetaReference(t, PID_TypeDefinitionSet_ElementType, types, type.element);
        break;
    case TypeKind::String:
        setMetaReference(t, PID_TypeDefinitionString_ElementType, types, type.element);
        break;
    case TypeKind::Rename:
        setMetaReference(t, PID_TypeDefinitionRename_RenamedType, types, type.element);
        break;
    case TypeKind::StrongRef:
        setMetaReference(t, PID_TypeDefinitionStrongObjectReference_ReferencedType,
                         PID_MetaDictionary_ClassDefinitions, type.target);
        break;
    case TypeKind::WeakRef: {
        setMetaReference(t, PID_TypeDefinitionWeakObjectReference_ReferencedType, PID_MetaDictionary_ClassDefinitions,
                         type.target);
        std::vector<uint8_t> path(16 * type.path.size());
        for (size_t i = 0; i < type.path.size(); ++i) encodeAuid(type.path[i], &path[16 * i]);
        setBytes(t, PID_TypeDefinitionWeakObjectReference_TargetSet, std::move(path));
        break;
    }
    default:
        break;
    }
    addToSet(dictionary, types, t);
}

void MetaDictionaryWriter::write() {
    collectClasses();
    Object& dictionary = *store_.create(AUID_AAFMetaDictionary);
    Object& root = *store_.root();
    root.remove(kRootMetaDictionaryPid);
    setObject(root, kRootMetaDictionaryPid, dictionary);
    for (const ClassDef* cls : classes_) writeClass(dictionary, *cls);
    for (const TypeDef* type : types_) writeType(dictionary, *type);
}

}  // namespace

void writeMetaDictionary(ObjectStore& store) { MetaDictionaryWriter(store).write(); }

}  // namespace aafkit::meta
