#include "Object.h"

#include <algorithm>

#include "ObjectStore.h"

namespace aafkit {


bool Object::isA(const aafUID_t& baseClassId) const {
    if (!classDef_) return false;
    const meta::ClassDef* base = store_->model().findClass(baseClassId);
    return base && classDef_->isA(base);
}

const Property* Object::find(uint16_t pid) const {
    for (const Property& p : properties_)
        if (p.pid == pid) return &p;
    return nullptr;
}

Property* Object::find(uint16_t pid) {
    for (Property& p : properties_)
        if (p.pid == pid) return &p;
    return nullptr;
}

Property& Object::ensure(uint16_t pid, StoredForm form) {
    if (Property* p = find(pid)) return *p;
    Property& p = properties_.emplace_back();
    p.pid = pid;
    p.form = uint16_t(form);
    return p;
}

void Object::remove(uint16_t pid) {
    properties_.erase(std::remove_if(properties_.begin(), properties_.end(),
                                     [pid](const Property& p) { return p.pid == pid; }),
                      properties_.end());
}

}  // namespace aafkit
