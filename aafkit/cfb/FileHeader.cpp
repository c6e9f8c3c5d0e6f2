#include "aafkit/cfb/FileHeader.h"

namespace aafkit::cfb {

namespace {
constexpr size_t kReservedBytes = 6;
}

bool FileHeader::read(ByteReader& in) {
    bool ok = in.copy(signature, sizeof signature) && in.copy(clsid, sizeof clsid) &&
              in.u16(minorVersion) && in.u16(majorVersion) && in.u16(byteOrder) &&
              in.u16(sectorShift) && in.u16(miniSectorShift) && in.skip(kReservedBytes) &&
              in.u32(directorySectorCount) && in.u32(fatSectorCount) &&
              in.u32(firstDirectorySector) && in.u32(transactionSignature) &&
              in.u32(miniStreamCutoff) && in.u32(firstMiniFatSector) &&
              in.u32(miniFatSectorCount) && in.u32(firstDifatSector) && in.u32(difatSectorCount);
    for (uint32_t& id : difat) ok = ok && in.u32(id);
    return ok;
}

void FileHeader::write(ByteWriter& out) const {
    out.bytes(signature, sizeof signature);
    out.bytes(clsid, sizeof clsid);
    out.u16(minorVersion);
    out.u16(majorVersion);
    out.u16(byteOrder);
    out.u16(sectorShift);
    out.u16(miniSectorShift);
    out.zeros(kReservedBytes);
    for (uint32_t v : {directorySectorCount, fatSectorCount, firstDirectorySector,
                       transactionSignature, miniStreamCutoff, firstMiniFatSector,
                       miniFatSectorCount, firstDifatSector, difatSectorCount})
        out.u32(v);
    for (uint32_t id : difat) out.u32(id);
}

}  // namespace aafkit::cfb
