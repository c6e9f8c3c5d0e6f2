#include "Object.h"

#include <algorithm>

#include "ObjectStore.h"

namespace aafkit {


// By the ancestors' ids, not by looking the base up first: the composition walk asks
// this several times of each of a hundred thousand objects.
bool Object::isA(const aafUID_t& baseClassId) const {
    for (const meta::ClassDef* c = classDef_; c; c = c->parent)
        if (c->id == baseClassId) return true;
    return false;
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
