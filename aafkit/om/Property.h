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

// What only reference and stream properties have, kept apart so that a data
// property (most of them) costs its value and a few bytes.
struct PropertyLinks {
    std::vector<Object*> objects;      // StrongRef: one object; vectors in order; sets in key order
    std::vector<WeakReference> weak;   // weak vectors and sets: the elements in stored order
    std::unique_ptr<StreamContent> stream;  // DataStream: the content (the stream sits beside "properties")
};

struct Property {
    uint16_t pid = 0;
    uint16_t form = 0;  // a StoredForm, or an unknown form kept as raw bytes
    // Sets: the key property of the elements and its size, as the index names them.
    uint16_t keyPid = 0;
    uint8_t keySize = 0;
    // Data: the encoded value. Strong and weak collections: the stored base name
    // (UTF-16LE) as read, empty for new properties. WeakRef: the reference as
    // stored (path tag, key pid, key size, key). Other forms: the raw value.
    Bytes data;

    const std::vector<Object*>& objects() const { return links ? links->objects : kNoLinks.objects; }
    std::vector<Object*>& objects() { return ensureLinks().objects; }
    // Weak vectors and sets.
    const std::vector<WeakReference>& weak() const { return links ? links->weak : kNoLinks.weak; }
    std::vector<WeakReference>& weak() { return ensureLinks().weak; }
    // WeakRef: the one reference, kept in `data` so that the commonest reference
    // needs no side record. False when there is none or it is malformed.
    bool weakReference(WeakReference& out) const;
    void setWeakReference(const WeakReference& reference);
    // The references of any weak form, in stored order.
    std::vector<WeakReference> weakReferences() const;
    const StreamContent* stream() const { return links ? links->stream.get() : nullptr; }
    void setStream(std::unique_ptr<StreamContent> content) { ensureLinks().stream = std::move(content); }

    StoredForm storedForm() const { return StoredForm(form); }
    bool isStrong() const {
        return storedForm() == StoredForm::StrongRef || storedForm() == StoredForm::StrongRefVector ||
               storedForm() == StoredForm::StrongRefSet;
    }
    bool isWeak() const {
        return storedForm() == StoredForm::WeakRef || storedForm() == StoredForm::WeakRefVector ||
               storedForm() == StoredForm::WeakRefSet;
    }

private:
    static const PropertyLinks kNoLinks;
    PropertyLinks& ensureLinks() {
        if (!links) links = std::make_unique<PropertyLinks>();
        return *links;
    }
    std::unique_ptr<PropertyLinks> links;
};

}  // namespace aafkit
