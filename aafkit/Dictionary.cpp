#include "Dictionary.h"

#include "Checked.h"
#include "ResultCodes.h"
#include "om/Values.h"
#include "meta/Ids.h"

namespace aafkit {

const meta::PropertyDef* registerOptionalProperty(File& file, const aafUID_t& classId, const aafUID_t& propertyId,
                                                  const std::string& name, const aafUID_t& typeId) {
    meta::MetaModel& model = file.model();
    const meta::ClassDef* cls = model.findClass(classId);
    if (!cls || !model.findType(typeId)) return nullptr;
    return model.declareProperty(*cls, propertyId, name, typeId, true);
}

AAFRESULT lookupDefinition(const File& file, uint16_t setPid, const aafUID_t& id, Object*& out) {
    const std::vector<Object*>* definitions = nullptr;
    Object* dictionary = file.dictionary();
    if (!dictionary || getObjects(*dictionary, setPid, definitions) != AAFRESULT_SUCCESS)
        return AAFRESULT_NO_MORE_OBJECTS;
    for (Object* definition : *definitions) {
        aafUID_t identification;
        if (getAuid(*definition, PID_DefinitionObject_Identification, identification) == AAFRESULT_SUCCESS &&
            identification == id) {
            out = definition;
            return AAFRESULT_SUCCESS;
        }
    }
    return AAFRESULT_NO_MORE_OBJECTS;
}

Object& registerDefinition(File& file, uint16_t setPid, Object& definition) {
    aafUID_t id;
    check(getAuid(definition, PID_DefinitionObject_Identification, id));
    Object* existing = nullptr;
    if (lookupDefinition(file, setPid, id, existing) == AAFRESULT_SUCCESS) return *existing;
    Object* dictionary = file.dictionary();
    if (!dictionary) throw ResultException(AAFRESULT_NULL_PARAM);
    check(addToSet(*dictionary, setPid, definition));
    return definition;
}

Object& newDefinition(File& file, const aafUID_t& classId, const aafUID_t& id, const std::wstring& name,
                      const std::wstring& description) {
    Object* definition = file.create(classId);
    if (!definition) throw ResultException(AAFRESULT_INVALID_PARAM);
    setAuid(*definition, PID_DefinitionObject_Identification, id);
    setString(*definition, PID_DefinitionObject_Name, name);
    setString(*definition, PID_DefinitionObject_Description, description);
    return *definition;
}

AAFRESULT addWeakReference(Object& o, uint16_t pid, StoredForm form, const Object& target) {
    WeakReference reference;
    if (!o.store().referenceTo(target, reference)) return AAFRESULT_INVALID_PARAM;
    Property& p = o.ensure(pid, form);
    if (form == StoredForm::WeakRefSet)
        for (const WeakReference& existing : p.weak())
            if (existing.key == reference.key) return AAFRESULT_SUCCESS;
    p.weak().push_back(std::move(reference));
    return AAFRESULT_SUCCESS;
}

void setClassReference(Object& o, uint16_t pid, const aafUID_t& classId) {
    setMetaReference(o, pid, PID_MetaDictionary_ClassDefinitions, classId);
}

void setTypeReference(Object& o, uint16_t pid, const aafUID_t& typeId) {
    setMetaReference(o, pid, PID_MetaDictionary_TypeDefinitions, typeId);
}

}  // namespace aafkit
