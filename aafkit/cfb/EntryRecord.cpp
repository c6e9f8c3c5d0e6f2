#include "aafkit/cfb/EntryRecord.h"

#include <algorithm>
#include <cstring>

namespace aafkit::cfb {
namespace {

// A little-endian field; with its size known the compiler makes it one load.
template <typename T>
T field(const uint8_t* at) {
    T value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) value |= T(T(at[i]) << (8 * i));
    return value;
}

}  // namespace

bool EntryRecord::read(ByteReader& in) {
    // One bounds check for the whole entry, then fixed offsets: directories hold
    // hundreds of thousands of entries.
    const uint8_t* p = nullptr;
    if (!in.bytes(kEntrySize, p)) return false;
    nameLength = field<uint16_t>(p + 64);
    // Only the units the length covers carry the name; the rest are zero in valid files.
    const size_t units = std::min<size_t>(nameLength / 2, kMaxNameUnits + 1);
    for (size_t i = 0; i < units; ++i) name[i] = char16_t(field<uint16_t>(p + 2 * i));
    std::fill(name + units, name + kMaxNameUnits + 1, u'\0');
    type = p[66];
    color = p[67];
    left = field<uint32_t>(p + 68);
    right = field<uint32_t>(p + 72);
    child = field<uint32_t>(p + 76);
    std::memcpy(clsid, p + 80, sizeof clsid);
    stateBits = field<uint32_t>(p + 96);
    created = field<uint64_t>(p + 100);
    modified = field<uint64_t>(p + 108);
    startSector = field<uint32_t>(p + 116);
    size = field<uint64_t>(p + 120);
    return true;
}

void EntryRecord::write(ByteWriter& out) const {
    // Assembled in place and appended at once: directories hold hundreds of thousands of entries.
    uint8_t bytes[kEntrySize];
    size_t at = 0;
    const auto put = [&bytes, &at](uint64_t value, size_t size) {
        for (size_t i = 0; i < size; ++i) bytes[at++] = uint8_t(value >> (8 * i));
    };
    for (char16_t unit : name) put(unit, 2);
    put(nameLength, 2);
    put(type, 1);
    put(color, 1);
    put(left, 4);
    put(right, 4);
    put(child, 4);
    std::memcpy(bytes + at, clsid, sizeof clsid);
    at += sizeof clsid;
    put(stateBits, 4);
    put(created, 8);
    put(modified, 8);
    put(startSector, 4);
    put(size, 8);
    out.bytes(bytes, sizeof bytes);
}

}  // namespace aafkit::cfb
