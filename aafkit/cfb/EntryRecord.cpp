#include "aafkit/cfb/EntryRecord.h"

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
    for (char16_t unit : name) out.u16(unit);
    out.u16(nameLength);
    out.u8(type);
    out.u8(color);
    out.u32(left);
    out.u32(right);
    out.u32(child);
    out.bytes(clsid, sizeof clsid);
    out.u32(stateBits);
    out.u64(created);
    out.u64(modified);
    out.u32(startSector);
    out.u64(size);
}

}  // namespace aafkit::cfb
