#include "MetaDictionaryReader.h"

#include "../ResultCodes.h"
#include "../om/Object.h"
#include "../om/Values.h"
#include "Ids.h"

namespace aafkit::meta {

namespace {

// Weak references inside the MetaDictionary are keyed by the target's AUID.
aafUID_t referencedId(const Object& o, uint16_t pid) {
    const Property* p = o.find(pid);
    WeakReference reference;
    if (!p || !p->weakReference(reference) || reference.key.size() != 16) return kNullAuid;
    return decodeAuid(reference.key.data());
}

bool boolean(const Object& o, uint16_t pid, bool otherwise) {
    uint8_t v = 0;
    return getUInt8(o, pid, v) == AAFRESULT_SUCCESS ? v != 0 : otherwise;
}

std::string name(const Object& o) {
    std::wstring text;
    getString(o, PID_MetaDefinition_Name, text);
    return wideToUtf8(text);
}

struct KindByClass {
    aafUID_t classId;
    TypeKind kind;
    uint16_t elementPid;
};

const KindByClass kTypeClasses[] = {
    {AUID_AAFTypeDefinitionInteger, TypeKind::Integer, 0},
    {AUID_AAFTypeDefinitionCharacter, TypeKind::Character, 0},
    {AUID_AAFTypeDefinitionEnumeration, TypeKind::Enum, PID_TypeDefinitionEnumeration_ElementType},
    {AUID_AAFTypeDefinitionExtendibleEnumeration, TypeKind::ExtEnum, 0},
    {AUID_AAFTypeDefinitionRecord, TypeKind::Record, 0},
    {AUID_AAFTypeDefinitionFixedArray, TypeKind::FixedArray, PID_TypeDefinitionFixedArray_ElementType},
    {AUID_AAFTypeDefinitionVariableArray, TypeKind::VariableArray, PID_TypeDefinitionVariableArray_ElementType},
    {AUID_AAFTypeDefinitionSet, TypeKind::Set, PID_TypeDefinitionSet_ElementType},
    {AUID_AAFTypeDefinitionString, TypeKind::String, PID_TypeDefinitionString_ElementType},
    {AUID_AAFTypeDefinitionStrongObjectReference, TypeKind::StrongRef, 0},
    {AUID_AAFTypeDefinitionWeakObjectReference, TypeKind::WeakRef, 0},
    {AUID_AAFTypeDefinitionRename, TypeKind::Rename, PID_TypeDefinitionRename_RenamedType},
    {AUID_AAFTypeDefinitionOpaque, TypeKind::Opaque, 0},
    {AUID_AAFTypeDefinitionIndirect, TypeKind::Indirect, 0},
    {AUID_AAFTypeDefinitionStream, TypeKind::Stream, 0},
};

void declareType(const Object& definition, MetaModel& model) {
    TypeDef type;
    if (getAuid(definition, PID_MetaDefinition_Identification, type.id) != AAFRESULT_SUCCESS) return;
    if (model.findType(type.id)) return;
    type.name = name(definition);
    for (const KindByClass& k : kTypeClasses) {
        if (!(definition.classId() == k.classId)) continue;
        type.kind = k.kind;
        if (k.elementPid) type.element = referencedId(definition, k.elementPid);
    }
    getUInt8(definition, PID_TypeDefinitionInteger_Size, type.size);
    type.isSigned = boolean(definition, PID_TypeDefinitionInteger_IsSigned, false);
    getUInt32(definition, PID_TypeDefinitionFixedArray_ElementCount, type.count);
    if (type.kind == TypeKind::StrongRef)
        type.target = referencedId(definition, PID_TypeDefinitionStrongObjectReference_ReferencedType);
    if (type.kind == TypeKind::WeakRef)
        type.target = referencedId(definition, PID_TypeDefinitionWeakObjectReference_ReferencedType);
    model.declareType(std::move(type));
}

void declareProperties(const Object& classDefinition, const ClassDef& cls, MetaModel& model) {
    const std::vector<Object*>* properties = nullptr;
    if (getObjects(classDefinition, PID_ClassDefinition_Properties, properties) != AAFRESULT_SUCCESS) return;
    for (const Object* p : *properties) {
        aafUID_t id, type = kNullAuid;
        uint16_t pid = 0;
        if (getAuid(*p, PID_MetaDefinition_Identification, id) != AAFRESULT_SUCCESS ||
            getUInt16(*p, PID_PropertyDefinition_LocalIdentification, pid) != AAFRESULT_SUCCESS)
            continue;
        getAuid(*p, PID_PropertyDefinition_Type, type);
        const PropertyDef* known = model.findPropertyById(id);
        if (known && known->pid == 0)
            model.bindPid(*known, pid);
        else if (!known)
            model.declareProperty(cls, id, name(*p), type, boolean(*p, PID_PropertyDefinition_IsOptional, true), pid);
    }
}

// Parents may be declared after their children: declare in passes until none is left.
void declareClasses(const std::vector<Object*>& definitions, MetaModel& model) {
    std::vector<const Object*> pending(definitions.begin(), definitions.end());
    for (bool progress = true; progress && !pending.empty();) {
        progress = false;
        std::vector<const Object*> later;
        for (const Object* d : pending) {
            aafUID_t id;
            if (getAuid(*d, PID_MetaDefinition_Identification, id) != AAFRESULT_SUCCESS) continue;
            const aafUID_t parent = referencedId(*d, PID_ClassDefinition_ParentClass);
            if (!model.findClass(id) && !model.findClass(parent) && !(parent == id)) {
                later.push_back(d);
                continue;
            }
            const ClassDef& cls = model.declareClass(id, name(*d), parent, boolean(*d, PID_ClassDefinition_IsConcrete, true));
            declareProperties(*d, cls, model);
            progress = true;
        }
        pending.swap(later);
    }
}

}  // namespace

Status readMetaDictionary(const Object& metaDictionary, MetaModel& model) {
    const std::vector<Object*>* types = nullptr;
    if (getObjects(metaDictionary, PID_MetaDictionary_TypeDefinitions, types) == AAFRESULT_SUCCESS)
        for (const Object* t : *types) declareType(*t, model);
    const std::vector<Object*>* classes = nullptr;
    if (getObjects(metaDictionary, PID_MetaDictionary_ClassDefinitions, classes) == AAFRESULT_SUCCESS)
        declareClasses(*classes, model);
    return Status();
}

}  // namespace aafkit::meta
