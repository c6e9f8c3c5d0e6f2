#include "SetKey.h"

#include "../meta/Ids.h"
#include "../meta/MetaModel.h"

namespace aafkit {

bool setKeyOf(const Object& element, SetKey& out) {
    uint16_t valuePid = 0;
    if (element.isA(AUID_AAFParameter)) {
        out.keyPid = PID_DefinitionObject_Identification;
        valuePid = PID_Parameter_Definition;
    } else {
        const meta::ClassDef* cls = element.classDef();
        const meta::PropertyDef* unique = cls ? cls->uniqueIdProperty() : nullptr;
        if (!unique) return false;
        out.keyPid = valuePid = unique->pid;
    }
    const Property* value = element.find(valuePid);
    if (!value || value->storedForm() != StoredForm::Data || value->data.empty()) return false;
    out.bytes = value->data;
    return true;
}

}  // namespace aafkit
