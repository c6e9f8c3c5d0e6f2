#include "Property.h"

#include <algorithm>

#include "../io/ByteReader.h"

namespace aafkit {

const PropertyLinks Property::kNoLinks;

bool Property::weakReference(WeakReference& out) const {
    if (storedForm() != StoredForm::WeakRef) return false;
    ByteReader in(data.data(), data.size());
    uint16_t tag = 0;
    uint8_t keySize = 0;
    const uint8_t* key = nullptr;
    if (!in.u16(tag) || !in.u16(out.keyPid) || !in.u8(keySize) || !in.bytes(keySize, key)) return false;
    out.pathId = tag;
    out.key.assign(key, key + keySize);
    return true;
}

void Property::setWeakReference(const WeakReference& reference) {
    const size_t keySize = reference.key.size();
    uint8_t stored[5 + 255] = {uint8_t(reference.pathId), uint8_t(reference.pathId >> 8), uint8_t(reference.keyPid),
                               uint8_t(reference.keyPid >> 8), uint8_t(keySize)};
    std::copy(reference.key.begin(), reference.key.begin() + std::min<size_t>(keySize, 255), stored + 5);
    data.assign(stored, stored + 5 + std::min<size_t>(keySize, 255));
}

std::vector<WeakReference> Property::weakReferences() const {
    WeakReference single;
    if (weakReference(single)) return {single};
    return weak();
}

}  // namespace aafkit
