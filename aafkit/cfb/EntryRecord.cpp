#include "aafkit/cfb/EntryRecord.h"

#include <cstring>

namespace aafkit::cfb {

bool EntryRecord::read(ByteReader& in) {
    const uint8_t* units = nullptr;
    if (!in.bytes(sizeof name, units)) return false;
    for (size_t i = 0; i < kMaxNameUnits + 1; ++i) name[i] = char16_t(units[2 * i] | units[2 * i + 1] << 8);
    return in.u16(nameLength) && in.u8(type) && in.u8(color) && in.u32(left) &&
           in.u32(right) && in.u32(child) && in.copy(clsid, sizeof clsid) && in.u32(stateBits) &&
           in.u64(created) && in.u64(modified) && in.u32(startSector) && in.u64(size);
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
