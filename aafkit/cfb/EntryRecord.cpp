#include "aafkit/cfb/EntryRecord.h"

#include <algorithm>
#include <cstring>

namespace aafkit::cfb {

bool EntryRecord::read(ByteReader& in) {
    // One bounds check for the whole entry, then fixed offsets: directories hold
    // hundreds of thousands of entries.
    const uint8_t* p = nullptr;
    if (!in.bytes(kEntrySize, p)) return false;
    const auto field = [p](size_t at, size_t size) {
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i) value |= uint64_t(p[at + i]) << (8 * i);
        return value;
    };
    nameLength = uint16_t(field(64, 2));
    // Only the units the length covers carry the name; the rest are zero in valid files.
    const size_t units = std::min<size_t>(nameLength / 2, kMaxNameUnits + 1);
    for (size_t i = 0; i < units; ++i) name[i] = char16_t(field(2 * i, 2));
    std::fill(name + units, name + kMaxNameUnits + 1, u'\0');
    type = p[66];
    color = p[67];
    left = uint32_t(field(68, 4));
    right = uint32_t(field(72, 4));
    child = uint32_t(field(76, 4));
    std::memcpy(clsid, p + 80, sizeof clsid);
    stateBits = uint32_t(field(96, 4));
    created = field(100, 8);
    modified = field(108, 8);
    startSector = uint32_t(field(116, 4));
    size = field(120, 8);
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
