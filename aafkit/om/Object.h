#pragma once
// An AAF object: its class and its properties. Objects are owned by their store;
// everything else holds plain pointers valid until the file is closed.
#include <cstdint>
#include <vector>

#include "../AafTypes.h"
#include "../mem/Resource.h"
#include "Property.h"

namespace aafkit {

class ObjectStore;
namespace meta {
struct ClassDef;
}

class Object {
public:
    // `memory` holds the properties: the store's, so that they go with it.
    Object(ObjectStore& store, const aafUID_t& classId, const meta::ClassDef* classDef,
           mem::Resource* memory)
        : store_(&store), classId_(classId), classDef_(classDef), properties_(memory) {}

    ObjectStore& store() const { return *store_; }
    // The class the object was stored or created as (may be an extension class).
    const aafUID_t& classId() const { return classId_; }
    // Its definition; null only for a class neither built in nor declared in the file.
    const meta::ClassDef* classDef() const { return classDef_; }
    void setClassDef(const meta::ClassDef* classDef) { classDef_ = classDef; }
    // True if the object's class is baseClassId or derives from it.
    bool isA(const aafUID_t& baseClassId) const;

    const mem::Vector<Property>& properties() const { return properties_; }
    mem::Vector<Property>& properties() { return properties_; }
    const Property* find(uint16_t pid) const;
    Property* find(uint16_t pid);
    // The property with this pid, added empty in this form if absent.
    Property& ensure(uint16_t pid, StoredForm form);
    void remove(uint16_t pid);

    // The object that holds this one by strong reference, and through which property.
    Object* container() const { return container_; }
    uint16_t containerPid() const { return containerPid_; }
    void attach(Object* container, uint16_t pid) {
        container_ = container;
        containerPid_ = pid;
    }

private:
    ObjectStore* store_;
    aafUID_t classId_;
    const meta::ClassDef* classDef_;
    mem::Vector<Property> properties_;
    Object* container_ = nullptr;
    uint16_t containerPid_ = 0;
};

}  // namespace aafkit
