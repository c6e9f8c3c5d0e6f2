#pragma once
// The key by which a strong-reference set holds an element: the element class's
// unique identifier (MobID for mobs, Identification for definitions). Parameters
// of an operation group are the exception: keyed by their definition's AUID.
#include <cstdint>
#include <vector>

#include "Bytes.h"
#include "Object.h"

namespace aafkit {

struct SetKey {
    uint16_t keyPid = 0;                 // the pid the index names
    Bytes bytes;                         // the key as stored
};

// False when the element has no key property or its value is missing.
bool setKeyOf(const Object& element, SetKey& out);

}  // namespace aafkit
