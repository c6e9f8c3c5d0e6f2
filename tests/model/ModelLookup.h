#pragma once
// Lookups over the generated model tables, for the model tests.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "aafkit/AafTypes.h"
#include "aafkit/meta/BaselineModel.h"

namespace modeltest {

using namespace aafkit::meta;

template <typename T, typename Match>
const T* findRow(Table<T> table, Match match) {
    for (const T& row : table)
        if (match(row)) return &row;
    return nullptr;
}

// For rows a test cannot go on without: a missing row fails the test instead of crashing the binary.
template <typename T>
const T& found(const T* row, const std::string& what) {
    if (!row) throw std::runtime_error("not in the tables: " + what);
    return *row;
}

inline aafUID_t auid(const char* text) {
    aafUID_t id{};
    EXPECT_TRUE(aafkit::parseAuid(text, id)) << text;
    return id;
}

inline const BaselineClass* classNamed(const std::string& name) {
    return findRow(baselineClasses(), [&](const BaselineClass& c) { return name == c.name; });
}

inline const BaselineType* typeWithId(const aafUID_t& id) {
    return findRow(baselineTypes(), [&](const BaselineType& t) { return t.id == id; });
}

inline const BaselineType* typeNamed(const std::string& name) {
    return findRow(baselineTypes(), [&](const BaselineType& t) { return name == t.name; });
}

inline const BaselineProperty* propertyWithId(const aafUID_t& id) {
    return findRow(baselineProperties(), [&](const BaselineProperty& p) { return p.id == id; });
}

inline const BaselineProperty* propertyNamed(const std::string& owner, const std::string& name) {
    return findRow(baselineProperties(), [&](const BaselineProperty& p) {
        return owner == p.owner && name == p.name;
    });
}

// The class whose objects a property holds: the target of a strong reference, or of the
// strong references in a set or vector. Null when the property holds no objects.
inline const BaselineClass* heldClass(const BaselineProperty& property) {
    const BaselineType* type = typeWithId(property.type);
    if (type && (type->kind == TypeKind::Set || type->kind == TypeKind::VariableArray))
        type = typeWithId(type->element);
    if (!type || type->kind != TypeKind::StrongRef) return nullptr;
    return classNamed(type->target);
}

inline bool isSameOrSubclass(const BaselineClass* derived, const std::string& base) {
    // Bounded walk: a parent cycle in the table must fail a test, not hang it.
    for (size_t depth = 0; derived && depth < baselineClasses().count; ++depth) {
        if (base == derived->name) return true;
        derived = classNamed(derived->parent);
    }
    return false;
}

}  // namespace modeltest
