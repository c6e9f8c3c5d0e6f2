#pragma once
// One property of an object, in the form the file stores it.
#include <cstdint>
#include <memory>
#include <vector>

#include "Bytes.h"
#include "../io/StreamContent.h"

namespace aafkit {

class Object;

enum class StoredForm : uint16_t {
    Data = 0x82,
    StrongRef = 0x22,
    StrongRefVector = 0x32,
    StrongRefSet = 0x3a,
    WeakRef = 0x02,
    WeakRefVector = 0x12,
    WeakRefSet = 0x1a,
    DataStream = 0x42,
};

// A weak reference names its target by the path of pids from the root object to
// the set that holds the target (an entry of the file's path table) and the key.
struct WeakReference {
    uint32_t pathId = 0;
    uint16_t keyPid = 0;
    Bytes key;
};

struct Property {
    uint16_t pid = 0;
    uint16_t form = 0;  // a StoredForm, or an unknown form kept as raw bytes
    // Data: the encoded value. Strong and weak collections: the stored base name
    // (UTF-16LE) as read, empty for new properties. Other forms: the raw value.
    Bytes data;
    // StrongRef: one object; vectors in order; sets in key order.
    std::vector<Object*> objects;
    // WeakRef: one; weak vectors and sets: the elements in stored order.
    std::vector<WeakReference> weak;
    // Sets: the key property of the elements and its size, as the index names them.
    uint16_t keyPid = 0;
    uint8_t keySize = 0;
    // DataStream: the stream's content (the stream sits beside "properties").
    std::unique_ptr<StreamContent> stream;

    StoredForm storedForm() const { return StoredForm(form); }
    bool isStrong() const {
        return storedForm() == StoredForm::StrongRef || storedForm() == StoredForm::StrongRefVector ||
               storedForm() == StoredForm::StrongRefSet;
    }
    bool isWeak() const {
        return storedForm() == StoredForm::WeakRef || storedForm() == StoredForm::WeakRefVector ||
               storedForm() == StoredForm::WeakRefSet;
    }
};

}  // namespace aafkit
